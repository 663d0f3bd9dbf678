#pragma once

#include "tests/support/ScopedEnvironment.h"

namespace zt::test {

/// A process whose user has the time zone `zone` (null: none set) and the locale `locale` for
/// everything.
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
