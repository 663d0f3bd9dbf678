#pragma once

#include "tests/support/ScopedEnvironment.h"

namespace zt::test {

/// Sets the time zone `zone` (null: none is set) and the locale `locale` for all categories.
class UserIn {
 public:
  UserIn(const char* zone, const char* locale)
      : _zone("TZ", zone),
        _all("LC_ALL", nullptr),
        _time("LC_TIME", nullptr),
        _lang("LANG", locale) {}

 private:
  ScopedEnvironment _zone;
  ScopedEnvironment _all;
  ScopedEnvironment _time;
  ScopedEnvironment _lang;
};

}  // namespace zt::test
