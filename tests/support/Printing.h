#pragma once

#include <ostream>

#include "ztportal/base/ZtDate.h"
#include "ztportal/base/ZtString.h"

// How GoogleTest shows the library's values. Found by argument-dependent look-up, so they stand in
// the values' own namespace.

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
