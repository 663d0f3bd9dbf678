// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace zt::tools {

/// Finds the points in time that the dates in reports mean. The text of a date has the local
/// time and a name of the zone in the user's language, which cannot be parsed. So this class writes
/// the few points in time that the text may mean and compares the results. Therefore it
/// understands a text only in the time zone and the language in which it was written.
///
///     DateSearch dates;                                      // TZ=Europe/Berlin
///     dates.timestampOf("2026-10-25T02:30:00.000GMT+2");        // "2026-10-25T02:30:00.000+02:00"
///     dates.timestampOf("2026-10-25T02:30:00.000GMT+1");        // "2026-10-25T02:30:00.000+01:00"
///     dates.timestampOf("2026-10-25T02:30:00.000EST");          // nothing
class DateSearch {
 public:
  /// The timestamp, in the form of a description, of the date that is written as `text`. Nullopt if
  /// there is none.
  std::optional<std::string> timestampOf(std::string_view text);

 private:
  using Milliseconds = std::chrono::milliseconds;

  /// For dates in ASCII digits: the time follows from the local time and an offset.
  std::optional<Milliseconds> findByOffset(std::string_view text, Milliseconds local);

  /// For all other dates: a binary search, because the texts of later dates come later.
  std::optional<Milliseconds> findByHalves(std::string_view text) const;

  // The last date that was found. The next one is nearly always close to it.
  Milliseconds _offset{0};
  Milliseconds _last{0};
};

}  // namespace zt::tools
