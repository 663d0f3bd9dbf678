#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tools/common/ParsedReport.h"

namespace zt::reader {

/// A position in a text as editors count it: lines end with a line feed, columns are bytes, both
/// start at 1.
struct Place {
  std::size_t line = 1;
  std::size_t column = 1;

  friend bool operator==(const Place&, const Place&) = default;
};

/// The position of the byte at `offset` of `text`; that of the end for an offset beyond it.
Place placeIn(std::string_view text, std::size_t offset);

/// A text that is not a report, or is an ambiguous one. The message has the position of the first
/// thing that cannot be read, and what was expected there:
///
///     line 12, column 19: expected "</Field>"
class ReadError : public std::runtime_error {
 public:
  ReadError(Place place, const std::string& reason);

  const Place& place() const { return _place; }

 private:
  Place _place;
};

/// Parses a report's text, in either form and with the line ends of either (CR LF as the library
/// writes it, LF as an XML writer leaves it).
///
///     const std::string text = contentOf("{7C1B7F6E-...}.ztr");
///     const ParsedReport report = readReport(text);
///
/// Nothing is escaped in a report, and its generic arrays are closed by the wrong tags, so this is
/// not an XML parser: it follows the lines as they are written, each with its indentation. That
/// returns every value of one line unchanged, whatever markup is in it. A value with line ends is
/// accepted if it contains neither the end tag of its own element nor a line that could be the one
/// after it; otherwise the text is refused as ambiguous. (A value that imitates the report's own
/// lines, indentation included, is read as what it imitates.)
///
/// Takes time and memory in proportion to the text. Throws `ReadError`.
ParsedReport readReport(std::string_view text);

/// Everything before the first thing that cannot be read; the pools, arrays and records that are
/// open there end there. `fault` is the error, nothing if all of the text was read; of the pools
/// after it, only the types are known.
struct PartialReport {
  ParsedReport report;
  std::optional<ReadError> fault;
};
PartialReport readReportUpToFault(std::string_view text);

}  // namespace zt::reader
