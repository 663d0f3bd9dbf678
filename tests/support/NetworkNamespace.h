// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

#include "ztportal/base/FileDescriptor.h"

namespace zt::test {

/// Moves the process, which has one thread, into a network of its own that nothing else can reach.
/// False if this machine does not allow that.
inline bool enterOwnNetwork() {
  return ::unshare(::geteuid() == 0 ? CLONE_NEWNET : CLONE_NEWUSER | CLONE_NEWNET) == 0;
}

/// Switches the loopback interface on or off.
inline bool setLoopback(bool isUp) {
  const FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  ifreq request{};
  std::strcpy(request.ifr_name, "lo");
  if (::ioctl(socket.number(), SIOCGIFFLAGS, &request) != 0) return false;
  const int others = request.ifr_flags & ~IFF_UP;
  request.ifr_flags = static_cast<short>(isUp ? others | IFF_UP : others);
  return ::ioctl(socket.number(), SIOCSIFFLAGS, &request) == 0;
}

/// Runs `work` in a forked process with a network of its own and returns its result: 0 for success,
/// less than 100. -1 if this machine does not allow such a network.
template <class Work>
int inOwnNetwork(const Work& work) {
  constexpr int kNotAllowed = 100;
  const pid_t child = ::fork();
  if (child == 0) ::_exit(enterOwnNetwork() ? work() : kNotAllowed);
  int status = 0;
  ::waitpid(child, &status, 0);
  const int result = WIFEXITED(status) ? WEXITSTATUS(status) : 101;
  return result == kNotAllowed ? -1 : result;
}

}  // namespace zt::test
