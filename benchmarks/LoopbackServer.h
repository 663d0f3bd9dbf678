// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <string>

#include "tests/support/LoopbackServer.h"

namespace zt::bench {

/// A reporting server that is as fast as possible: it reads a request to its end and responds with
/// ready-made bytes. It runs in a subprocess that ends with this object, keeps connections open
/// with one thread each, and responds as a proxy for any server.
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
