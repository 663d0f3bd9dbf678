// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <string>

namespace zt {

/// The years whose dates `appendCivilTime` can write.
inline constexpr std::chrono::year kFirstCivilYear{1};
inline constexpr std::chrono::year kLastCivilYear{9999};

/// Writes milliseconds since 1970-01-01T00:00:00.000 in the Gregorian calendar, always with 23
/// characters: "2026-11-21T13:00:00.000". Keeps the characters of the day, because the next
/// timestamp is nearly always of the same day.
class CivilTimeWriter {
 public:
  /// `sinceEpoch` must be in the years 1 to 9999. Only growing `text` allocates memory.
  void append(std::string& text, std::chrono::milliseconds sinceEpoch);

 private:
  std::chrono::days _day{0};
  std::array<char, 23> _text{'1', '9', '7', '0', '-', '0', '1', '-', '0', '1', 'T', '0',
                             '0', ':', '0', '0', ':', '0', '0', '.', '0', '0', '0'};
};

/// Appends one timestamp.
void appendCivilTime(std::string& text, std::chrono::milliseconds sinceEpoch);

}  // namespace zt
