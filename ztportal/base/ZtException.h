// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

/// The only exception class that the library throws and catches: a name and a reason.
///
///     try {
///       document->pools().front()->field(7);
///     } catch (const ZtException& error) {
///       // error.name() == "OUT_OF_BOUNDS", error.reason() == "Index (7) out of bounds"
///     }
class ZT_EXPORT ZtException : public std::runtime_error {
 public:
  ZtException(ZtString name, ZtString reason);
  ZtException(const ZtException&) noexcept = default;
  ZtException(ZtException&&) noexcept = default;
  ZtException& operator=(const ZtException&) noexcept = default;
  ZtException& operator=(ZtException&&) noexcept = default;
  ~ZtException() override;

  const ZtString& name() const noexcept { return _name; }
  const ZtString& reason() const noexcept { return _reason; }
  // what() is the reason as a C string.

 private:
  ZtString _name;
  ZtString _reason;
};
