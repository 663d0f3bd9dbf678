// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/LoopbackServer.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <string_view>
#include <thread>
#include <utility>

namespace zt::bench {

namespace {

struct Responses {
  explicit Responses(const std::string& reportUrl)
      : configuration(test::success("<configuration><defSOAP>" + reportUrl +
                                    "</defSOAP><defTestSOAP>" + reportUrl +
                                    "</defTestSOAP></configuration>")
                          .bytes) {}

  std::string configuration;
  std::string version = test::success("<versioninfo>7.3</versioninfo>").bytes;
  std::string acceptance =
      test::success(
          "<Envelope><Body><postPoolDatasResponse><return>true</return></postPoolDatasResponse>"
          "</Body></Envelope>")
          .bytes;

  const std::string& to(std::string_view request) const {
    constexpr std::size_t kStart = 1024;  // enough to recognise the kind of the request
    switch (test::kindOf(request.substr(0, kStart))) {
      case test::RequestKind::Configuration:
        return configuration;
      case test::RequestKind::Version:
        return version;
      default:
        return acceptance;
    }
  }
};

/// The size of the request at the start of `bytes`; 0 if its head is not complete yet.
std::size_t sizeOfRequest(std::string_view bytes) {
  constexpr std::string_view kEnd = "\r\n\r\n";
  constexpr std::string_view kLength = "\r\nContent-Length: ";
  const std::size_t end = bytes.find(kEnd);
  if (end == std::string_view::npos) return 0;
  const std::string_view head = bytes.substr(0, end);
  const std::size_t at = head.find(kLength);
  std::size_t length = 0;
  if (at != std::string_view::npos) {
    std::from_chars(head.data() + at + kLength.size(), head.data() + head.size(), length);
  }
  return end + kEnd.size() + length;
}

void serve(int connection, const Responses& responses) {
  std::string bytes;
  std::array<char, 65536> part;
  for (;;) {
    const ssize_t count = ::recv(connection, part.data(), part.size(), 0);
    if (count <= 0) return;
    bytes.append(part.data(), static_cast<std::size_t>(count));
    const std::size_t size = sizeOfRequest(bytes);
    if (size == 0 || bytes.size() < size) continue;
    const std::string& response = responses.to(bytes);
    if (::send(connection, response.data(), response.size(), MSG_NOSIGNAL) < 0) return;
    bytes.erase(0, size);
  }
}

[[noreturn]] void serveAll(const test::LoopbackPort& port, const Responses& responses) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  for (;;) {
    FileDescriptor connection = port.accept();
    if (!connection.isOpen()) continue;
    const int on = 1;
    ::setsockopt(connection.number(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
    std::thread([connection = std::move(connection), &responses] {
      serve(connection.number(), responses);
    }).detach();
  }
}

}  // namespace

LoopbackServer::LoopbackServer() : _process(::fork()) {
  if (_process == 0) serveAll(_port, Responses(reportUrl()));
}

LoopbackServer::~LoopbackServer() {
  ::kill(_process, SIGKILL);
  ::waitpid(_process, nullptr, 0);
}

}  // namespace zt::bench
