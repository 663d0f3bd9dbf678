// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <compare>
#include <cstdint>
#include <limits>

/// A point in time that may be missing, in whole milliseconds since 1970-01-01T00:00:00Z, without
/// leap seconds (POSIX time). A value: eight bytes, freely copied.
///
///     ZtDate now = ZtDate::now();
///     ZtDate then(std::chrono::system_clock::now() - std::chrono::hours(1));
///     ZtDate none;                             // missing
class ZtDate {
 public:
  /// A missing date.
  constexpr ZtDate() noexcept = default;
  /// `time`, rounded down to milliseconds: half a millisecond before 1970 is
  /// 1969-12-31T23:59:59.999Z.
  // NOLINTNEXTLINE(google-explicit-constructor): a point in time is a date.
  ZtDate(std::chrono::system_clock::time_point time) noexcept
      : _milliseconds(
            std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count()) {}

  static ZtDate now() noexcept { return {std::chrono::system_clock::now()}; }
  /// For dates outside the range of `system_clock` (years 1677 to 2262 if it counts nanoseconds).
  static constexpr ZtDate fromMilliseconds(std::int64_t sinceEpoch) noexcept {
    ZtDate date;
    date._milliseconds = sinceEpoch;
    return date;
  }

  constexpr bool isNull() const noexcept { return _milliseconds == kMissing; }
  /// Milliseconds since 1970-01-01T00:00:00Z; unspecified for a missing date.
  constexpr std::int64_t milliseconds() const noexcept { return _milliseconds; }

  /// Missing dates are equal to each other and before all others.
  // NOLINTNEXTLINE(modernize-use-nullptr): the 0 of a comparison.
  friend constexpr auto operator<=>(ZtDate, ZtDate) noexcept = default;

 private:
  static constexpr std::int64_t kMissing =
      (std::numeric_limits<std::int64_t>::min)();  // a host may have a macro min
  std::int64_t _milliseconds = kMissing;
};
