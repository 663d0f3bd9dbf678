// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zt {

/// A local date and time in the form of RFC 3339: "2026-11-21T12:00:00.123".
struct Rfc3339Time {
  /// Time since 1970, as if the local time were UTC. Fractions are cut off after the third digit. A
  /// leap second counts as the first second of the next minute.
  std::chrono::milliseconds time{0};
  bool isLeapSecond = false;
  std::size_t fractionDigits = 0;
  std::string_view rest;  ///< the text that follows
};

/// Reads a date and time at the beginning of `text`. Returns nullopt for any other text, and for
/// days and times that do not exist.
std::optional<Rfc3339Time> readRfc3339Time(std::string_view text);

/// Reads a whole timestamp: a date and time, then "Z", "z" or an offset such as "+02:00". `time` is
/// UTC.
std::optional<Rfc3339Time> parseRfc3339(std::string_view text);

/// "2026-11-21T14:00:00.000+02:00", with "Z" for no offset.
///
/// RFC 3339 has four digits for the year and no offset of a day or more. An offset of a day or more
/// is replaced by UTC. If the year would be outside of 0 to 9999, another offset is used that
/// brings it into that range, if there is one.
std::string formatRfc3339(std::chrono::milliseconds sinceEpoch,
                          std::chrono::minutes offset = std::chrono::minutes(0));

}  // namespace zt
