// SPDX-License-Identifier: Apache-2.0
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <cerrno>

#include "ztportal/platform/network/NetworkChanges.h"

// rtnetlink(7).

namespace zt {

namespace {

FileDescriptor observingSocket() {
  FileDescriptor socket = aboveStandardStreams(
      FileDescriptor(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE)));
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR;
  if (!socket.isOpen() ||
      ::bind(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    return {};
  }
  return socket;
}

}  // namespace

NetworkChanges::NetworkChanges() : _socket(observingSocket()), _identity(_socket.number()) {}

NetworkChanges::~NetworkChanges() {
  if (!isOurs()) _socket.release();
}

bool NetworkChanges::take() {
  if (!isOurs()) return false;
  bool isChanged = false;
  for (;;) {
    char ignored = 0;  // a message that is read in part is gone as a whole
    const ssize_t size = ::recv(_socket.number(), &ignored, sizeof(ignored), 0);
    // ENOBUFS: there were more changes than the socket's buffer can keep.
    if (size >= 0 || errno == ENOBUFS) {
      isChanged = true;
    } else if (errno != EINTR) {
      return isChanged;
    }
  }
}

}  // namespace zt
