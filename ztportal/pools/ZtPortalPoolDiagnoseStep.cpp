#include "ztportal/pools/ZtPortalPoolDiagnoseStep.h"

#include "ztportal/pools/PoolWriter.h"
#include "ztportal/pools/ZtPortalDef.h"

std::shared_ptr<ZtPortalPoolDiagnoseStep> ZtPortalPoolDiagnoseStep::initWithValues(
    const ZtDate& timeStamp, const ZtString& name, std::uint64_t type) {
  return std::make_shared<ZtPortalPoolDiagnoseStep>(Creation{}, timeStamp, name, type);
}

ZtPortalPoolDiagnoseStep::ZtPortalPoolDiagnoseStep(Creation /*creation*/, ZtDate timeStamp,
                                                   ZtString name, std::uint64_t type)
    : _stepName(std::move(name)), _timeStamp(timeStamp), _diagnoseType(type) {}

ZtPortalPoolDiagnoseStep::~ZtPortalPoolDiagnoseStep() = default;

void ZtPortalPoolDiagnoseStep::addFieldsTo(zt::PoolWriter& record) const {
  record.string("DIAGNOSE_STEPNAME", _stepName);
  record.string("DIAGNOSE_DIAGNOSETYPE", ZtPortalDef::diagnoseTypeToString(_diagnoseType).view());
  record.string("DIAGNOSE_MESSAGESTRING", _stepMessageString);
  record.string("DIAGNOSE_MESSAGECODE", _stepMessageCode);
  record.boolean("DIAGNOSE_SUCCESSFULLREPAIR", _successfullRepair);
  record.boolean("DIAGNOSE_CANCELLEDREPAIR", _cancelledRepair);
  record.string("DIAGNOSE_OPTIONALSTRING", _optionalString);
  record.boolean("DIAGNOSE_OPTIONALBOOLEAN", _optionalBoolean);
}
