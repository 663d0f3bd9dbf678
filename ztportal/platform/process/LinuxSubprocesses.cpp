// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/process/LinuxSubprocesses.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <system_error>
#include <utility>

#include "ztportal/base/FileDescriptor.h"
#include "ztportal/base/Log.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/platform/process/ProgramPath.h"

namespace zt {

namespace {

ZtException notStarted(const std::string& program, int error) {
  return {"CHILD_NOT_STARTED",
          program + " cannot be started: " + std::generic_category().message(error)};
}

struct Pipe {
  FileDescriptor readEnd;
  FileDescriptor writeEnd;
};

Pipe openPipe(const std::string& program) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw notStarted(program, errno);
  FileDescriptor readEnd(ends[0]);
  FileDescriptor writeEnd(ends[1]);
  readEnd = aboveStandardStreams(std::move(readEnd));
  writeEnd = aboveStandardStreams(std::move(writeEnd));
  if (!readEnd.isOpen() || !writeEnd.isOpen()) throw notStarted(program, EMFILE);
  return {std::move(readEnd), std::move(writeEnd)};
}

/// The subprocess's file descriptors: its standard input and output, nothing for its errors.
class FileActions {
 public:
  FileActions(const FileDescriptor& input, const FileDescriptor& output) {
    ::posix_spawn_file_actions_init(&_actions);
    const int errors[] = {
        ::posix_spawn_file_actions_adddup2(&_actions, input.number(), STDIN_FILENO),
        ::posix_spawn_file_actions_adddup2(&_actions, output.number(), STDOUT_FILENO),
        ::posix_spawn_file_actions_addopen(&_actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0),
        ::posix_spawn_file_actions_addclosefrom_np(&_actions, STDERR_FILENO + 1)};
    if (std::any_of(std::begin(errors), std::end(errors), [](int error) { return error != 0; })) {
      ::posix_spawn_file_actions_destroy(&_actions);
      throw std::bad_alloc();
    }
  }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  ~FileActions() { ::posix_spawn_file_actions_destroy(&_actions); }

  const posix_spawn_file_actions_t* get() const { return &_actions; }

 private:
  posix_spawn_file_actions_t _actions{};
};

/// No signal blocked, those that a program relies on with their default actions, and a process
/// group of its own, so that it can be killed with all that it started.
class Attributes {
 public:
  Attributes() {
    ::posix_spawnattr_init(&_attributes);
    sigset_t signals;
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&_attributes, &signals);
    ::sigaddset(&signals, SIGPIPE);
    ::sigaddset(&signals, SIGCHLD);
    ::posix_spawnattr_setsigdefault(&_attributes, &signals);
    ::posix_spawnattr_setpgroup(&_attributes, 0);
    ::posix_spawnattr_setflags(
        &_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
  ~Attributes() { ::posix_spawnattr_destroy(&_attributes); }

  const posix_spawnattr_t* get() const { return &_attributes; }

 private:
  posix_spawnattr_t _attributes{};
};

bool isOf(std::string_view entry, std::string_view variable) {
  return entry.starts_with(variable) && entry.substr(variable.size()).starts_with('=');
}

enum class Variables { All, PathAndUser };

/// The host's environment, or a part of it, with `libexec` at the end of `PATH`. It points to the
/// host's own strings.
class Environment {
 public:
  Environment(Variables variables, const std::string& libexec) {
    const bool appends = !libexec.empty() && libexec.find(':') == std::string::npos;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
      const bool isPath = isOf(*entry, "PATH");
      const bool isUsers = isOf(*entry, "LANG") || isOf(*entry, "HOME");
      if (isPath && appends) {
        if (_path.empty()) _path = *entry;
      } else if (isPath || isUsers || variables == Variables::All) {
        _pointers.push_back(*entry);
      }
    }
    if (appends) {
      if (_path.empty()) _path.append("PATH=").append(standardPath());
      _path.append(":").append(libexec);
      _pointers.push_back(_path.data());
    }
    _pointers.push_back(nullptr);
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;

