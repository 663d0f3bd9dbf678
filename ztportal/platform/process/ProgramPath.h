#pragma once

#include <string>

namespace zt {

/// The folders that programs are looked for in when the environment has no `PATH` (confstr(3)).
std::string standardPath();

/// The file that is run for `name` as the first word of a command: itself when it has a slash, else
/// the first such program in `PATH`; empty when there is none that may be run.
std::string programPath(const std::string& name);

}  // namespace zt
