#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tools/ztinbox/http/InboxServer.h"

namespace CLI {
class App;
}

namespace zt::inbox {

/// What the arguments ask for: settings to run with, or a text to print instead (help, version).
struct CommandLine {
  std::optional<InboxSettings> settings;
  std::string text;
};

/// Reads the program's arguments, and the scenario file they name. Throws InputFault for what
/// cannot be used, MachineFault for a scenario file that cannot be read.
CommandLine readCommandLine(int argc, const char* const* argv);

/// The program's options, for its manual page and completions.
std::shared_ptr<const CLI::App> commandLineApp();

}  // namespace zt::inbox
