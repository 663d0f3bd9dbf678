// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/time/CivilTime.h"

#include <cstddef>
#include <cstring>

namespace zt {
namespace {

/// "00" to "99", concatenated.
constexpr std::array<char, 200> kTwoDigits = [] {
  std::array<char, 200> digits{};
  for (std::size_t i = 0; i < 100; ++i) {
    digits[i * 2] = static_cast<char>('0' + i / 10);
    digits[i * 2 + 1] = static_cast<char>('0' + i % 10);
  }
  return digits;
}();

void writeTwoDigits(char* out, unsigned value) {
  std::memcpy(out, kTwoDigits.data() + std::size_t{value} * 2, 2);
}

}  // namespace

void CivilTimeWriter::append(std::string& text, std::chrono::milliseconds sinceEpoch) {
  const auto day = std::chrono::floor<std::chrono::days>(sinceEpoch);
  char* const out = _text.data();
  if (day != _day) {
    const std::chrono::year_month_day date{std::chrono::sys_days(day)};
    const auto year = static_cast<unsigned>(static_cast<int>(date.year()));
    writeTwoDigits(out, year / 100);
    writeTwoDigits(out + 2, year % 100);
    writeTwoDigits(out + 5, static_cast<unsigned>(date.month()));
    writeTwoDigits(out + 8, static_cast<unsigned>(date.day()));
    _day = day;
  }
  const auto ofDay = static_cast<unsigned>((sinceEpoch - day).count());
  const unsigned milliseconds = ofDay % 1000;
  const unsigned seconds = ofDay / 1000;
  writeTwoDigits(out + 11, seconds / 3600);
  writeTwoDigits(out + 14, seconds / 60 % 60);
  writeTwoDigits(out + 17, seconds % 60);
  out[20] = static_cast<char>('0' + milliseconds / 100);
  writeTwoDigits(out + 21, milliseconds % 100);
  text.append(out, _text.size());
}

void appendCivilTime(std::string& text, std::chrono::milliseconds sinceEpoch) {
  CivilTimeWriter().append(text, sinceEpoch);
}

}  // namespace zt
