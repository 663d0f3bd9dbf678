#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstddef>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace zt::test {

/// What a pipe brings, taken out by a thread so that the writer never has to wait.
class PipeReader {
 public:
  PipeReader() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    _readEnd = ends[0];
    _writeEnd = ends[1];
    _thread = std::thread([this] { readAll(); });
  }
  PipeReader(const PipeReader&) = delete;
  PipeReader& operator=(const PipeReader&) = delete;
  ~PipeReader() {
    closeWriteEnd();
    setPaused(false);
    _thread.join();
    ::close(_readEnd);
  }

  int writeEnd() const { return _writeEnd; }
  /// Once the child has it, so that the child's end is the pipe's end.
  void closeWriteEnd() {
    if (_writeEnd >= 0) ::close(std::exchange(_writeEnd, -1));
  }

  /// While paused, the pipe fills up (what the thread is waiting for at the moment still comes in).
  void setPaused(bool paused) {
    const std::lock_guard lock(_mutex);
    _paused = paused;
    _changed.notify_all();
  }

  /// Everything so far, once there are `count` lines or the writer closed the pipe.
  std::string waitForLines(std::size_t count) {
    constexpr std::chrono::seconds kPatience{60};
    std::unique_lock lock(_mutex);
    _changed.wait_for(lock, kPatience, [&] {
      return _ended || static_cast<std::size_t>(std::ranges::count(_text, '\n')) >= count;
    });
    return _text;
  }

 private:
  void readAll() {
    std::array<char, 4096> part{};
    for (;;) {
      const ssize_t count = ::read(_readEnd, part.data(), part.size());
      std::unique_lock lock(_mutex);
      if (count > 0) _text.append(part.data(), static_cast<std::size_t>(count));
      _ended = count <= 0;
      _changed.notify_all();
      if (_ended) return;
      _changed.wait(lock, [this] { return !_paused; });
    }
  }

  int _readEnd = -1;
  int _writeEnd = -1;
  std::mutex _mutex;
  std::condition_variable _changed;
  std::string _text;
  bool _ended = false;
  bool _paused = false;
  std::thread _thread;
};

/// What a program has for its standard input, and for its standard output where that is not
/// collected.
struct ChildFiles {
  std::string input = "/dev/null";
  std::optional<std::string> output = std::nullopt;
};

/// A program that runs beside the test; its output is collected, and it is ended (SIGTERM) with
/// its scope.
class Child {
 public:
  /// `environment` replaces the test's own when it is given ("NAME=value").
  explicit Child(const std::string& program, std::vector<std::string> arguments,
                 std::optional<std::vector<std::string>> environment = std::nullopt,
                 const ChildFiles& files = {}) {
    arguments.insert(arguments.begin(), program);
    const auto argv = pointers(arguments);
    const auto envp = environment ? pointers(*environment) : std::vector<char*>{};

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, files.input.c_str(), O_RDONLY, 0);
    if (files.output) {
      posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, files.output->c_str(), O_WRONLY, 0);
    } else {
      posix_spawn_file_actions_adddup2(&actions, _output.writeEnd(), STDOUT_FILENO);
    }
    posix_spawn_file_actions_adddup2(&actions, _errors.writeEnd(), STDERR_FILENO);
    const int failure = ::posix_spawn(&_process, program.c_str(), &actions, nullptr, argv.data(),
                                      environment ? envp.data() : environ);
    posix_spawn_file_actions_destroy(&actions);
    _output.closeWriteEnd();
    _errors.closeWriteEnd();
    if (failure != 0) {
      _process = -1;
      throw std::runtime_error("cannot start " + program);
    }
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    signal(SIGTERM);
    wait();
  }

  /// Standard output so far, once there are `count` lines or the program ended.
  std::string waitForLines(std::size_t count) { return _output.waitForLines(count); }
  std::string waitForErrorLines(std::size_t count) { return _errors.waitForLines(count); }
  /// The whole of standard output or standard error, once the program closed it.
  std::string waitForOutput() { return _output.waitForLines(static_cast<std::size_t>(-1)); }
  std::string waitForErrors() { return _errors.waitForLines(static_cast<std::size_t>(-1)); }

  /// From now on nobody reads what the program writes to standard output.
  void stopReadingOutput() { _output.setPaused(true); }

  void signal(int number) const {
    if (_process > 0) ::kill(_process, number);
  }
  /// Waits for the end of the program: its exit status, or minus the signal that ended it.
  int wait() {
    if (_process > 0) {
      int status = 0;
      while (::waitpid(_process, &status, 0) < 0 && errno == EINTR) {
      }
      _exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
      _process = -1;
    }
    return _exitStatus;
  }

 private:
  static std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> all;
    all.reserve(texts.size() + 1);
    for (std::string& text : texts) all.push_back(text.data());
    all.push_back(nullptr);
    return all;
  }

  PipeReader _output;
  PipeReader _errors;
  pid_t _process = -1;
  int _exitStatus = -1;
};

}  // namespace zt::test
