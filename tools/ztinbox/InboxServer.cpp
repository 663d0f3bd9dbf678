// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/InboxServer.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <thread>
#include <utility>

#include "tools/common/Terminal.h"
#include "tools/ztinbox/OutputLines.h"
#include "tools/ztinbox/page/Page.h"
#include "tools/ztinbox/soap/SoapMessages.h"
#include "tools/ztinbox/store/sqlite/SqliteBackend.h"

namespace zt::inbox {

namespace {

/// Each hanging client occupies a thread, and other clients still need free ones.
constexpr std::size_t kMostClients = 512;
/// Pause before another attempt to accept a connection when the process is out of file descriptors.
constexpr std::chrono::milliseconds kNoDescriptorPause{20};

/// Longest error in an output line, in characters.
constexpr std::size_t kLongestFault = 300;

bool isConfiguration(const std::string& path) {
  constexpr std::string_view kFolder = "/reporting/";
  constexpr std::string_view kExtension = ".xml";
  return path.starts_with(kFolder) && path.ends_with(kExtension) &&
         path.size() > kFolder.size() + kExtension.size();
}

bool isSoap(const std::string& path) { return path == "/soap" || path == "/soap-test"; }

std::string linesAbout(const std::vector<IncomingReport>& reports) {
  std::string lines;
  for (const IncomingReport& report : reports) {
    if (!lines.empty()) lines += '\n';
    lines += reportLine(report.report);
  }
  return lines;
}

/// Addresses for browsers and scripts, as opposed to those for reporting clients.
bool isForTheUser(const std::string& path) { return Page::owns(path) || Api::owns(path); }

}  // namespace

InboxServer::InboxServer(const InboxSettings& settings, LineSink lines)
    : _lines(std::move(lines)),
      _socket(settings.listen),
      _behaviour(settings.behaviour),
      _store(openSqliteBackend(settings.dataFolder), settings.mostReports,
             [this](const std::vector<IncomingReport>& reports) { _lines(linesAbout(reports)); }),
      _intake(_behaviour, _store),
      _soap(_intake),
      _api(_store, _behaviour),
      _http([this](Exchange& exchange) { respond(exchange); },
            [this](const HttpRequest& request, const Connection& connection) {
              return check(request, connection);
            }) {}

void InboxServer::run(int stopDescriptor) {
  Workers workers(kMostClients);
  std::array<pollfd, 2> waiting{{{_socket.number(), POLLIN, 0}, {stopDescriptor, POLLIN, 0}}};
  while (waiting[1].revents == 0) {
    if (::poll(waiting.data(), waiting.size(), -1) < 0) {
      waiting[1].revents = 0;
      continue;
    }
    if (waiting[0].revents == 0) continue;
    FileDescriptor accepted = _socket.accept();
    if (!accepted.isOpen()) {
      if (errno == EMFILE || errno == ENFILE) std::this_thread::sleep_for(kNoDescriptorPause);
      continue;
    }
    workers.run([this, connection = std::make_shared<Connection>(std::move(accepted))] {
      const OpenConnections::Entry entry(_open, connection->socket());
      _http.serve(*connection);
    });
  }
  _open.endAll();
}

void InboxServer::respond(Exchange& exchange) try {
  dispatch(exchange);
} catch (const StoreFault& fault) {
  _lines("ztinbox: " + terminal::terminalText(fault.what(), kLongestFault));
  refuse(exchange, {kServerError, fault.what()});
}

void InboxServer::dispatch(Exchange& exchange) {
  const std::string& path = exchange.request.path;
  if (isSoap(path)) {
    if (exchange.request.method != "POST") return refuseMethod(exchange, "POST");
    return _soap.respond(exchange, path == "/soap-test");
  }
  if (Api::owns(path)) return _api.respond(exchange);
  if (isConfiguration(path)) return sendConfiguration(exchange);
  if (Page::owns(path)) return Page::respond(exchange);
  refuse(exchange, {kNotFound, "no such address"});
}

void InboxServer::sendConfiguration(Exchange& exchange) const {
  if (!exchange.request.isRead()) return refuseMethod(exchange, "GET, HEAD");
  const std::string own = "http://" + addressFor(exchange.connection).text();
  exchange.response.setBody(configurationDocument(own), kXmlType);
}

std::optional<Refusal> InboxServer::check(const HttpRequest& request,
                                          const Connection& connection) const {
  if (!isForTheUser(request.path)) return std::nullopt;
  const ListenAddress own = addressFor(connection);
  std::vector<std::string> hosts = request.header("host");
  const bool hasHost = !hosts.empty();
  if (!request.authority.empty()) hosts.push_back(request.authority);
  if (!hasHost || !std::ranges::all_of(
                      hosts, [&own](const std::string& host) { return isOwnHost(host, own); })) {
    return Refusal{kForbidden, "foreign host"};
  }
  for (const std::string& origin : request.header("origin")) {
    if (!isOwnOrigin(origin, own)) return Refusal{kForbidden, "foreign origin"};
  }
  return std::nullopt;
}

/// The address at which the client of `connection` reaches the inbox. If the inbox listens on all
/// addresses of the machine, this is the one that the client connected to.
ListenAddress InboxServer::addressFor(const Connection& connection) const {
  ListenAddress address = _socket.address();
  if (address.isWildcard()) address.address = connection.localAddress();
  return address;
}

}  // namespace zt::inbox
