// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tools/common/ReportReader.h"
#include "tools/common/Terminal.h"

namespace zt::tools {

/// A report as a tree for people, with the names, types and values of one list in
/// columns:
///
///     report       {0E4D0F7C-9A7B-4B21-A4B2-7F3F7D1E7A55}
///     ...
///     CUSTOM  2026-11-21T12:00:00.000UTC
///       EDITION  string   Home
///       LIST     array    1
///         COUNT  integer  7
///
/// Control characters are escaped. A value continues in its own column after a line end in it
/// (which is shown escaped) and, where the style has a width, at the end of a line.
std::string reportTree(const reader::ParsedReport& report, const terminal::TerminalStyle& style);

}  // namespace zt::tools
