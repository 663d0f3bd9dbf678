#pragma once

#include <string>

namespace zt {

/// The user's home folder: `$HOME`, or else that of the user database; empty when neither names an
/// absolute path.
std::string homeFolder();

}  // namespace zt
