#pragma once

#include <sys/types.h>

#include <string>

#include "ztportal/platform/files/Descriptor.h"

namespace zt {

/// A program that `LinuxChildProcess` started, with our ends of its pipes. Its end is waited for at
/// the end of this object, after both were closed. Used by one thread.
class RunningChild {
 public:
  RunningChild(pid_t process, Descriptor input, Descriptor output);
  RunningChild(const RunningChild&) = delete;
  RunningChild& operator=(const RunningChild&) = delete;
  ~RunningChild();

  /// What it writes to its standard output until that is closed, without any time limit.
  std::string readToEnd() const;

 private:
  pid_t _process;
  Descriptor _input;
  Descriptor _output;
};

}  // namespace zt
