// SPDX-License-Identifier: Apache-2.0
#include "ztportal/pools/ZtPortalPoolExecution.h"

#include "ztportal/base/ZtException.h"
#include "ztportal/pools/ListAccess.h"
#include "ztportal/pools/PoolWriter.h"

std::shared_ptr<ZtPortalPoolExecution> ZtPortalPoolExecution::initWithValues(
    const ZtDate& timeStamp) {
  return std::make_shared<ZtPortalPoolExecution>(Creation{}, timeStamp);
}

ZtPortalPoolExecution::ZtPortalPoolExecution(Creation creation, const ZtDate& timeStamp)
    : ZtPortalPool(creation, zt::Fields<ZtPortalPoolExecution>::kType, timeStamp),
      ZtPortalRunResult(timeStamp) {}

ZtPortalPoolExecution::~ZtPortalPoolExecution() = default;

void ZtPortalPoolExecution::addToXml(const ZtString& prefix, std::string& xml, bool soap) const {
  zt::writePool(*this, prefix, xml, soap);
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

std::shared_ptr<ZtPortalPoolExecutionStep> ZtPortalPoolExecutionStep::initWithValues(
    const ZtDate& timeStamp, const ZtString& name, std::uint64_t type) {
  return std::make_shared<ZtPortalPoolExecutionStep>(Creation{}, timeStamp, name, type);
}

ZtPortalPoolExecutionStep::ZtPortalPoolExecutionStep(Creation /*creation*/, ZtDate timeStamp,
                                                     ZtString name, std::uint64_t type)
    : _stepName(std::move(name)), _timeStamp(timeStamp), _stepType(type) {}

ZtPortalPoolExecutionStep::~ZtPortalPoolExecutionStep() = default;
