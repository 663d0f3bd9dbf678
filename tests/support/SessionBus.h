// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>

#include "tests/support/Subprocess.h"

namespace zt::test {

/// A private session bus, which ends with its scope.
///
///     SessionBus bus;
///     ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str());
class SessionBus {
 public:
  SessionBus() : _daemon({"dbus-daemon", "--session", "--nofork", "--print-address"}) {
    const std::optional<std::string> address = _daemon.readLine(std::chrono::seconds(60));
    if (!address) throw std::runtime_error("the session bus does not start");
    _address = *address;
  }

  const std::string& address() const { return _address; }
  Subprocess& process() { return _daemon; }

 private:
  Subprocess _daemon;
  std::string _address;
};

}  // namespace zt::test
