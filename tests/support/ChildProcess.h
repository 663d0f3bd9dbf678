#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace zt::test {

/// A program in a process of its own, killed and waited for at the end. What it writes to its
/// standard output is read line by line; its standard error is that of the tests.
///
///     ChildProcess server({"/usr/bin/server", "--port", "0"});
///     const auto port = server.readLine(std::chrono::seconds(10));
///
/// A constructed object means that the program runs: one that cannot be started throws
/// std::system_error.
class ChildProcess {
 public:
  /// `arguments` begins with the program, looked up in PATH when it has no slash. `environment`
  /// holds "NAME=value" texts; without one the program gets that of the tests.
  explicit ChildProcess(std::vector<std::string> arguments,
                        std::optional<std::vector<std::string>> environment = std::nullopt) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw failure(errno, "pipe2");
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    const std::vector<char*> argumentPointers = pointersTo(arguments);
    const std::vector<char*> environmentPointers =
        environment ? pointersTo(*environment) : std::vector<char*>();
    const int error =
        ::posix_spawnp(&_process, argumentPointers[0], &actions, nullptr, argumentPointers.data(),
                       environment ? environmentPointers.data() : environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    _output = ends[0];
    if (error != 0) {
      ::close(_output);
      throw failure(error, arguments[0]);
    }
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess() {
    kill(SIGKILL);
    wait();
    ::close(_output);
  }

  pid_t pid() const { return _process; }

  /// The next line without its end; nothing at the end of the output or when the time is over.
  /// A last line without an end counts as one.
  std::optional<std::string> readLine(std::chrono::milliseconds patience) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (;;) {
      const std::size_t end = _unread.find('\n');
      if (end != std::string::npos) {
        std::string line = _unread.substr(0, end);
        _unread.erase(0, end + 1);
        return line;
      }
      if (!readMore(deadline)) break;
    }
    if (!_atEnd || _unread.empty()) return std::nullopt;
    std::string line;
    line.swap(_unread);
    return line;
  }

  /// No effect on a process that was waited for.
  void kill(int signal) const {
    if (!_status) ::kill(_process, signal);
  }

  /// Waits for the end. The exit status, or 128 and the signal's number as a shell gives it.
  int wait() {
    if (_status) return *_status;
    int status = 0;
    while (::waitpid(_process, &status, 0) < 0) {
      if (errno != EINTR) return -1;
    }
    _status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return *_status;
  }

 private:
  static std::system_error failure(int error, const std::string& what) {
    return {error, std::generic_category(), what};
  }

  static std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
  }

  bool readMore(std::chrono::steady_clock::time_point deadline) {
    for (;;) {
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
          deadline - std::chrono::steady_clock::now());
      if (left.count() <= 0) return false;
      struct pollfd output {
        _output, POLLIN, 0
      };
      if (::poll(&output, 1, static_cast<int>(left.count())) <= 0) continue;
      std::array<char, std::size_t{64} * 1024> bytes;
      const ssize_t count = ::read(_output, bytes.data(), bytes.size());
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) {
        _atEnd = true;
        return false;
      }
      _unread.append(bytes.data(), static_cast<std::size_t>(count));
      return true;
    }
  }

  pid_t _process = -1;
  int _output = -1;
  std::optional<int> _status;
  std::string _unread;
  bool _atEnd = false;
};

}  // namespace zt::test
