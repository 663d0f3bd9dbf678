// SPDX-License-Identifier: Apache-2.0
#include "ztportal/pools/ZtPortalPoolDiagnose.h"

#include "ztportal/base/ZtException.h"
#include "ztportal/pools/ListAccess.h"
#include "ztportal/pools/PoolWriter.h"

std::shared_ptr<ZtPortalPoolDiagnose> ZtPortalPoolDiagnose::initWithValues(
    const ZtDate& timeStamp) {
  return std::make_shared<ZtPortalPoolDiagnose>(Creation{}, timeStamp);
}

ZtPortalPoolDiagnose::ZtPortalPoolDiagnose(Creation creation, const ZtDate& timeStamp)
    : ZtPortalPool(creation, zt::Fields<ZtPortalPoolDiagnose>::kType, timeStamp) {}

ZtPortalPoolDiagnose::~ZtPortalPoolDiagnose() = default;

void ZtPortalPoolDiagnose::addToXml(const ZtString& prefix, std::string& xml, bool soap) const {
  zt::writePool(*this, prefix, xml, soap);
}

std::shared_ptr<ZtPortalPoolDiagnoseStep> ZtPortalPoolDiagnose::diagnoseStep(
    std::int32_t index) const {
  return zt::entryAt(*_diagnoseSteps, index);
}

std::shared_ptr<ZtPortalPoolDiagnoseStep> ZtPortalPoolDiagnose::addStep(const ZtDate& timeStamp,
                                                                        const ZtString& stepName,
                                                                        std::uint64_t type) try {
  auto step = ZtPortalPoolDiagnoseStep::initWithValues(timeStamp, stepName, type);
  _diagnoseSteps->push_back(step);
  return step;
} catch (const ZtException&) {
  return nullptr;
}

std::shared_ptr<ZtPortalPoolDiagnoseStep> ZtPortalPoolDiagnoseStep::initWithValues(
    const ZtDate& timeStamp, const ZtString& name, std::uint64_t type) {
  return std::make_shared<ZtPortalPoolDiagnoseStep>(Creation{}, timeStamp, name, type);
}

ZtPortalPoolDiagnoseStep::ZtPortalPoolDiagnoseStep(Creation /*creation*/, ZtDate timeStamp,
                                                   ZtString name, std::uint64_t type)
    : _stepName(std::move(name)), _timeStamp(timeStamp), _diagnoseType(type) {}

ZtPortalPoolDiagnoseStep::~ZtPortalPoolDiagnoseStep() = default;
