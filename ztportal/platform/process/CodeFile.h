#pragma once

#include <string>

namespace zt {

/// Absolute path of the file that this code was loaded from, a shared library or the program that
/// it is linked into, wherever the working directory has gone since; links in it are not resolved.
std::string fileOfThisCode();

}  // namespace zt
