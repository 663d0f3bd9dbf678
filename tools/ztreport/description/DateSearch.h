#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace zt::tools {

/// Finds the moments that reports' dates stand for. A date's text has the local time and a name of
/// the zone in the user's language, which cannot be read by itself; but among the few moments that
/// it may stand for, the one is right that is written as just that text. So a text is only
/// understood in the time zone and the language in which it was written.
///
///     DateSearch dates;                                      // TZ=Europe/Berlin
///     dates.momentOf("2026-10-25T02:30:00.000GMT+2");        // "2026-10-25T02:30:00.000+02:00"
///     dates.momentOf("2026-10-25T02:30:00.000GMT+1");        // "2026-10-25T02:30:00.000+01:00"
///     dates.momentOf("2026-10-25T02:30:00.000EST");          // nothing
class DateSearch {
 public:
  /// The moment whose date is written as `text`, as a description has it. Nothing where there is
  /// none.
  std::optional<std::string> momentOf(std::string_view text);

 private:
  using Milliseconds = std::chrono::milliseconds;

  /// For dates in the usual digits: the moment follows from the local time and an offset.
  std::optional<Milliseconds> findByOffset(std::string_view text, Milliseconds local);

  /// For all others: the texts of moments are in order.
  std::optional<Milliseconds> findByHalves(std::string_view text) const;

  // The last date found: the next is nearly always close to it.
  Milliseconds _offset{0};
  Milliseconds _last{0};
};

}  // namespace zt::tools
