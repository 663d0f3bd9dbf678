#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <time.h>

#include "tests/faults/interposer/Fate.h"

// The calls on sockets, and waiting for them.

using zt::torture::Call;
using zt::torture::meet;
using zt::torture::meetTransfer;
using zt::torture::original;

extern "C" {

int socket(int domain, int type, int protocol) noexcept {
  return meet<"socket">(Call::kSocket, {}, -1, domain, type, protocol);
}

int connect(int descriptor, const sockaddr* address, socklen_t size) {
  return meet<"connect">(Call::kConnect, {nullptr, descriptor}, -1, descriptor, address, size);
}

ssize_t send(int descriptor, const void* bytes, size_t size, int flags) {
  return meetTransfer(Call::kSend, descriptor, size, [&](size_t count) {
    return original<"send", ssize_t>(descriptor, bytes, count, flags);
  });
}

ssize_t sendto(int descriptor, const void* bytes, size_t size, int flags, const sockaddr* to,
               socklen_t toSize) {
  return meetTransfer(Call::kSend, descriptor, size, [&](size_t count) {
    return original<"sendto", ssize_t>(descriptor, bytes, count, flags, to, toSize);
  });
}

ssize_t sendmsg(int descriptor, const msghdr* message, int flags) {
  return meet<"sendmsg">(Call::kSend, {nullptr, descriptor}, ssize_t{-1}, descriptor, message,
                         flags);
}

ssize_t recv(int descriptor, void* bytes, size_t size, int flags) {
  return meetTransfer(Call::kReceive, descriptor, size, [&](size_t count) {
    return original<"recv", ssize_t>(descriptor, bytes, count, flags);
  });
}

ssize_t recvfrom(int descriptor, void* bytes, size_t size, int flags, sockaddr* from,
                 socklen_t* fromSize) {
  return meetTransfer(Call::kReceive, descriptor, size, [&](size_t count) {
    return original<"recvfrom", ssize_t>(descriptor, bytes, count, flags, from, fromSize);
  });
}

ssize_t recvmsg(int descriptor, msghdr* message, int flags) {
  return meet<"recvmsg">(Call::kReceive, {nullptr, descriptor}, ssize_t{-1}, descriptor, message,
                         flags);
}

int poll(pollfd* entries, nfds_t count, int timeout) {
  return meet<"poll">(Call::kPoll, {}, -1, entries, count, timeout);
}

int ppoll(pollfd* entries, nfds_t count, const timespec* timeout, const sigset_t* mask) {
  return meet<"ppoll">(Call::kPoll, {}, -1, entries, count, timeout, mask);
}

}  // extern "C"
