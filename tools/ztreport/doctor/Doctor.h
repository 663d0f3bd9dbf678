#pragma once

#include <string>

#include "tools/ztreport/Failure.h"

namespace zt::tools {

/// Checks the whole way of a report of the program `appName`, in its order, and prints a line for
/// each check as soon as it is done: ok, warning or failed, its name, the reason, and what helps.
/// With `json` all of it is one object at the end. Not accepted stands for a check that failed.
///
/// Nothing is sent but the request for the configuration and the one for the server's version.
Exit doctor(const std::string& configurationUrl, const std::string& appName, bool json);

}  // namespace zt::tools
