// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "ztportal/base/ZtAtomic.h"
#include "ztportal/base/ZtDate.h"
#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/pools/ZtPortalDef.h"

namespace zt {
template <class Object>
struct Fields;
}

/// One step of an execution. Its message and code are initially empty; the code is a string.
///
///     auto step = execution->addStep(ZtDate::now(), "Copy", ZtPortalStepError);
///     step->setStepMessageString("disk full");
///     step->setStepMessageCode("28");
///
/// Single reads and writes of strings and dates are atomic.
class ZT_EXPORT ZtPortalPoolExecutionStep {
  struct Creation {
    explicit Creation() = default;
  };

 public:
  /// `type` is a `ZtPortalStepType` or any other number, which is written as an empty value.
  static std::shared_ptr<ZtPortalPoolExecutionStep> initWithValues(const ZtDate& timeStamp,
                                                                   const ZtString& name,
                                                                   std::uint64_t type);

  ZtPortalPoolExecutionStep(Creation creation, ZtDate timeStamp, ZtString name, std::uint64_t type);
  ZtPortalPoolExecutionStep(const ZtPortalPoolExecutionStep&) = delete;
  ZtPortalPoolExecutionStep& operator=(const ZtPortalPoolExecutionStep&) = delete;
  ~ZtPortalPoolExecutionStep();

  ZtDate timeStamp() const { return _timeStamp.load(); }
  void setTimeStamp(const ZtDate& value) { _timeStamp.store(value); }
  ZtString stepName() const { return _stepName.load(); }
  void setStepName(ZtString value) { _stepName.store(std::move(value)); }
  std::uint64_t stepType() const { return _stepType; }
  void setStepType(std::uint64_t value) { _stepType = value; }
  ZtString stepMessageString() const { return _stepMessageString.load(); }
  void setStepMessageString(ZtString value) { _stepMessageString.store(std::move(value)); }
  ZtString stepMessageCode() const { return _stepMessageCode.load(); }
  void setStepMessageCode(ZtString value) { _stepMessageCode.store(std::move(value)); }

 private:
  friend struct zt::Fields<ZtPortalPoolExecutionStep>;

  ZtAtomic<ZtString> _stepMessageCode{ZtString::constant<"">()};
  ZtAtomic<ZtString> _stepMessageString{ZtString::constant<"">()};
  ZtAtomic<ZtString> _stepName;
  ZtAtomic<ZtDate> _timeStamp;
  std::uint64_t _stepType;
};
