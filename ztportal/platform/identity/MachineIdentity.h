#pragma once

#include "ztportal/base/ZtString.h"

namespace zt {

/// Tells this machine from every other.
class MachineIdentity {
 public:
  virtual ~MachineIdentity() = default;

  /// A UUID text, the same for every user and every run; missing when the machine has none.
  virtual ZtString platformUUID() = 0;
};

}  // namespace zt
