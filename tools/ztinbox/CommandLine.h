// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "tools/ztinbox/InboxServer.h"

namespace zt::inbox {

/// The parsed arguments: settings to run with, or else a text to print (help or version).
struct CommandLine {
  std::optional<InboxSettings> settings;
  std::string text;
};

/// Parses the program's arguments, and reads the scenario file. Throws InputFault for invalid
/// input, MachineFault if the scenario file cannot be read.
CommandLine readCommandLine(int argc, const char* const* argv);

}  // namespace zt::inbox
