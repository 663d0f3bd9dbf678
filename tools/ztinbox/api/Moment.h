#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace zt::inbox {

using Moment = std::chrono::system_clock::time_point;

/// ISO 8601 in UTC with milliseconds: 2026-11-21T12:00:00.123Z
std::string momentText(Moment moment);

/// Reads a date (its beginning in UTC) or a date and a time with an offset (RFC 3339):
///
///     2026-11-21    2026-11-21T12:00:00Z    2026-11-21T13:00:00.25+01:00
///
/// Nothing for any other text.
std::optional<Moment> parseMoment(std::string_view text);

/// Reads a time stamp of a report: yyyy-MM-dd'T'HH:mm:ss.SSS and the sender's time zone in a few
/// letters, of which there is no telling which zone of the world is meant. Two of one report are
/// compared as if they were in UTC, when their zones agree.
struct ReportMoment {
  std::chrono::milliseconds time;  ///< since 1970 on the sender's clock
  std::string_view zone;
};
std::optional<ReportMoment> parseReportMoment(std::string_view text);

}  // namespace zt::inbox
