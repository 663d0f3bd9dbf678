// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/InboxServer.h"

#include <algorithm>
#include <utility>

#include "tools/common/Terminal.h"
#include "tools/ztinbox/Fault.h"
#include "tools/ztinbox/OutputLines.h"
#include "tools/ztinbox/http/HttpServer.h"
#include "tools/ztinbox/page/Page.h"
#include "tools/ztinbox/soap/SoapMessages.h"
#include "tools/ztinbox/store/postgres/PostgresBackend.h"
#include "tools/ztinbox/store/sqlite/SqliteBackend.h"

namespace zt::inbox {

namespace {

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

std::unique_ptr<Backend> open(const InboxSettings& settings) {
  return settings.store.empty() ? openSqliteBackend(settings.dataFolder)
                                : openPostgresBackend(settings.store);
}

/// Addresses for browsers and scripts, as opposed to those for reporting clients.
bool isForTheUser(const std::string& path) { return Page::owns(path) || Api::owns(path); }

}  // namespace

InboxServer::InboxServer(const InboxSettings& settings, LineSink lines)
    : _lines(std::move(lines)),
      _socket(settings.listen),
      _behaviour(settings.behaviour),
      _store(open(settings), settings.mostReports,
             [this](const std::vector<IncomingReport>& reports) { _lines(linesAbout(reports)); }),
      _intake(_behaviour, _store),
      _soap(_intake),
      _api(_store, _behaviour) {}

void InboxServer::run(int stopDescriptor) {
  const HttpHandlers handlers{[this](Exchange& exchange) { respond(exchange); },
                              [this](const HttpRequest& request, const Connection& connection) {
                                return check(request, connection);
                              },
                              [](const HttpRequest& request) { return Api::waits(request.path); }};
  serveHttp(_socket, handlers, {}, stopDescriptor);
}

void InboxServer::respond(Exchange& exchange) try {
  dispatch(exchange);
} catch (const StoreFault& fault) {
  _lines("ztinbox: " + terminal::terminalText(fault.what(), kLongestFault));
  refuse(exchange, {status::kUnavailable, fault.what()});
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
  refuse(exchange, {status::kNotFound, "no such address"});
}

void InboxServer::sendConfiguration(Exchange& exchange) const {
  if (!exchange.request.isRead()) return refuseMethod(exchange, "GET, HEAD");
  const std::string own = "http://" + addressFor(exchange.connection).text();
  exchange.response.setBody(configurationDocument(own), kXmlType);
}

std::optional<Refusal> InboxServer::check(const HttpRequest& request,
                                          const Connection& connection) const {
  if (isSoap(request.path)) return checkSite(request, connection);
  if (!isForTheUser(request.path)) return std::nullopt;
  const ListenAddress own = addressFor(connection);
  std::vector<std::string> hosts = request.header("host");
  const bool hasHost = !hosts.empty();
  if (!request.authority.empty()) hosts.push_back(request.authority);
  if (!hasHost || !std::ranges::all_of(
                      hosts, [&own](const std::string& host) { return isOwnHost(host, own); })) {
    return Refusal{status::kForbidden, "foreign host"};
  }
  for (const std::string& origin : request.header("origin")) {
    if (!isOwnOrigin(origin, own)) return Refusal{status::kForbidden, "foreign origin"};
  }
  return std::nullopt;
}

/// Refuses what a page of another site makes a browser send: any website could fill the store. A
/// browser says so in these headers; no reporting client has them.
std::optional<Refusal> InboxServer::checkSite(const HttpRequest& request,
                                              const Connection& connection) const {
  for (const std::string& site : request.header("sec-fetch-site")) {
    if (site != "same-origin" && site != "none") {
      return Refusal{status::kForbidden, "request of a website"};
    }
  }
  for (const std::string& origin : request.header("origin")) {
    if (!isOwnOrigin(origin, addressFor(connection))) {
      return Refusal{status::kForbidden, "request of a website"};
    }
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
