#include "tools/ztreport/commands/UserBus.h"

#include <stdlib.h>
#include <systemd/sd-bus.h>

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

}  // namespace

void CloseBus::operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }

UserBus openUserBus(std::string& reason) {
  sd_bus* opened = nullptr;
  int error = sd_bus_open_user(&opened);
  UserBus bus(opened);
  const char* name = nullptr;
  if (error >= 0) error = sd_bus_get_unique_name(opened, &name);
  if (error >= 0) return bus;
  reason = std::string(std::strerror(-error)) + "; " + addressSource();
  return nullptr;
}

}  // namespace zt::tools
