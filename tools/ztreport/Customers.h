#pragma once

#include <string>

#include "ztportal/ztportal.h"

namespace zt::tools {

/// URL of the configuration document of a customer that the library knows; raises a `Failure` that
/// lists them for any other.
ZtString configurationUrlOf(const std::string& customer);

}  // namespace zt::tools
