#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace zt::bench {

/// A reporting server that does next to nothing, in a process of its own that ends with this
/// object: it reads a request to its end and answers with ready-made bytes. Connections are kept;
/// each has a thread. As a proxy it answers for any server.
class LoopbackServer {
 public:
  LoopbackServer();
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;
  ~LoopbackServer();

  std::string url(std::string_view path) const;
  std::string configurationUrl() const { return url("/reporting/kelvane.xml"); }
  std::string reportUrl() const { return url("/soap"); }

 private:
  int _port = 0;
  pid_t _process = -1;
};

}  // namespace zt::bench
