// SPDX-License-Identifier: Apache-2.0
#include <sys/socket.h>

#include "fuzz/FuzzTarget.h"
#include "tools/ztinbox/api/ReportJson.h"
#include "tools/ztinbox/http/HttpServer.h"
#include "tools/ztinbox/soap/ReportContent.h"
#include "tools/ztinbox/soap/SoapMessages.h"

namespace {

// Does what the inbox does with the request of a report, except for storing it.
void take(zt::inbox::Exchange& exchange) {
  const std::string& body = exchange.request.body;
  if (zt::inbox::soapRequest(body) != zt::inbox::SoapRequest::kReport) return;
  zt::inbox::StoredReport report;
  report.identity = zt::inbox::readContent(body).identity;
  zt::inbox::reportDetailsJson(report, {exchange.connection.head(), body}, {});
}

}  // namespace

// The bytes of a connection to the inbox.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static zt::inbox::HttpServer server(take, [](const auto&, const auto&) { return std::nullopt; });
  int ends[2];
  zt::fuzz::require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends) == 0);
  const zt::FileDescriptor client(ends[0]);
  zt::inbox::Connection connection{zt::FileDescriptor(ends[1])};
  zt::fuzz::require(send(ends[0], data, size, MSG_NOSIGNAL) == static_cast<ssize_t>(size));
  shutdown(ends[0], SHUT_WR);
  server.serve(connection);
  return 0;
}
