// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

#include "ztportal/base/ZtAtomic.h"
#include "ztportal/base/ZtBOOL.h"
#include "ztportal/base/ZtDate.h"
#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

namespace zt {
template <class Object>
struct Fields;
}

/// The result of a run: when it began and ended, its result and error, and whether it succeeded.
/// This is a base class of the pools that describe a run; hosts use it through them:
///
///     auto pool = document->addPoolInitialization(ZtDate::now());
///     pool->setEndResultCode("0");
///     pool->setEndTime(ZtDate::now());
///
/// A new run starts and ends at one time, is successful and has empty strings. Result and error
/// codes are strings. Single reads and writes of strings and dates are atomic.
class ZT_EXPORT ZtPortalRunResult {
 public:
  ZtPortalRunResult(const ZtPortalRunResult&) = delete;
  ZtPortalRunResult& operator=(const ZtPortalRunResult&) = delete;

  ZtDate startTime() const { return _startTime.load(); }
  void setStartTime(const ZtDate& value) { _startTime.store(value); }
  ZtDate endTime() const { return _endTime.load(); }
  void setEndTime(const ZtDate& value) { _endTime.store(value); }
  ZtString endResultString() const { return _endResultString.load(); }
  void setEndResultString(ZtString value) { _endResultString.store(std::move(value)); }
  ZtString endResultCode() const { return _endResultCode.load(); }
  void setEndResultCode(ZtString value) { _endResultCode.store(std::move(value)); }
  ZtString endErrorMessageString() const { return _endErrorMessageString.load(); }
  void setEndErrorMessageString(ZtString value) { _endErrorMessageString.store(std::move(value)); }
  ZtString endErrorMessageCode() const { return _endErrorMessageCode.load(); }
  void setEndErrorMessageCode(ZtString value) { _endErrorMessageCode.store(std::move(value)); }
  ZtBOOL successfull() const { return _successfull; }
  void setSuccessfull(ZtBOOL value) { _successfull = value; }

 protected:
  explicit ZtPortalRunResult(const ZtDate& time) : _startTime(time), _endTime(time) {}
  ~ZtPortalRunResult() = default;

 private:
  friend struct zt::Fields<ZtPortalRunResult>;

  ZtAtomic<ZtDate> _startTime;
  ZtAtomic<ZtDate> _endTime;
  ZtAtomic<ZtString> _endResultString{ZtString::constant<"">()};
  ZtAtomic<ZtString> _endResultCode{ZtString::constant<"">()};
  ZtAtomic<ZtString> _endErrorMessageString{ZtString::constant<"">()};
  ZtAtomic<ZtString> _endErrorMessageCode{ZtString::constant<"">()};
  ZtBOOL _successfull = 1;
};
