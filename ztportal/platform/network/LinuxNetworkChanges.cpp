// SPDX-License-Identifier: Apache-2.0
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <cerrno>

#include "ztportal/platform/network/NetworkChanges.h"

// rtnetlink(7).

namespace zt {

NetworkChanges::NetworkChanges()
    : _socket(aboveStandardStreams(FileDescriptor(
          ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE)))),
      _identity(_socket.number()) {
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR;
  const auto* const bound = reinterpret_cast<const sockaddr*>(&address);
  if (::bind(_socket.number(), bound, sizeof(address)) != 0) _socket.close();
}

NetworkChanges::~NetworkChanges() {
  if (!isOurs()) _socket.release();
}

bool NetworkChanges::take() {
  bool isChanged = false;
  char ignored = 0;  // a message that is read in part is gone as a whole
  // ENOBUFS: there were more changes than the socket's buffer can keep.
  while (isOurs() && (::recv(_socket.number(), &ignored, 1, 0) >= 0 || errno == ENOBUFS)) {
    isChanged = true;
  }
  return isChanged;
}

}  // namespace zt
