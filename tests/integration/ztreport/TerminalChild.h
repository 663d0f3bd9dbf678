#pragma once

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

namespace zt::test {

/// A program whose standard error is a terminal, run to its end.
class TerminalChild {
 public:
  TerminalChild(std::vector<std::string> arguments, std::vector<std::string> environment) {
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    std::array<char, 64> name{};
    if (terminal < 0 || ::grantpt(terminal) != 0 || ::unlockpt(terminal) != 0 ||
        ::ptsname_r(terminal, name.data(), name.size()) != 0) {
      throw std::runtime_error("no terminal");
    }
    const int other = ::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, other, STDERR_FILENO);
    pid_t process = -1;
    const auto argv = pointers(arguments);
    const auto envp = pointers(environment);
    const int failure =
        ::posix_spawn(&process, argv[0], &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    ::close(other);
    if (failure == 0) {
      // The end of the last process that has the terminal open is an error here.
      std::array<char, 4096> part{};
      for (;;) {
        const ssize_t count = ::read(terminal, part.data(), part.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        _shown.append(part.data(), static_cast<std::size_t>(count));
      }
      int status = 0;
      while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
      }
      _status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    ::close(terminal);
    if (failure != 0) throw std::runtime_error("cannot start " + arguments.front());
  }

  /// What went to the terminal.
  const std::string& shown() const { return _shown; }
  int status() const { return _status; }

 private:
  static std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> all;
    all.reserve(texts.size() + 1);
    for (std::string& text : texts) all.push_back(text.data());
    all.push_back(nullptr);
    return all;
  }

  std::string _shown;
  int _status = -1;
};

}  // namespace zt::test
