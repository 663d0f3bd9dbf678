#include "tools/ztinbox/api/Moment.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <ctime>

namespace zt::inbox {

namespace {

using std::chrono::milliseconds;

/// Takes a text apart from its beginning; a step that does not fit makes it fail for good.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : _rest(text) {}

  /// A number of exactly `digits` digits within the limits.
  int number(std::size_t digits, int least, int most) {
    int value = 0;
    if (_rest.size() < digits) return fail();
    for (const char digit : _rest.substr(0, digits)) {
      if (digit < '0' || digit > '9') return fail();
      value = value * 10 + (digit - '0');
    }
    if (value < least || value > most) return fail();
    _rest.remove_prefix(digits);
    return value;
  }

  bool skips(char character) {
    if (_failed || !_rest.starts_with(character)) return false;
    _rest.remove_prefix(1);
    return true;
  }
  void expect(char character) {
    if (!skips(character)) _failed = true;
  }

  /// The digits of a fraction of a second, cut off after the third.
  milliseconds fraction() {
    int value = 0;
    int weight = 100;
    std::size_t count = 0;
    for (; count < _rest.size() && _rest[count] >= '0' && _rest[count] <= '9'; ++count) {
      value += (_rest[count] - '0') * weight;
      weight /= 10;
    }
    if (count == 0) _failed = true;
    _rest.remove_prefix(count);
    return milliseconds(value);
  }

  bool failed() const { return _failed; }
  std::string_view rest() const { return _rest; }

 private:
  int fail() {
    _failed = true;
    return 0;
  }

  std::string_view _rest;
  bool _failed = false;
};

milliseconds readDate(Scanner& scanner) {
  const int year = scanner.number(4, 1, 9999);
  scanner.expect('-');
  const int month = scanner.number(2, 1, 12);
  scanner.expect('-');
  const int day = scanner.number(2, 1, 31);
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  // A day that its month does not have (or a failure) is told by the caller.
  if (!date.ok()) return milliseconds::min();
  return std::chrono::sys_days(date).time_since_epoch();
}

milliseconds readTime(Scanner& scanner) {
  const std::chrono::hours hours(scanner.number(2, 0, 23));
  scanner.expect(':');
  const std::chrono::minutes minutes(scanner.number(2, 0, 59));
  scanner.expect(':');
  // A leap second is the next minute's first.
  const std::chrono::seconds seconds(scanner.number(2, 0, 60));
  return hours + minutes + seconds;
}

std::chrono::minutes readOffset(Scanner& scanner) {
  if (scanner.skips('Z') || scanner.skips('z')) return {};
  const bool west = scanner.skips('-');
  if (!west) scanner.expect('+');
  const std::chrono::hours hours(scanner.number(2, 0, 23));
  scanner.expect(':');
  const std::chrono::minutes minutes(scanner.number(2, 0, 59));
  return west ? -(hours + minutes) : hours + minutes;
}

}  // namespace

std::string momentText(Moment moment) {
  const auto whole = std::chrono::floor<milliseconds>(moment);
  const auto seconds = std::chrono::floor<std::chrono::seconds>(whole);
  const std::time_t time = std::chrono::system_clock::to_time_t(seconds);
  std::tm utc{};
  gmtime_r(&time, &utc);
  std::array<char, 32> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &utc);
  std::array<char, 8> fraction{};
  std::snprintf(fraction.data(), fraction.size(), ".%03dZ",
                static_cast<int>((whole - seconds).count()));
  return std::string(text.data(), length) + fraction.data();
}

std::optional<Moment> parseMoment(std::string_view text) {
  Scanner scanner(text);
  milliseconds time = readDate(scanner);
  if (scanner.failed() || time == milliseconds::min()) return std::nullopt;
  if (scanner.rest().empty()) return Moment(time);
  scanner.expect('T');
  time += readTime(scanner);
  if (scanner.skips('.')) time += scanner.fraction();
  time -= readOffset(scanner);
  if (scanner.failed() || !scanner.rest().empty()) return std::nullopt;
  return Moment(time);
}

std::optional<ReportMoment> parseReportMoment(std::string_view text) {
  Scanner scanner(text);
  milliseconds time = readDate(scanner);
  scanner.expect('T');
  const milliseconds clock = readTime(scanner);
  scanner.expect('.');
  const milliseconds fraction = scanner.fraction();
  if (scanner.failed() || time == milliseconds::min()) return std::nullopt;
  time += clock + fraction;
  return ReportMoment{time, scanner.rest()};
}

}  // namespace zt::inbox
