// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

#include "ztportal/base/ZtString.h"

namespace zt {

/// Sends messages to other processes of the same user.
class Broadcast {
 public:
  virtual ~Broadcast() = default;

  /// Sends the message `name` without waiting for any receiver. If there is no receiver, nothing
  /// happens. Missing strings are sent as "(null)".
  virtual void post(const ZtString& name, const ZtString& object,
                    const std::map<std::string, ZtString>& userInfo) = 0;

  /// Closes what is kept open on this thread for the next message.
  virtual void closeConnections() = 0;
};

}  // namespace zt
