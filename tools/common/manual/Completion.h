#pragma once

#include <string>

#include "tools/common/manual/Program.h"

namespace zt::manual {

/// What a shell completes of a program's command line: commands, options, and where they are known
/// the values of options. Each is a file that the shell loads by itself from its own folder.
std::string bashCompletion(const Program& program);
std::string zshCompletion(const Program& program);
std::string fishCompletion(const Program& program);

}  // namespace zt::manual
