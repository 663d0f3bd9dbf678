// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>

#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/base/FileDescriptor.h"

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

/// A session bus that accepts connections and never answers.
class SilentBus {
 public:
  SilentBus() {
    struct sockaddr_un address {};
    address.sun_family = AF_UNIX;
    path().copy(address.sun_path, sizeof(address.sun_path) - 1);
    if (::bind(_socket.number(), reinterpret_cast<struct sockaddr*>(&address), sizeof(address)) !=
            0 ||
        ::listen(_socket.number(), 8) != 0) {
      throw std::runtime_error("cannot listen at " + path());
    }
  }

  std::string address() const { return "unix:path=" + path(); }

  /// How many connections were made since the last call.
  int takeConnections() {
    int count = 0;
    while (FileDescriptor(::accept(_socket.number(), nullptr, nullptr)).isOpen()) ++count;
    return count;
  }

 private:
  std::string path() const { return _folder.path("bus"); }

  TemporaryFolder _folder;
  FileDescriptor _socket{::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)};
};

}  // namespace zt::test
