// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "ztportal/base/ZtDate.h"
#include "ztportal/platform/time/Rfc3339.h"

namespace zt {

/// Reads the timestamp of a description: RFC 3339 with "T" and "Z" in capitals, a fraction of at
/// most nine digits (cut off after the third) and no leap seconds. Nullopt for any other text.
inline std::optional<ZtDate> dateOf(std::string_view text) {
  const auto parsed = parseRfc3339(text);
  const bool isRead = parsed && !parsed->isLeapSecond && parsed->fractionDigits <= 9;
  if (!isRead || text.ends_with('z')) return std::nullopt;
  return ZtDate::fromMilliseconds(std::int64_t{parsed->time.count()});
}

}  // namespace zt
