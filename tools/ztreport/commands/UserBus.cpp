// SPDX-License-Identifier: Apache-2.0
#include "tools/ztreport/commands/UserBus.h"

#include <stdlib.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>

namespace zt::tools {

namespace {

/// sd-bus takes the address from one of these two variables.
std::string addressSource() {
  for (const char* name : {"DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"}) {
    const char* const value = ::getenv(name);
    if (value != nullptr) return std::string(name) + " is " + value;
  }
  return "neither DBUS_SESSION_BUS_ADDRESS nor XDG_RUNTIME_DIR is set";
}

// sd-bus itself would wait for 25 seconds and more.
constexpr std::chrono::seconds kPatience{2};

/// Waits for the bus's response to the connection. A negative errno on failure.
int waitUntilReady(sd_bus* bus) {
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + kPatience;
  for (;;) {
    const int ready = sd_bus_is_ready(bus);
    if (ready != 0) return ready;
    const int progress = sd_bus_process(bus, nullptr);
    if (progress < 0) return progress;
    if (progress > 0) continue;
    const auto left =
        std::chrono::duration_cast<std::chrono::microseconds>(deadline - Clock::now()).count();
    if (left <= 0) return -ETIMEDOUT;
    sd_bus_wait(bus, static_cast<std::uint64_t>(left));
  }
}

}  // namespace

UserBus openUserBus(std::string& reason) {
  sd_bus* opened = nullptr;
  int error = sd_bus_open_user(&opened);
  UserBus bus(opened);
  if (error >= 0) error = waitUntilReady(opened);
  if (error >= 0) return bus;
  reason = error == -ETIMEDOUT
               ? "no response within " + std::to_string(kPatience.count()) + " seconds"
               : std::strerror(-error);
  reason += "; " + addressSource();
  return nullptr;
}

}  // namespace zt::tools
