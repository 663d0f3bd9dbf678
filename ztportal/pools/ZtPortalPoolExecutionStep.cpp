#include "ztportal/pools/ZtPortalPoolExecutionStep.h"

std::shared_ptr<ZtPortalPoolExecutionStep> ZtPortalPoolExecutionStep::initWithValues(
    const ZtDate& timeStamp, const ZtString& name, std::uint64_t type) {
  return std::make_shared<ZtPortalPoolExecutionStep>(Creation{}, timeStamp, name, type);
}

ZtPortalPoolExecutionStep::ZtPortalPoolExecutionStep(Creation /*creation*/, ZtDate timeStamp,
                                                     ZtString name, std::uint64_t type)
    : _stepName(std::move(name)), _timeStamp(timeStamp), _stepType(type) {}

ZtPortalPoolExecutionStep::~ZtPortalPoolExecutionStep() = default;
