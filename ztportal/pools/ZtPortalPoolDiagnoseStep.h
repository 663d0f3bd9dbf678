// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "ztportal/base/ZtAtomic.h"
#include "ztportal/base/ZtBOOL.h"
#include "ztportal/base/ZtDate.h"
#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/pools/ZtPortalDef.h"

namespace zt {
template <class Object>
struct Fields;
}

/// One step of a diagnose run. A new step counts as repaired until the host says otherwise; it is
/// not cancelled and its strings are empty. The message code is a string.
///
///     auto step = diagnose->addStep(ZtDate::now(), "DNS", ZtPortalDiagnoseAutomatic);
///     step->setStepMessageString("no name server");
///     step->setSuccessfullRepair(0);
///
/// The timestamp is for the host's own use: it is deliberately not written into reports. Single
/// reads and writes of strings and dates are atomic.
class ZT_EXPORT ZtPortalPoolDiagnoseStep {
  struct Creation {
    explicit Creation() = default;
  };

 public:
  /// `type` is a `ZtPortalDiagnoseType` or any other number, which is written as an empty value.
  static std::shared_ptr<ZtPortalPoolDiagnoseStep> initWithValues(const ZtDate& timeStamp,
                                                                  const ZtString& name,
                                                                  std::uint64_t type);

  ZtPortalPoolDiagnoseStep(Creation creation, ZtDate timeStamp, ZtString name, std::uint64_t type);
  ZtPortalPoolDiagnoseStep(const ZtPortalPoolDiagnoseStep&) = delete;
  ZtPortalPoolDiagnoseStep& operator=(const ZtPortalPoolDiagnoseStep&) = delete;
  ~ZtPortalPoolDiagnoseStep();

  ZtDate timeStamp() const { return _timeStamp.load(); }
  void setTimeStamp(const ZtDate& value) { _timeStamp.store(value); }
  ZtString stepName() const { return _stepName.load(); }
  void setStepName(ZtString value) { _stepName.store(std::move(value)); }
  std::uint64_t diagnoseType() const { return _diagnoseType; }
  void setDiagnoseType(std::uint64_t value) { _diagnoseType = value; }
  ZtString stepMessageString() const { return _stepMessageString.load(); }
  void setStepMessageString(ZtString value) { _stepMessageString.store(std::move(value)); }
  ZtString stepMessageCode() const { return _stepMessageCode.load(); }
  void setStepMessageCode(ZtString value) { _stepMessageCode.store(std::move(value)); }
  ZtBOOL successfullRepair() const { return _successfullRepair; }
  void setSuccessfullRepair(ZtBOOL value) { _successfullRepair = value; }
  ZtBOOL cancelledRepair() const { return _cancelledRepair; }
  void setCancelledRepair(ZtBOOL value) { _cancelledRepair = value; }
  /// A string and a flag for the host's own use.
  ZtString optionalString() const { return _optionalString.load(); }
  void setOptionalString(ZtString value) { _optionalString.store(std::move(value)); }
  ZtBOOL optionalBoolean() const { return _optionalBoolean; }
  void setOptionalBoolean(ZtBOOL value) { _optionalBoolean = value; }

 private:
  friend struct zt::Fields<ZtPortalPoolDiagnoseStep>;

  ZtAtomic<ZtString> _stepName;
  ZtAtomic<ZtDate> _timeStamp;
  std::uint64_t _diagnoseType;
  ZtAtomic<ZtString> _stepMessageCode{ZtString::constant<"">()};
  ZtAtomic<ZtString> _stepMessageString{ZtString::constant<"">()};
  ZtBOOL _successfullRepair = 1;
  ZtBOOL _cancelledRepair = 0;
  ZtAtomic<ZtString> _optionalString{ZtString::constant<"">()};
  ZtBOOL _optionalBoolean = 0;
};
