#pragma once

#include <sys/types.h>

#include <string>

#include "ztportal/base/FileDescriptor.h"

namespace zt {

/// A program that `LinuxChildProcess` started, with our ends of its pipes. Its end is waited for at
/// the end of this object, after both were closed. Used by one thread.
class RunningChild {
 public:
  RunningChild(pid_t process, FileDescriptor input, FileDescriptor output);
  RunningChild(const RunningChild&) = delete;
  RunningChild& operator=(const RunningChild&) = delete;
  ~RunningChild();

  /// What it writes to its standard output until that is closed, without any time limit.
  std::string readToEnd() const;

 private:
  pid_t _process;
  FileDescriptor _input;
  FileDescriptor _output;
};

}  // namespace zt
