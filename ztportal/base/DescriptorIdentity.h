// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

namespace zt {

/// Which open file, socket or pipe the number of a descriptor stood for. A host may close any
/// number, for example by close_range(2), and then open something else that gets the same one. Code
/// that keeps a descriptor between two calls of the library asks before it uses it again:
///
///     const DescriptorIdentity connection(number);
///     ...
///     if (!connection.isStill(number)) forget();    // without close(): the number is the host's
class DescriptorIdentity {
 public:
  /// Of no descriptor: `isStill` is false for every number.
  DescriptorIdentity() = default;
  explicit DescriptorIdentity(int number) {
    struct stat status {};
    if (::fstat(number, &status) != 0) return;
    _device = status.st_dev;
    _inode = status.st_ino;
    _isKnown = true;
  }

  bool isStill(int number) const { return _isKnown && *this == DescriptorIdentity(number); }
  bool operator==(const DescriptorIdentity&) const = default;

 private:
  dev_t _device = 0;
  ino_t _inode = 0;
  bool _isKnown = false;
};

}  // namespace zt
