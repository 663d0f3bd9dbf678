// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace zt {

/// Runs other programs.
class Subprocesses {
 public:
  virtual ~Subprocesses() = default;

  /// Starts the program with the path `program`, in an environment with `PATH`, `LANG` and `HOME`
  /// only, and returns all that it writes to its standard output until it closes that, whatever its
  /// exit status; empty if that takes more than five seconds. Its standard input is a pipe that
  /// nothing is written to. Throws a ZtException if the program cannot be started.
  virtual std::string output(const std::string& program,
                             const std::vector<std::string>& arguments) = 0;
};

}  // namespace zt
