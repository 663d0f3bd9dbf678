#pragma once

#include <string>

#include "tools/ztreport/Failure.h"

namespace zt::tools {

/// Sends what the store holds, and prints how many reports went and how many stay. While it works
/// a terminal at standard error shows how far it is.
Exit resend(const std::string& configurationUrl);

}  // namespace zt::tools
