#pragma once

#include <map>
#include <string>

#include "ztportal/base/ZtString.h"

namespace zt {

/// Tells other processes of the same user what happens.
class Broadcast {
 public:
  virtual ~Broadcast() = default;

  /// Hands the message named `name` out at once, without waiting for any receiver. Where there is
  /// nothing to hand it to, nothing happens. Missing texts are sent as "(null)".
  virtual void post(const ZtString& name, const ZtString& object,
                    const std::map<std::string, ZtString>& userInfo) = 0;
};

}  // namespace zt
