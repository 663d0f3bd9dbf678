// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tools/common/ParsedReport.h"

namespace zt::reader {

/// A position in a text as editors count it: lines end with a line feed, columns are bytes, and
/// both are counted from 1.
struct Place {
  std::size_t line = 1;
  std::size_t column = 1;

  friend bool operator==(const Place&, const Place&) = default;
};

/// The position of the byte at `offset` of `text`. An offset beyond the end means the end.
Place placeIn(std::string_view text, std::size_t offset);

/// A text that is not a report, or is ambiguous. The message has the first position that cannot be
/// read, and what was expected there:
///
///     line 12, column 19: expected "</Field>"
class ReadError : public std::runtime_error {
 public:
  ReadError(Place place, const std::string& reason);

  const Place& place() const { return _place; }

 private:
  Place _place;
};

/// Parses a report's text, in either form, with CR LF line ends (as the library writes them) or LF
/// (as an XML writer leaves them).
///
///     const std::string text = contentOf("{7C1B7F6E-...}.ztr");
///     const ParsedReport report = readReport(text);
///
/// Nothing is escaped in a report, and generic arrays are closed by the wrong tags, so this is not
/// an XML parser: it follows the lines as they are written, each with its indentation. Therefore
/// every value of one line is returned unchanged, even if it contains markup. A value with line
/// ends is accepted if it contains neither the end tag of its own element nor a line that could be
/// the next line of the report; otherwise the text is refused as ambiguous. (A value that imitates
/// lines of a report, including their indentation, is read as those lines.)
///
/// Time and memory are proportional to the length of the text. Throws `ReadError`.
ParsedReport readReport(std::string_view text);

/// The content before the first error; pools, arrays and records that are open there end there.
/// `fault` is that error, or nullopt if all of the text was read. Only the types of the pools after
/// it are known.
struct PartialReport {
  ParsedReport report;
  std::optional<ReadError> fault;
};
PartialReport readReportUpToFault(std::string_view text);

}  // namespace zt::reader
