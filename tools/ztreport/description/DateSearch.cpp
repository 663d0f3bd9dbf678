#include "tools/ztreport/description/DateSearch.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "tools/common/Rfc3339.h"
#include "tools/ztreport/description/JsonValue.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

namespace {

using std::chrono::days;
using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;

ZtString textOf(milliseconds moment) {
  return ZtPortalDef::stringFromDate(ZtDate::fromMilliseconds(std::int64_t{moment.count()}));
}

bool isTextOf(std::string_view text, milliseconds moment) { return textOf(moment) == text; }

/// What the clock shows that `text` starts with, as if it went by Greenwich. Nothing for a date
/// that is none in the Gregorian calendar, or in other digits than the usual ones.
std::optional<milliseconds> localTimeOf(std::string_view text) {
  const std::optional<Rfc3339Time> read = readRfc3339Time(text);
  if (!read) return std::nullopt;
  return read->time;
}

/// The year of a date's text, in whatever digits. It has four at least, and perhaps a sign.
std::string_view yearOf(std::string_view text) {
  constexpr std::size_t kShortest = 4;
  return text.substr(0, text.find('-', kShortest));
}

/// Whether a year has a minus sign, which may come with a mark of the writing direction. No digit
/// of any script starts with these bytes in UTF-8.
bool isNegative(std::string_view year) {
  return !year.empty() && (year.front() == '-' || year.front() == '\xe2' || year.front() == '\xd8');
}

/// Whether one text of a date comes before the other, in a calendar that counts on.
bool isBefore(std::string_view text, std::string_view other) {
  const std::string_view year = yearOf(text);
  const std::string_view otherYear = yearOf(other);
  if (year == otherYear) return text < other;
  const bool negative = isNegative(year);
  if (negative != isNegative(otherYear)) return negative;
  const bool isSmaller =
      year.size() != otherYear.size() ? year.size() < otherYear.size() : year < otherYear;
  return isSmaller != negative;
}

constexpr milliseconds startOf(int year, unsigned month, unsigned day) {
  return std::chrono::sys_days(std::chrono::year(year) / std::chrono::month(month) /
                               std::chrono::day(day))
      .time_since_epoch();
}

/// A stretch of time in which the years of dates count on. All together are the moments that a
/// description can have.
struct Stretch {
  milliseconds begin;
  milliseconds end;
};
constexpr std::array<Stretch, 3> kStretches{{
    {startOf(622, 8, 1), startOf(10000, 1, 2)},  // every calendar in use has begun
    {startOf(0, 12, 28), startOf(622, 8, 1)},    // the year 1 begins on 0000-12-30
    {startOf(-1, 12, 31), startOf(0, 12, 31)},   // the year 1 before it, written as 0001 as well
}};

/// By how much a clock is set back.
constexpr std::array<minutes, 8> kSetBack{{minutes(60), minutes(30), minutes(120), minutes(20),
                                           minutes(40), minutes(90), minutes(180), hours(24)}};

/// Narrows a stretch down to where the text of a date would have to be.
std::optional<milliseconds> findWithin(Stretch stretch, std::string_view text) {
  auto [begin, end] = stretch;
  while (begin < end) {
    const milliseconds middle = begin + (end - begin) / 2;
    const ZtString found = textOf(middle);
    if (found == text) return middle;
    if (isBefore(found.view(), text)) {
      begin = middle + milliseconds(1);
    } else {
      end = middle;
    }
  }
  // An hour that comes twice differs in the zone's name alone, and the search may have gone to the
  // other one.
  for (const milliseconds near : {begin, begin - milliseconds(1)}) {
    for (const minutes setBack : kSetBack) {
      if (isTextOf(text, near - setBack)) return near - setBack;
      if (isTextOf(text, near + setBack)) return near + setBack;
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> DateSearch::momentOf(std::string_view text) {
  const std::optional<milliseconds> local = localTimeOf(text);
  std::optional<milliseconds> moment;
  if (local) moment = findByOffset(text, *local);
  if (moment) {
    _offset = *local - *moment;
  } else {
    moment = findByHalves(text);
  }
  if (!moment) return std::nullopt;
  _last = *moment;

  const ZtDate date = ZtDate::fromMilliseconds(std::int64_t{moment->count()});
  const minutes offset = std::chrono::duration_cast<minutes>(local ? *local - *moment : minutes(0));
  std::string written = formatRfc3339(*moment, offset);
  if (dateOf(written) != date) return std::nullopt;
  return written;
}

std::optional<milliseconds> DateSearch::findByOffset(std::string_view text, milliseconds local) {
  if (isTextOf(text, local - _offset)) return local - _offset;

  // Goes to where clocks show that time, which may be far off in another calendar.
  constexpr int kSteps = 4;
  milliseconds near = local;
  for (int i = 0; i < kSteps; ++i) {
    const std::optional<milliseconds> shown = localTimeOf(textOf(near).view());
    if (!shown) return std::nullopt;
    if (*shown == local) break;
    near += local - *shown;
  }
  if (isTextOf(text, near)) return near;

  // Near a change of the offset, one of those before and after it is right.
  for (const hours distance : {hours(-36), hours(36)}) {
    const std::optional<milliseconds> shown = localTimeOf(textOf(near + distance).view());
    if (!shown) continue;
    const milliseconds candidate = local - (*shown - (near + distance));
    if (isTextOf(text, candidate)) return candidate;
  }
  return std::nullopt;
}

std::optional<milliseconds> DateSearch::findByHalves(std::string_view text) const {
  constexpr days kNear{40};
  if (const auto near = findWithin({_last - kNear, _last + kNear}, text)) return near;
  for (const Stretch& stretch : kStretches) {
    if (const auto found = findWithin(stretch, text)) return found;
  }
  return std::nullopt;
}

}  // namespace zt::tools
