#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ztportal/platform/process/ChildProcess.h"
#include "ztportal/platform/process/LibexecFolder.h"
#include "ztportal/platform/process/RunningChild.h"

namespace zt {

/// Starts programs by posix_spawn(3). The child gets
///
/// - a pipe as its standard input, open and empty until its output has ended;
/// - a pipe as its standard output;
/// - `/dev/null` as its standard error: the library is silent;
/// - no blocked signal, and SIGPIPE and SIGCHLD with their default effects, whatever the host does
///   with them;
/// - the host's environment, but for `PATH`: the library's folder of programs stands at its end, so
///   that what the system has goes first. Without `PATH` it is the system's standard one
///   (confstr(3)) and that folder. A folder with a colon in its path cannot stand there.
///
/// After its output has ended the child's end is waited for as well; what it returned does not
/// matter. A host that ignores SIGCHLD, or waits for every child itself, may do so. Without state:
/// one object serves all threads.
class LinuxChildProcess final : public ChildProcess {
 public:
  /// `libexec` is the folder at the end of `PATH`; empty for none.
  explicit LinuxChildProcess(std::string libexec = libexecFolder());

  std::string output(const std::string& program,
                     const std::vector<std::string>& arguments) override;

  /// Starts it in the same way and does not wait for anything; never null.
  std::unique_ptr<RunningChild> start(const std::string& program,
                                      const std::vector<std::string>& arguments) const;

 private:
  std::string _libexec;
};

}  // namespace zt
