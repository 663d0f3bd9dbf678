// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zt::test {

/// Lines of a report, written from an outline and independently of the library. An outline has a
/// line for a field, or for several with " | " between them. Fields in an array are two blanks
/// deeper, and a "-" begins each record of a list:
///
///     string EDITION = Home
///     none BARE
///     array DISKS
///       integer SIZE = 7
///     records INSTALLATIONSTEPS
///       - string STEP_NAME = Copy | string STEP_TYPE = ENTER
///
/// The outline itself may be indented. The lines end with line feeds; `crlf` gives them the line
/// ends of a written report.
std::string fieldLines(std::string_view outline, std::size_t indent, bool soap = false);

/// The lines of a pool with these fields.
std::string poolLines(const std::string& type, const std::string& date, std::string_view outline,
                      bool soap = false, std::size_t indent = 0);

std::string crlf(std::string_view lines);

}  // namespace zt::test
