// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ztportal/base/DescriptorIdentity.h"
#include "ztportal/base/FileDescriptor.h"

namespace zt {

/// Tells when the machine may have got a network: a link went up or down, or an address came or
/// went. Observes from its creation on; if the system does not let it, it never sees a change. Used
/// by one thread at a time.
///
///     NetworkChanges changes;
///     if (changes.take()) tryAgain();
class NetworkChanges {
 public:
  NetworkChanges();
  NetworkChanges(const NetworkChanges&) = delete;
  NetworkChanges& operator=(const NetworkChanges&) = delete;
  ~NetworkChanges();

  /// Whether something has changed since the last call. Does not block.
  bool take();

 private:
  /// Whether the host has left the descriptor open.
  bool isOurs() const { return _identity.isStill(_socket.number()); }

  FileDescriptor _socket;
  DescriptorIdentity _identity;
};

}  // namespace zt
