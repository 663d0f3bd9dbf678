// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "tests/support/ScopedEnvironment.h"
#include "ztportal/platform/time/DateText.h"

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

inline constexpr std::int64_t kDay = 86'400'000;                // milliseconds
inline constexpr std::int64_t kWinterNoon = 1'795'262'400'000;  // 2026-11-21T12:00:00.000Z

inline std::string timestamp(std::int64_t milliseconds) {
  std::string text;
  appendTimestamp(text, ZtDate::fromMilliseconds(milliseconds));
  return text;
}

}  // namespace zt::test
