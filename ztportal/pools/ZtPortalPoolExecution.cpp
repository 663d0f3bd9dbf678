#include "ztportal/pools/ZtPortalPoolExecution.h"

#include "ztportal/base/ZtException.h"
#include "ztportal/pools/ListAccess.h"
#include "ztportal/pools/WritePool.h"

std::shared_ptr<ZtPortalPoolExecution> ZtPortalPoolExecution::initWithValues(
    const ZtDate& timeStamp) {
  return std::make_shared<ZtPortalPoolExecution>(Creation{}, timeStamp);
}

ZtPortalPoolExecution::ZtPortalPoolExecution(Creation creation, const ZtDate& timeStamp)
    : ZtPortalPool(creation, "EXECUTION", timeStamp), ZtPortalRunResult(timeStamp) {}

ZtPortalPoolExecution::~ZtPortalPoolExecution() = default;

void ZtPortalPoolExecution::addToXml(const ZtString& prefix, std::string& xml, bool soap) const {
  zt::writePool(*this, prefix, xml, soap, [this](zt::PoolWriter& pool) {
    pool.string("INSTALLATION_TYPE", _executionType);
    pool.string("START_POINT", _startPoint);
    addStartTimeTo(pool);
    pool.string("END_POINT", _endPoint);
    addEndTimeTo(pool);
    addResultTo(pool);
    pool.boolean("CANCELLED", _cancelled);
    addSuccessTo(pool);
    pool.records("INSTALLATIONSTEPS", _executionSteps);
  });
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
