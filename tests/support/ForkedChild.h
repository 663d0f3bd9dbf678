#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <iostream>

// Of builds that count how often each line is reached; null in others.
// NOLINTNEXTLINE(bugprone-reserved-identifier): its name
extern "C" void __gcov_dump() __attribute__((weak));

namespace zt::test {

/// Exit status of a forked child whose rights were not enough for what the test needs.
inline constexpr int kNotPermitted = 77;

/// Runs `body` in a forked child, where it may change limits, users and mounts, and returns the
/// status that `body` returned, 128 and the signal's number when one ended the child, or 125
/// for an exception. No buffers are flushed and no destructors of the tests run in the child; only
/// the lines that it reached are counted.
template <class Body>
int inForkedChild(Body body) {
  const pid_t child = ::fork();
  if (child == 0) {
    int status = 125;
    try {
      status = body();
    } catch (const std::exception& error) {
      std::cerr << "forked child: " << error.what() << std::endl;
    }
    if (__gcov_dump != nullptr) __gcov_dump();
    ::_exit(status);
  }
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace zt::test
