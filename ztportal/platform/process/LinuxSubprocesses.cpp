#include "ztportal/platform/process/LinuxSubprocesses.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <string_view>
#include <system_error>
#include <utility>

#include "ztportal/base/FileDescriptor.h"
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

/// `descriptor`, or a copy of it, whose number is not that of a standard stream. A host may have
/// closed some of those, and the subprocess's are put in place one after the other.
FileDescriptor beyondStandardStreams(FileDescriptor descriptor) {
  if (descriptor.number() > STDERR_FILENO) return descriptor;
  return FileDescriptor(::fcntl(descriptor.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

Pipe openPipe(const std::string& program) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw notStarted(program, errno);
  FileDescriptor readEnd(ends[0]);
  FileDescriptor writeEnd(ends[1]);
  readEnd = beyondStandardStreams(std::move(readEnd));
  writeEnd = beyondStandardStreams(std::move(writeEnd));
  if (!readEnd.isOpen() || !writeEnd.isOpen()) throw notStarted(program, EMFILE);
  return {std::move(readEnd), std::move(writeEnd)};
}

/// How the subprocess's file descriptors are set up.
class FileActions {
 public:
  FileActions() { check(::posix_spawn_file_actions_init(&_actions)); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  ~FileActions() { ::posix_spawn_file_actions_destroy(&_actions); }

  void copy(const FileDescriptor& from, int to) {
    check(::posix_spawn_file_actions_adddup2(&_actions, from.number(), to));
  }
  void open(int number, const char* path, int flags) {
    check(::posix_spawn_file_actions_addopen(&_actions, number, path, flags, 0));
  }
  void closeFrom(int number) {
    check(::posix_spawn_file_actions_addclosefrom_np(&_actions, number));
  }
  const posix_spawn_file_actions_t* get() const { return &_actions; }

 private:
  static void check(int error) {
    if (error != 0) throw std::bad_alloc();
  }

  posix_spawn_file_actions_t _actions{};
};

/// No signal blocked, and those that a program relies on with their default actions.
class SignalAttributes {
 public:
  SignalAttributes() {
    ::posix_spawnattr_init(&_attributes);
    sigset_t signals;
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&_attributes, &signals);
    ::sigaddset(&signals, SIGPIPE);
    ::sigaddset(&signals, SIGCHLD);
    ::posix_spawnattr_setsigdefault(&_attributes, &signals);
    ::posix_spawnattr_setflags(&_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  SignalAttributes(const SignalAttributes&) = delete;
  SignalAttributes& operator=(const SignalAttributes&) = delete;
  ~SignalAttributes() { ::posix_spawnattr_destroy(&_attributes); }

  const posix_spawnattr_t* get() const { return &_attributes; }

 private:
  posix_spawnattr_t _attributes{};
};

/// The host's environment with `libexec` at the end of `PATH`. It points to the host's own strings.
class Environment {
 public:
  explicit Environment(const std::string& libexec) {
    constexpr std::string_view kPath = "PATH=";
    const bool appends = !libexec.empty() && libexec.find(':') == std::string::npos;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
      const bool isPath = appends && std::string_view(*entry).starts_with(kPath);
      if (!isPath) _pointers.push_back(*entry);
      if (isPath && _path.empty()) _path = *entry;
    }
    if (appends) {
      if (_path.empty()) _path.append(kPath).append(standardPath());
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

}  // namespace

RunningSubprocess::RunningSubprocess(pid_t process, FileDescriptor input, FileDescriptor output)
    : _process(process), _input(std::move(input)), _output(std::move(output)) {}

RunningSubprocess::~RunningSubprocess() {
  _output.close();
  _input.close();
  while (::waitpid(_process, nullptr, 0) < 0 && errno == EINTR) {
  }
}

std::string RunningSubprocess::readToEnd() const {
  std::string text;
  std::array<char, std::size_t{16} * 1024> block;
  for (;;) {
    const ssize_t count = ::read(_output.number(), block.data(), block.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return text;
    text.append(block.data(), static_cast<std::size_t>(count));
  }
}

LinuxSubprocesses::LinuxSubprocesses(std::string libexec) : _libexec(std::move(libexec)) {}

std::string LinuxSubprocesses::output(const std::string& program,
                                      const std::vector<std::string>& arguments) {
  return start(program, arguments)->readToEnd();
}

std::unique_ptr<RunningSubprocess> LinuxSubprocesses::start(
    const std::string& program, const std::vector<std::string>& arguments) const {
  std::vector<std::string> words{program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  if (std::any_of(words.begin(), words.end(), hasNul)) throw notStarted(program, EINVAL);
  const std::vector<char*> argv = pointersTo(words);
  const Environment environment(_libexec);

  Pipe input = openPipe(program);
  Pipe output = openPipe(program);
  FileActions actions;
  actions.copy(input.readEnd, STDIN_FILENO);
  actions.copy(output.writeEnd, STDOUT_FILENO);
  actions.open(STDERR_FILENO, "/dev/null", O_WRONLY);
  actions.closeFrom(STDERR_FILENO + 1);
  const SignalAttributes attributes;

  pid_t process = -1;
  const int error = ::posix_spawn(&process, program.c_str(), actions.get(), attributes.get(),
                                  argv.data(), environment.get());
  if (error != 0) throw notStarted(program, error);
  return std::make_unique<RunningSubprocess>(process, std::move(input.writeEnd),
                                             std::move(output.readEnd));
}

}  // namespace zt
