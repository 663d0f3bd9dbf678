#pragma once

#include <memory>
#include <string>

struct sd_bus;

namespace zt::tools {

struct CloseBus {
  void operator()(sd_bus* bus) const;
};

/// A connection to the user's session bus.
using UserBus = std::unique_ptr<sd_bus, CloseBus>;

/// Connects to the session bus and waits for its first response, for two seconds at most. Returns
/// null when there is none, with the cause in `reason`.
UserBus openUserBus(std::string& reason);

}  // namespace zt::tools
