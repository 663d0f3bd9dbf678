// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ztportal/base/ZtString.h"

namespace zt {

/// The identity of this machine.
class MachineIdentity {
 public:
  virtual ~MachineIdentity() = default;

  /// A UUID, the same for every user and every run; missing if the machine has none.
  virtual ZtString platformUUID() = 0;
};

/// A new random UUID (RFC 4122, version 4) from the kernel's random source, in upper case:
/// "0F1D6A52-93E5-4E0B-8D57-5A2C7D3B9E11". Missing if the kernel returns no random bytes.
ZtString randomUuid();

}  // namespace zt
