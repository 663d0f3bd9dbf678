#pragma once

#include <string>

namespace zt {

/// Absolute path of the file that this process runs; empty when the system does not tell.
std::string executablePath();

}  // namespace zt
