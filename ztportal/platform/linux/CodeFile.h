#pragma once

#include <string>

namespace zt {

/// The file that this code was loaded from, a shared library or the program that it is linked into,
/// as the loader found it; the path need not be absolute.
std::string fileOfThisCode();

}  // namespace zt
