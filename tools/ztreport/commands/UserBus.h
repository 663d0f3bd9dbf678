// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <systemd/sd-bus.h>

#include <memory>
#include <string>

#include "ztportal/base/Free.h"

namespace zt::tools {

/// A connection to the user's session bus.
using UserBus = std::unique_ptr<sd_bus, Free<sd_bus_close_unref>>;

/// Connects to the session bus and waits for its first response, for two seconds at most. Returns
/// null when there is none, with the cause in `reason`.
UserBus openUserBus(std::string& reason);

}  // namespace zt::tools
