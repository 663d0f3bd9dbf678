// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "ztportal/base/FileDescriptor.h"

namespace zt::test {

/// Reads a pipe to its end on a separate thread, so that the writer never has to wait.
class PipeReader {
 public:
  PipeReader();
  PipeReader(const PipeReader&) = delete;
  PipeReader& operator=(const PipeReader&) = delete;
  ~PipeReader();

  int writeEnd() const { return _writeEnd.number(); }
  void closeWriteEnd() { _writeEnd.close(); }

  /// While paused, the pipe fills up; a read that is already waiting still completes.
  void setPaused(bool paused);

  /// Everything so far, once there are `count` lines or the writer closed the pipe.
  std::string waitForLines(std::size_t count);
  /// The next line without its end, which may be missing in the last one; nothing at the end of the
  /// output or when the time is over.
  std::optional<std::string> readLine(std::chrono::milliseconds patience);

 private:
  void readAll();

  FileDescriptor _readEnd;
  FileDescriptor _writeEnd;
  std::mutex _mutex;
  std::condition_variable _changed;
  std::string _text;
  std::size_t _linesEnd = 0;  ///< after what readLine() returned
  bool _ended = false;
  bool _paused = false;
  std::thread _thread;
};

struct SubprocessOptions {
  /// The whole environment as "NAME=value" strings; by default that of the tests.
  std::optional<std::vector<std::string>> environment = std::nullopt;
  std::string input = "/dev/null";                   ///< file for standard input
  std::optional<std::string> output = std::nullopt;  ///< file for standard output
  std::optional<std::string> errors = std::nullopt;  ///< file for standard error
};

/// A program that runs in parallel with the test and is ended with its scope (SIGTERM). Its
/// standard output and standard error are collected.
///
///     Subprocess server({"/usr/bin/server", "--port", "0"});
///     const auto port = server.readLine();
///
/// The constructor throws std::system_error if the program cannot be started.
class Subprocess {
 public:
  /// `command` begins with the program, looked up in PATH when it has no slash.
  explicit Subprocess(std::vector<std::string> command, SubprocessOptions options = {});
  Subprocess(const Subprocess&) = delete;
  Subprocess& operator=(const Subprocess&) = delete;
  ~Subprocess();

  pid_t pid() const { return _process; }

  /// The next line of standard output, see `PipeReader::readLine`.
  std::optional<std::string> readLine(
      std::chrono::milliseconds patience = std::chrono::seconds(60)) {
    return _output.readLine(patience);
  }
  /// All of standard output so far, once there are `count` lines or the program ended.
  std::string waitForLines(std::size_t count) { return _output.waitForLines(count); }
  std::string waitForErrorLines(std::size_t count) { return _errors.waitForLines(count); }
  /// All of standard output or standard error, once the program closed it.
  std::string waitForOutput() { return _output.waitForLines(static_cast<std::size_t>(-1)); }
  std::string waitForErrors() { return _errors.waitForLines(static_cast<std::size_t>(-1)); }

  /// From now on, the program's standard output is not read.
  void stopReadingOutput() { _output.setPaused(true); }

  /// Has no effect after wait() has returned.
  void signal(int number) const;
  /// Waits for the end, and returns the exit status or 128 plus the signal's number.
  int wait();

 private:
  PipeReader _output;
  PipeReader _errors;
  pid_t _process = -1;
  std::optional<int> _status;
};

/// How a program ended, and what it wrote.
struct ProgramResult {
  int status = -1;
  std::string output;
  std::string errors;

  friend bool operator==(const ProgramResult&, const ProgramResult&) = default;
  friend void PrintTo(const ProgramResult& result, std::ostream* out);
};

/// Runs a program to its end.
ProgramResult runProgram(const std::string& program, const std::vector<std::string>& arguments = {},
                         SubprocessOptions options = {});

/// Exit status of a forked process that lacks the rights that the test needs.
inline constexpr int kNotPermitted = 77;

/// Runs `body` in a forked process, where it may change limits, users and mounts, and returns the
/// status that `body` returned, 128 plus the number of the signal that ended the process, or 125
/// for an exception. The forked process flushes no buffers and runs no destructors of the tests,
/// but writes its coverage counts.
int inForkedProcess(const std::function<int()>& body);

/// The thread sanitizer ends a forked process that starts a thread if the test program had several.
#ifdef __SANITIZE_THREAD__
inline constexpr bool kForkedProcessMayStartThreads = false;
#else
inline constexpr bool kForkedProcessMayStartThreads = true;
#endif

}  // namespace zt::test
