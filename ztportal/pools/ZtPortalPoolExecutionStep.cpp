#include "ztportal/pools/ZtPortalPoolExecutionStep.h"

#include "ztportal/pools/PoolWriter.h"
#include "ztportal/pools/ZtPortalDef.h"

std::shared_ptr<ZtPortalPoolExecutionStep> ZtPortalPoolExecutionStep::initWithValues(
    const ZtDate& timeStamp, const ZtString& name, std::uint64_t type) {
  return std::make_shared<ZtPortalPoolExecutionStep>(Creation{}, timeStamp, name, type);
}

ZtPortalPoolExecutionStep::ZtPortalPoolExecutionStep(Creation /*creation*/, ZtDate timeStamp,
                                                     ZtString name, std::uint64_t type)
    : _stepName(std::move(name)), _timeStamp(timeStamp), _stepType(type) {}

ZtPortalPoolExecutionStep::~ZtPortalPoolExecutionStep() = default;

void ZtPortalPoolExecutionStep::addFieldsTo(zt::PoolWriter& record) const {
  record.string("STEP_NAME", _stepName);
  record.string("STEP_TYPE", ZtPortalDef::stepTypeToString(_stepType).view());
  record.date("STEP_TIMESTAMP", _timeStamp);
  record.string("STEP_MESSAGESTRING", _stepMessageString);
  record.string("STEP_MESSAGECODE", _stepMessageCode);
}
