#include "ztportal/platform/CivilTime.h"

namespace zt {
namespace {

char digit(unsigned value) { return static_cast<char>('0' + value); }

void writeTwoDigits(char* out, unsigned value) {
  out[0] = digit(value / 10);
  out[1] = digit(value % 10);
}

}  // namespace

void appendCivilTime(std::string& text, std::chrono::milliseconds sinceEpoch) {
  const auto days = std::chrono::floor<std::chrono::days>(sinceEpoch);
  const std::chrono::year_month_day date{std::chrono::sys_days(days)};
  const auto year = static_cast<unsigned>(static_cast<int>(date.year()));
  const auto ofDay = static_cast<unsigned>((sinceEpoch - days).count());
  const unsigned milliseconds = ofDay % 1000;
  const unsigned seconds = ofDay / 1000;

  char out[] = "0000-00-00T00:00:00.000";
  writeTwoDigits(out, year / 100);
  writeTwoDigits(out + 2, year % 100);
  writeTwoDigits(out + 5, static_cast<unsigned>(date.month()));
  writeTwoDigits(out + 8, static_cast<unsigned>(date.day()));
  writeTwoDigits(out + 11, seconds / 3600);
  writeTwoDigits(out + 14, seconds / 60 % 60);
  writeTwoDigits(out + 17, seconds % 60);
  out[20] = digit(milliseconds / 100);
  writeTwoDigits(out + 21, milliseconds % 100);
  text.append(out, sizeof(out) - 1);
}

}  // namespace zt
