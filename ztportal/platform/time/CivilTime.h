#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <string>

namespace zt {

/// The years whose dates `appendCivilTime` can write.
inline constexpr std::chrono::year kFirstCivilYear{1};
inline constexpr std::chrono::year kLastCivilYear{9999};

/// Writes moments on a clock that counts from 1970-01-01T00:00:00.000, by the Gregorian calendar,
/// always in 23 characters: "2026-11-21T13:00:00.000". Keeps the text of the day, since the next
/// moment is nearly always one of the same day.
class CivilTimeWriter {
 public:
  /// Appends the moment `sinceEpoch`, whose year must be one of 1 to 9999. Grows `text`, allocates
  /// nothing else.
  void append(std::string& text, std::chrono::milliseconds sinceEpoch);

 private:
  std::chrono::days _day{0};
  std::array<char, 23> _text{'1', '9', '7', '0', '-', '0', '1', '-', '0', '1', 'T', '0',
                             '0', ':', '0', '0', ':', '0', '0', '.', '0', '0', '0'};
};

/// Appends one moment.
void appendCivilTime(std::string& text, std::chrono::milliseconds sinceEpoch);

}  // namespace zt
