#pragma once

#include <string>
#include <vector>

namespace zt {

/// Runs another program.
class ChildProcess {
 public:
  virtual ~ChildProcess() = default;

  /// Starts the program at the path `program` with `arguments` behind its own name, and returns all
  /// that it writes to its standard output until that is closed, however it ends and without any
  /// time limit. Its standard input is a pipe that nothing is written to. Raises a ZtException when
  /// it cannot be started.
  virtual std::string output(const std::string& program,
                             const std::vector<std::string>& arguments) = 0;
};

}  // namespace zt
