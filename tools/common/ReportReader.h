#pragma once

#include <optional>
#include <string_view>

#include "tools/common/Place.h"
#include "tools/common/Report.h"

namespace zt::reader {

/// Takes a report's text apart, in either form and with the line ends of either (CR LF as it is
/// written, LF as an XML writer leaves it).
///
///     const std::string text = contentOf("{7C1B7F6E-...}.ztr");
///     const Report report = readReport(text);
///
/// Nothing is escaped in a report, and its generic arrays are closed by the wrong tags, so this is
/// no XML parser: it follows the lines as they are written, each with its blanks. That gives every
/// value back, whatever markup is in it, as long as it stands on one line. A value with line ends
/// is given back if it holds neither the end tag of its own element nor a line that could be the
/// one after it; else the text is refused, since it could be read in more than one way. (A value
/// that imitates the report's own lines, blanks included, is what it imitates: nobody can tell.)
///
/// Takes time and memory in proportion to the text. Raises `ReadError`.
Report readReport(std::string_view text);

/// What stands before the first thing that cannot be read, for someone who looks for it: the pools,
/// arrays and records that are open there end there. `fault` is that thing, nothing when all was
/// read.
struct PartialReport {
  Report report;
  std::optional<ReadError> fault;
};
PartialReport readReportUpToFault(std::string_view text);

}  // namespace zt::reader