  char* const* get() const { return _pointers.data(); }

 private:
  std::string _path;
  std::vector<char*> _pointers;
};

/// `words`, none of which may contain a NUL byte, in the form of execve(2).
std::vector<char*> pointersTo(std::vector<std::string>& words) {
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  return pointers;
}

bool hasNul(const std::string& text) { return text.find('\0') != std::string::npos; }

std::unique_ptr<RunningSubprocess> startWith(const Environment& environment,
                                             const std::string& program,
                                             const std::vector<std::string>& arguments) {
  std::vector<std::string> words{program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  if (std::any_of(words.begin(), words.end(), hasNul)) throw notStarted(program, EINVAL);
  const std::vector<char*> argv = pointersTo(words);

  Pipe input = openPipe(program);
  Pipe output = openPipe(program);
  const FileActions actions(input.readEnd, output.writeEnd);
  const Attributes attributes;

  pid_t process = -1;
  const int error = ::posix_spawn(&process, program.c_str(), actions.get(), attributes.get(),
                                  argv.data(), environment.get());
  if (error != 0) throw notStarted(program, error);
  return std::make_unique<RunningSubprocess>(program, process, std::move(input.writeEnd),
                                             std::move(output.readEnd));
}

/// Waits for `descriptor` to become readable, or closed at the other end.
bool isReadyBefore(std::chrono::steady_clock::time_point deadline,
                   const FileDescriptor& descriptor) {
  for (;;) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd asked{descriptor.number(), POLLIN, 0};
    const int ready = ::poll(&asked, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
    if (ready >= 0 || errno != EINTR) return ready > 0;
  }
}

}  // namespace

RunningSubprocess::RunningSubprocess(std::string program, pid_t process, FileDescriptor input,
                                     FileDescriptor output)
    : _program(std::move(program)),
      _process(process),
      _input(std::move(input)),
      _output(std::move(output)) {}

RunningSubprocess::~RunningSubprocess() {
  _output.close();
  _input.close();
  if (!endsInTime()) kill();
  while (::waitpid(_process, nullptr, 0) < 0 && errno == EINTR) {
  }
}

std::optional<std::string> RunningSubprocess::readToEnd() const {
  constexpr std::size_t kLimit = std::size_t{1} << 20U;
  std::string text;
  std::array<char, std::size_t{16} * 1024> block;
  while (text.size() <= kLimit && isReadyBefore(_deadline, _output)) {
    const ssize_t count = ::read(_output.number(), block.data(), block.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return text;
    text.append(block.data(), static_cast<std::size_t>(count));
  }
  kill();
  log(ZtLogLevel::Warning, "inventory", _program, " was killed, because ",
      text.size() > kLimit ? "it wrote more than a mebibyte" : "it did not end in five seconds");
  return std::nullopt;
}

bool RunningSubprocess::endsInTime() const {
  const FileDescriptor process(static_cast<int>(::syscall(SYS_pidfd_open, _process, 0)));
  // A host that waits for all subprocesses may have removed it already.
  if (!process.isOpen()) return errno == ESRCH;
  return isReadyBefore(_deadline, process);
}

void RunningSubprocess::kill() const { ::kill(-_process, SIGKILL); }

LinuxSubprocesses::LinuxSubprocesses(std::string libexec) : _libexec(std::move(libexec)) {}

std::string LinuxSubprocesses::output(const std::string& program,
                                      const std::vector<std::string>& arguments) {
  const Environment environment(Variables::PathAndUser, _libexec);
  return startWith(environment, program, arguments)->readToEnd().value_or("");
}

std::unique_ptr<RunningSubprocess> LinuxSubprocesses::start(
    const std::string& program, const std::vector<std::string>& arguments) const {
  return startWith(Environment(Variables::All, _libexec), program, arguments);
}

}  // namespace zt
