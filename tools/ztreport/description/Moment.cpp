#include "tools/ztreport/description/Moment.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>

namespace zt::tools {

namespace {

/// Takes a text apart from its start. After the first thing that is not there nothing more is.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : _rest(text) {}

  /// A number of exactly `digits` digits and at most `largest`.
  int number(int digits, int largest) {
    int value = 0;
    for (int i = 0; i < digits; ++i) value = value * 10 + digit();
    if (value > largest) _failed = true;
    return value;
  }

  void letter(char expected) {
    if (!take(expected)) _failed = true;
  }

  bool take(char expected) {
    if (_failed || _rest.empty() || _rest.front() != expected) return false;
    _rest.remove_prefix(1);
    return true;
  }

  /// Up to nine digits of a fraction, in milliseconds.
  int milliseconds() {
    int value = 0;
    int digits = 0;
    while (digits < 9 && startsWithDigit()) {
      const int next = digit();
      if (digits++ < 3) value = value * 10 + next;
    }
    if (digits == 0) _failed = true;
    for (; digits < 3; ++digits) value *= 10;
    return value;
  }

  /// Whether all was there and nothing is left.
  bool done() const { return !_failed && _rest.empty(); }

 private:
  bool startsWithDigit() const {
    return !_rest.empty() && _rest.front() >= '0' && _rest.front() <= '9';
  }
  int digit() {
    if (_failed || !startsWithDigit()) {
      _failed = true;
      return 0;
    }
    const int value = _rest.front() - '0';
    _rest.remove_prefix(1);
    return value;
  }

  std::string_view _rest;
  bool _failed = false;
};

}  // namespace

std::optional<ZtDate> parseMoment(std::string_view text) {
  using std::chrono::hours;
  using std::chrono::milliseconds;
  using std::chrono::minutes;
  using std::chrono::seconds;
  using std::chrono::sys_days;
  using std::chrono::year_month_day;
  Scanner scanner(text);
  const int year = scanner.number(4, 9999);
  scanner.letter('-');
  const int month = scanner.number(2, 12);
  scanner.letter('-');
  const int day = scanner.number(2, 31);
  scanner.letter('T');
  const int hour = scanner.number(2, 23);
  scanner.letter(':');
  const int minute = scanner.number(2, 59);
  scanner.letter(':');
  const int second = scanner.number(2, 59);
  const int fraction = scanner.take('.') ? scanner.milliseconds() : 0;

  minutes offset{0};
  if (!scanner.take('Z')) {
    const bool west = scanner.take('-');
    if (!west) scanner.letter('+');
    const int offsetHours = scanner.number(2, 23);
    scanner.letter(':');
    offset = hours(offsetHours) + minutes(scanner.number(2, 59));
    if (west) offset = -offset;
  }
  if (!scanner.done()) return std::nullopt;

  const year_month_day date{std::chrono::year(year),
                            std::chrono::month(static_cast<unsigned>(month)),
                            std::chrono::day(static_cast<unsigned>(day))};
  if (!date.ok()) return std::nullopt;
  const auto sinceEpoch =
      std::chrono::duration_cast<milliseconds>(sys_days(date).time_since_epoch()) + hours(hour) +
      minutes(minute) + seconds(second) + milliseconds(fraction) - offset;
  return ZtDate::fromMilliseconds(std::int64_t{sinceEpoch.count()});
}

std::string momentText(ZtDate moment, std::chrono::minutes offset) {
  using std::chrono::abs;
  using std::chrono::days;
  using std::chrono::floor;
  using std::chrono::minutes;
  constexpr minutes kLargestOffset{23 * 60 + 59};
  constexpr std::chrono::year kFirst{0};
  constexpr std::chrono::year kLast{9999};
  const std::chrono::sys_time<std::chrono::milliseconds> utc{
      std::chrono::milliseconds(moment.milliseconds())};
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

}  // namespace zt::tools
