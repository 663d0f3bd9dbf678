#pragma once

#include <string>

#include "tools/ztreport/Failure.h"

namespace zt::tools {

/// Prints what a report's text says: as a tree for people, or as a report description, which
/// renders as the same text again. `file` is a path, the name or ID of a report in the store, or
/// "-" for standard input. Raises a `Failure` with line and column of what cannot be read.
Exit show(const std::string& file, bool json);

}  // namespace zt::tools
