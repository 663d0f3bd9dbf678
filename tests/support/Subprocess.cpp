// SPDX-License-Identifier: Apache-2.0
#include "tests/support/Subprocess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <iostream>
#include <system_error>
#include <utility>

// Defined in coverage builds only.
// NOLINTNEXTLINE(bugprone-reserved-identifier): its name
extern "C" void __gcov_dump() __attribute__((weak));

namespace zt::test {

namespace {

std::system_error failure(int error, const std::string& what) {
  return {error, std::generic_category(), what};
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

/// The exit status of a process as a shell shows it; -1 when it cannot be waited for.
int statusOf(pid_t process) {
  int status = 0;
  while (::waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

PipeReader::PipeReader() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw failure(errno, "pipe2");
  _readEnd = FileDescriptor(ends[0]);
  _writeEnd = FileDescriptor(ends[1]);
  _thread = std::thread([this] { readAll(); });
}

PipeReader::~PipeReader() {
  closeWriteEnd();
  setPaused(false);
  _thread.join();
}

void PipeReader::setPaused(bool paused) {
  const std::lock_guard lock(_mutex);
  _paused = paused;
  _changed.notify_all();
}

std::string PipeReader::waitForLines(std::size_t count) {
  constexpr std::chrono::seconds kPatience{60};
  std::unique_lock lock(_mutex);
  _changed.wait_for(lock, kPatience, [&] {
    return _ended || static_cast<std::size_t>(std::ranges::count(_text, '\n')) >= count;
  });
  return _text;
}

std::optional<std::string> PipeReader::readLine(std::chrono::milliseconds patience) {
  std::unique_lock lock(_mutex);
  const auto isThere = [this] { return _text.find('\n', _linesEnd) != std::string::npos; };
  _changed.wait_for(lock, patience, [&] { return _ended || isThere(); });
  if (!isThere() && (!_ended || _linesEnd == _text.size())) return std::nullopt;
  const std::size_t end = std::min(_text.find('\n', _linesEnd), _text.size());
  std::string line = _text.substr(_linesEnd, end - _linesEnd);
  _linesEnd = std::min(end + 1, _text.size());
  return line;
}

void PipeReader::readAll() {
  std::array<char, 4096> part{};
  for (;;) {
    const ssize_t count = ::read(_readEnd.number(), part.data(), part.size());
    if (count < 0 && errno == EINTR) continue;
    std::unique_lock lock(_mutex);
    if (count > 0) _text.append(part.data(), static_cast<std::size_t>(count));
    _ended = count <= 0;
    _changed.notify_all();
    if (_ended) return;
    _changed.wait(lock, [this] { return !_paused; });
  }
}

Subprocess::Subprocess(std::vector<std::string> command, SubprocessOptions options) {
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, options.input.c_str(), O_RDONLY, 0);
  const auto redirect = [&actions](int stream, const std::optional<std::string>& file,
                                   const PipeReader& pipe) {
    if (file) {
      ::posix_spawn_file_actions_addopen(&actions, stream, file->c_str(), O_WRONLY, 0);
    } else {
      ::posix_spawn_file_actions_adddup2(&actions, pipe.writeEnd(), stream);
    }
  };
  redirect(STDOUT_FILENO, options.output, _output);
  redirect(STDERR_FILENO, options.errors, _errors);
  const std::vector<char*> arguments = pointersTo(command);
  const std::vector<char*> environment =
      options.environment ? pointersTo(*options.environment) : std::vector<char*>();
  const int error = ::posix_spawnp(&_process, arguments[0], &actions, nullptr, arguments.data(),
                                   options.environment ? environment.data() : environ);
  ::posix_spawn_file_actions_destroy(&actions);
  _output.closeWriteEnd();
  _errors.closeWriteEnd();
  if (error != 0) throw failure(error, command[0]);
}

Subprocess::~Subprocess() {
  signal(SIGTERM);
  wait();
}

void Subprocess::signal(int number) const {
  if (!_status) ::kill(_process, number);
}

int Subprocess::wait() {
  if (!_status) _status = statusOf(_process);
  return *_status;
}

void PrintTo(const ProgramResult& result, std::ostream* out) {
  *out << result.status << " <" << result.output << "> <" << result.errors << ">";
}

ProgramResult runProgram(const std::string& program, const std::vector<std::string>& arguments,
                         SubprocessOptions options) {
  std::vector<std::string> command{program};
  command.insert(command.end(), arguments.begin(), arguments.end());
  Subprocess process(std::move(command), std::move(options));
  ProgramResult result;
  result.output = process.waitForOutput();
  result.errors = process.waitForErrors();
  result.status = process.wait();
  return result;
}

int inForkedProcess(const std::function<int()>& body) {
  const pid_t process = ::fork();
  if (process == 0) {
    int status = 125;
    try {
      status = body();
    } catch (const std::exception& error) {
      std::cerr << "forked process: " << error.what() << std::endl;
    }
    if (__gcov_dump != nullptr) __gcov_dump();
    ::_exit(status);
  }
  return statusOf(process);
}

}  // namespace zt::test
