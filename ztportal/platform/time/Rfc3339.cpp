// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/time/Rfc3339.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace zt {

namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;

/// Reads a text from its start. After the first part that does not match, everything else fails
/// too.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : _rest(text) {}

  /// Reads a number of exactly `digits` digits that is at most `largest`.
  int number(std::size_t digits, int largest) {
    int value = 0;
    for (const char digit : take(std::min(digits, leadingDigits()))) {
      value = value * 10 + (digit - '0');
      --digits;
    }
    if (digits > 0 || value > largest) _failed = true;
    return value;
  }

  bool skip(char expected) {
    if (_failed || !_rest.starts_with(expected)) return false;
    _rest.remove_prefix(1);
    return true;
  }
  void expect(char expected) {
    if (!skip(expected)) _failed = true;
  }

  std::string_view digits() { return take(leadingDigits()); }

  void fail() { _failed = true; }
  bool failed() const { return _failed; }
  std::string_view rest() const { return _rest; }

 private:
  std::size_t leadingDigits() const {
    return std::min(_rest.find_first_not_of("0123456789"), _rest.size());
  }
  std::string_view take(std::size_t count) {
    const std::string_view taken = _rest.substr(0, count);
    _rest.remove_prefix(count);
    return taken;
  }

  std::string_view _rest;
  bool _failed = false;
};

minutes readOffset(Scanner& scanner) {
  if (scanner.skip('Z') || scanner.skip('z')) return minutes(0);
  const bool west = scanner.skip('-');
  if (!west) scanner.expect('+');
  const std::chrono::hours hours(scanner.number(2, 23));
  scanner.expect(':');
  const minutes offset = hours + minutes(scanner.number(2, 59));
  return west ? -offset : offset;
}

}  // namespace

std::optional<Rfc3339Time> readRfc3339Time(std::string_view text) {
  Scanner scanner(text);
  const int year = scanner.number(4, 9999);
  scanner.expect('-');
  const int month = scanner.number(2, 12);
  scanner.expect('-');
  const int day = scanner.number(2, 31);
  scanner.expect('T');
  const std::chrono::hours hour(scanner.number(2, 23));
  scanner.expect(':');
  const minutes minute(scanner.number(2, 59));
  scanner.expect(':');
  const std::chrono::seconds second(scanner.number(2, 60));
  std::string_view fraction;
  if (scanner.skip('.')) {
    fraction = scanner.digits();
    if (fraction.empty()) scanner.fail();
  }
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  if (scanner.failed() || !date.ok()) return std::nullopt;

  int thousandths = 0;
  for (std::size_t i = 0; i < 3; ++i) {
    thousandths = thousandths * 10 + (i < fraction.size() ? fraction[i] - '0' : 0);
  }
  return Rfc3339Time{std::chrono::sys_days(date).time_since_epoch() + hour + minute + second +
                         milliseconds(thousandths),
                     second == minutes(1), fraction.size(), scanner.rest()};
}

std::optional<Rfc3339Time> parseRfc3339(std::string_view text) {
  auto parsed = readRfc3339Time(text);
  if (!parsed) return std::nullopt;
  Scanner scanner(parsed->rest);
  parsed->time -= readOffset(scanner);
  parsed->rest = scanner.rest();
  if (scanner.failed() || !parsed->rest.empty()) return std::nullopt;
  return parsed;
}

std::string formatRfc3339(milliseconds sinceEpoch, minutes offset) {
  using std::chrono::days;
  using std::chrono::floor;
  constexpr minutes kLargestOffset{23 * 60 + 59};
  constexpr std::chrono::year kFirst{0};
  constexpr std::chrono::year kLast{9999};
  const std::chrono::sys_time<milliseconds> utc{sinceEpoch};
  const auto yearAt = [&](minutes east) {
    return std::chrono::year_month_day(floor<days>(utc + east)).year();
  };
  if (abs(offset) > kLargestOffset) offset = minutes(0);
  if (yearAt(offset) < kFirst) offset = kLargestOffset;
  if (yearAt(offset) > kLast) offset = -kLargestOffset;

  const auto local = utc + offset;
  const std::chrono::year_month_day date(floor<days>(local));
  const std::chrono::hh_mm_ss time(local - floor<days>(local));
  std::array<char, 96> text{};
  int size = std::snprintf(
      text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03d", static_cast<int>(date.year()),
      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
      static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
      static_cast<int>(time.seconds().count()), static_cast<int>(time.subseconds().count()));
  std::string written(text.data(), static_cast<std::size_t>(size));
  if (offset == minutes(0)) return written + "Z";
  const std::chrono::hh_mm_ss zone(abs(offset));
  size = std::snprintf(text.data(), text.size(), "%c%02d:%02d", offset < minutes(0) ? '-' : '+',
                       static_cast<int>(zone.hours().count()),
                       static_cast<int>(zone.minutes().count()));
  return written.append(text.data(), static_cast<std::size_t>(size));
}

}  // namespace zt
