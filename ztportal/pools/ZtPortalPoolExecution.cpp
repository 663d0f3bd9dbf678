#include "ztportal/pools/ZtPortalPoolExecution.h"

#include "ztportal/base/ZtException.h"
#include "ztportal/pools/ListAccess.h"
#include "ztportal/pools/PoolWriter.h"

std::shared_ptr<ZtPortalPoolExecution> ZtPortalPoolExecution::initWithValues(
    const ZtDate& timeStamp) {
  return std::make_shared<ZtPortalPoolExecution>(Creation{}, timeStamp);
}

ZtPortalPoolExecution::ZtPortalPoolExecution(Creation creation, const ZtDate& timeStamp)
    : ZtPortalPool(creation, "EXECUTION", timeStamp), _startTime(timeStamp), _endTime(timeStamp) {}

ZtPortalPoolExecution::~ZtPortalPoolExecution() = default;

void ZtPortalPoolExecution::addToXml(const ZtString& prefix, std::string& xml, bool soap) const {
  zt::PoolWriter pool(prefix, xml, soap);
  pool.begin(poolType(), timeStamp());
  pool.beginFields();
  pool.string("INSTALLATION_TYPE", _executionType);
  pool.string("START_POINT", _startPoint);
  pool.date("START_TIME", _startTime);
  pool.string("END_POINT", _endPoint);
  pool.date("END_TIME", _endTime);
  pool.string("END_RESULTSTRING", _endResultString);
  pool.string("END_RESULTCODE", _endResultCode);
  pool.string("END_ERRORMESSAGESTRING", _endErrorMessageString);
  pool.string("END_ERRORMESSAGECODE", _endErrorMessageCode);
  pool.boolean("CANCELLED", _cancelled);
  pool.boolean("SUCCESSFULL", _successfull);
  pool.records("INSTALLATIONSTEPS", _executionSteps);
  addFieldsToXml(pool.fieldPrefix(), xml, soap);
  pool.endFields();
  pool.end();
}

std::shared_ptr<ZtPortalPoolExecutionStep> ZtPortalPoolExecution::addStep(const ZtDate& timeStamp,
                                                                          const ZtString& stepName,
                                                                          std::uint64_t type) try {
  auto step = ZtPortalPoolExecutionStep::initWithValues(timeStamp, stepName, type);
  _executionSteps.push_back(step);
  return step;
} catch (const ZtException&) {
  return nullptr;
}

std::shared_ptr<ZtPortalPoolExecutionStep> ZtPortalPoolExecution::executionStep(
    std::int32_t index) const {
  return zt::entryAt(_executionSteps, index);
}

std::vector<std::shared_ptr<ZtPortalPoolExecutionStep>> ZtPortalPoolExecution::executionSteps()
    const {
  return _executionSteps;
}
