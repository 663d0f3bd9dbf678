#pragma once

#include <string>
#include <vector>

#include "ztportal/ztportal.h"

namespace zt::tools {

/// URL of the configuration document of a customer that the library knows; raises a `Failure` that
/// lists them for any other.
ZtString configurationUrlOf(const std::string& customer);

/// The customers that the library knows.
std::vector<std::string> customerIds();

}  // namespace zt::tools
