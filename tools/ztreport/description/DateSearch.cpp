// SPDX-License-Identifier: Apache-2.0
#include "tools/ztreport/description/DateSearch.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "ztportal/platform/time/Rfc3339.h"
#include "ztportal/portal/description/DescribedDate.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

namespace {

using std::chrono::days;
using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;

ZtString textOf(milliseconds time) {
  return ZtPortalDef::stringFromDate(ZtDate::fromMilliseconds(std::int64_t{time.count()}));
}

bool isTextOf(std::string_view text, milliseconds time) { return textOf(time) == text; }

/// The local time at the start of `text`, "2026-11-21T13:00:00.000", as if it were in UTC. Nothing
/// for a date that the Gregorian calendar does not have, or with other digits than 0 to 9.
std::optional<milliseconds> localTimeOf(std::string_view text) {
  const std::optional<Rfc3339Time> read = readRfc3339Time(text);
  if (!read) return std::nullopt;
  return read->time;
}

/// The year of a date's text, in the digits of any script: at least four, perhaps with a sign.
std::string_view yearOf(std::string_view text) {
  constexpr std::size_t kShortest = 4;
  return text.substr(0, text.find('-', kShortest));
}

/// Whether a year has a minus sign, which may come with a mark of the writing direction. No digit
/// of any script starts with these bytes in UTF-8.
bool isNegative(std::string_view year) {
  return !year.empty() && (year.front() == '-' || year.front() == '\xe2' || year.front() == '\xd8');
}

/// Whether one date's text is before the other, in a calendar whose years increase.
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

/// A range of time in which the years of dates increase. Together, the ranges have all points in
/// time that a description can express.
struct Stretch {
  milliseconds begin;
  milliseconds end;
};
constexpr std::array<Stretch, 3> kStretches{{
    {startOf(622, 8, 1), startOf(10000, 1, 2)},  // every calendar in use has begun
    {startOf(0, 12, 28), startOf(622, 8, 1)},    // the year 1 begins on 0000-12-30
    {startOf(-1, 12, 31), startOf(0, 12, 31)},  // the year before it, which is also written as 0001
}};

/// Amounts by which clocks are set back.
constexpr std::array<minutes, 8> kSetBack{{minutes(60), minutes(30), minutes(120), minutes(20),
                                           minutes(40), minutes(90), minutes(180), hours(24)}};

/// Searches the range by halves for the date that is written as `text`.
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
  // When clocks are set back, an hour occurs twice with different zone names, and the search may
  // have found the other one.
  for (const milliseconds near : {begin, begin - milliseconds(1)}) {
    for (const minutes setBack : kSetBack) {
      if (isTextOf(text, near - setBack)) return near - setBack;
      if (isTextOf(text, near + setBack)) return near + setBack;
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> DateSearch::timestampOf(std::string_view text) {
  const std::optional<milliseconds> local = localTimeOf(text);
  std::optional<milliseconds> time;
  if (local) time = findByOffset(text, *local);
  if (time) {
    _offset = *local - *time;
  } else {
    time = findByHalves(text);
  }
  if (!time) return std::nullopt;
  _last = *time;

  const ZtDate date = ZtDate::fromMilliseconds(std::int64_t{time->count()});
  const minutes offset = std::chrono::duration_cast<minutes>(local ? *local - *time : minutes(0));
  std::string written = formatRfc3339(*time, offset);
  if (dateOf(written) != date) return std::nullopt;
  return written;
}

std::optional<milliseconds> DateSearch::findByOffset(std::string_view text, milliseconds local) {
  if (isTextOf(text, local - _offset)) return local - _offset;

  // Approaches the time at which clocks show `local`, which is far off in another calendar.
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
