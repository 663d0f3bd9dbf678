// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ostream>

#include "ztportal/base/ZtDate.h"
#include "ztportal/base/ZtString.h"

// How GoogleTest prints the library's values. It finds these functions by argument-dependent
// lookup, so they are in the namespace of the values.

inline void PrintTo(const ZtString& text, std::ostream* out) {
  if (text.isNull()) {
    *out << "missing";
  } else {
    *out << '"' << text.view() << '"';
  }
}

inline void PrintTo(const ZtDate& date, std::ostream* out) {
  if (date.isNull()) {
    *out << "missing";
  } else {
    *out << date.milliseconds() << " ms";
  }
}
