#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace zt {

/// The years whose dates `appendCivilTime` can write.
inline constexpr std::chrono::year kFirstCivilYear{1};
inline constexpr std::chrono::year kLastCivilYear{9999};

/// Appends the moment `sinceEpoch` on a clock that counts from 1970-01-01T00:00:00.000, by the
/// Gregorian calendar, always in 23 characters: "2026-11-21T13:00:00.000". The year must be one
/// of 1 to 9999. Grows `text`, allocates nothing else.
void appendCivilTime(std::string& text, std::chrono::milliseconds sinceEpoch);

}  // namespace zt
