#pragma once

#include <string>

#include "tools/ztinbox/soap/Report.h"

namespace zt::inbox {

/// The line about a report on standard output, without its line end: local time, number, what was
/// answered, customer, application, pools, size. What a report does not hold is "-".
///
///     2026-11-21 12:00:00  #2  accepted  Kelvane  {7C1B…} 2.1.77  EXECUTION, CUSTOM  2345 bytes
///     duplicate of #1
///
/// Everything out of the report is cleaned for the terminal and of limited length.
std::string reportLine(const Report& report);

}  // namespace zt::inbox
