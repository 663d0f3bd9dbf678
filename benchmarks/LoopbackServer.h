#pragma once

#include <sys/types.h>

#include <string>

#include "tests/support/LoopbackServer.h"

namespace zt::bench {

/// A reporting server as fast as possible, in a process of its own that ends with this object: it
/// reads a request to its end and responds with ready-made bytes. It keeps connections; each has a
/// thread. As a proxy it responds for any server.
class LoopbackServer {
 public:
  LoopbackServer();
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;
  ~LoopbackServer();

  std::string configurationUrl() const { return _port.url("/reporting/kelvane.xml"); }
  std::string reportUrl() const { return _port.url("/soap"); }

 private:
  const test::LoopbackPort _port{test::LoopbackPort::Listens};
  pid_t _process = -1;
};

}  // namespace zt::bench
