// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ztportal/base/FileDescriptor.h"
#include "ztportal/platform/process/ProgramPath.h"
#include "ztportal/platform/process/Subprocesses.h"

namespace zt {

/// A program that `LinuxSubprocesses` started, with our ends of its pipes. It may run for five
/// seconds; then it is killed with its process group. The destructor closes both pipes and waits
/// for the program to end. Used by one thread.
class RunningSubprocess {
 public:
  /// `program` is its name in the log.
  RunningSubprocess(std::string program, pid_t process, FileDescriptor input,
                    FileDescriptor output);
  RunningSubprocess(const RunningSubprocess&) = delete;
  RunningSubprocess& operator=(const RunningSubprocess&) = delete;
  ~RunningSubprocess();

  /// All that it writes to its standard output until it closes that; nothing if it has not done so
  /// in time, or writes more than a mebibyte.
  std::optional<std::string> readToEnd() const;

 private:
  using Clock = std::chrono::steady_clock;

  bool endsInTime() const;
  void kill() const;

  std::string _program;
  pid_t _process;
  FileDescriptor _input;
  FileDescriptor _output;
  Clock::time_point _deadline = Clock::now() + std::chrono::seconds(5);
};

/// Starts programs by posix_spawn(3). The subprocess has
///
/// - a pipe as its standard input, open and empty until its output has ended;
/// - a pipe as its standard output;
/// - `/dev/null` as its standard error: the library prints nothing;
/// - no other open file;
/// - no blocked signal, and SIGPIPE and SIGCHLD with their default actions, whatever the host does
///   with them;
/// - a process group of its own;
/// - the host's `PATH` with the library's folder of programs at its end, so that the system's
///   programs take precedence. Without `PATH` it is the system's standard one (confstr(3)) and that
///   folder. A folder with a colon in its path cannot be added.
///
/// The subprocess is waited for after its output has ended; its exit status is ignored. A host may
/// ignore SIGCHLD or wait for all subprocesses itself. Without state: one object serves all
/// threads.
class LinuxSubprocesses final : public Subprocesses {
 public:
  /// `libexec` is the folder at the end of `PATH`; empty for none.
  explicit LinuxSubprocesses(std::string libexec = libexecFolder());

  /// Besides `PATH` the environment has the host's `LANG` and `HOME` only. Other variables make a
  /// shell run what it was not told to (`BASH_ENV`, exported functions).
  std::string output(const std::string& program,
                     const std::vector<std::string>& arguments) override;

  /// Starts the program with the host's environment and returns at once; never null.
  std::unique_ptr<RunningSubprocess> start(const std::string& program,
                                           const std::vector<std::string>& arguments) const;

 private:
  std::string _libexec;
};

}  // namespace zt
