#include "tools/ztinbox/http/InboxServer.h"

#include <poll.h>

#include <array>
#include <cerrno>
#include <memory>
#include <thread>
#include <utility>

#include "tools/common/Terminal.h"
#include "tools/ztinbox/ReportLine.h"
#include "tools/ztinbox/Version.h"
#include "tools/ztinbox/api/ApiAnswers.h"
#include "tools/ztinbox/http/HostCheck.h"
#include "tools/ztinbox/http/Workers.h"
#include "tools/ztinbox/page/Page.h"
#include "tools/ztinbox/soap/SoapAnswers.h"

namespace zt::inbox {

namespace {

/// Clients that hang hold a thread each; the others must find one.
constexpr std::size_t kMostConnections = 512;
/// Pause while the process has no descriptor left for a further connection.
constexpr std::chrono::milliseconds kNoDescriptorPause{20};

constexpr int kForbidden = 403;
constexpr int kNotFound = 404;
constexpr int kServerError = 500;
/// Of a fault in the inbox's own lines.
constexpr std::size_t kLongestFault = 300;

bool isConfiguration(const std::string& path) {
  constexpr std::string_view kFolder = "/reporting/";
  constexpr std::string_view kExtension = ".xml";
  return path.starts_with(kFolder) && path.ends_with(kExtension) &&
         path.size() > kFolder.size() + kExtension.size();
}

bool isSoap(const std::string& path) { return path == "/soap" || path == "/soap-test"; }

std::string linesAbout(const std::vector<NewReport>& reports) {
  std::string lines;
  for (const NewReport& report : reports) {
    if (!lines.empty()) lines += '\n';
    lines += reportLine(report.report);
  }
  return lines;
}

/// What a browser shows or a script reads, as opposed to what reporting clients ask for.
bool isForTheUser(const std::string& path) { return Page::owns(path) || Api::owns(path); }

}  // namespace

InboxServer::InboxServer(const InboxSettings& settings, LineSink lines)
    : _lines(std::move(lines)),
      _socket(settings.listen),
      _behaviour(settings.behaviour),
      _store(settings.dataFolder, settings.mostReports,
             [this](const std::vector<NewReport>& reports) { _lines(linesAbout(reports)); }),
      _intake(_behaviour, _store),
      _soap(_intake),
      _api(_store, _behaviour),
      _http([this](Exchange& exchange) { answer(exchange); },
            [this](const RequestHead& head) { return check(head); }) {}

void InboxServer::run(int stopDescriptor) {
  Workers workers(kMostConnections);
  std::array<pollfd, 2> waiting{{{_socket.number(), POLLIN, 0}, {stopDescriptor, POLLIN, 0}}};
  while (waiting[1].revents == 0) {
    if (::poll(waiting.data(), waiting.size(), -1) < 0) {
      waiting[1].revents = 0;
      continue;
    }
    if (waiting[0].revents == 0) continue;
    Fd accepted = _socket.accept();
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

void InboxServer::answer(Exchange& exchange) try {
  dispatch(exchange);
} catch (const DatabaseFault& fault) {
  _lines("ztinbox: " + terminal::terminalText(fault.what(), kLongestFault));
  refuse(exchange.response, exchange.path, {kServerError, fault.what()});
}

void InboxServer::dispatch(Exchange& exchange) {
  if (isSoap(exchange.path)) {
    if (exchange.request.method != "POST") return answerNotAllowed(exchange, "POST");
    return _soap.answer(exchange, exchange.path == "/soap-test");
  }
  if (Api::owns(exchange.path)) return _api.answer(exchange);
  if (isConfiguration(exchange.path)) return answerConfiguration(exchange);
  if (Page::owns(exchange.path)) return Page::answer(exchange);
  refuse(exchange.response, exchange.path, {kNotFound, "no such address"});
}

void InboxServer::answerConfiguration(Exchange& exchange) const {
  if (!reads(exchange)) return answerNotAllowed(exchange, "GET, HEAD");
  const std::string own = "http://" + addressFor(exchange.connection).text();
  exchange.response.set_content(configurationDocument(own), kXmlType);
}

std::optional<Refusal> InboxServer::check(const RequestHead& head) const {
  if (!isForTheUser(head.path)) return std::nullopt;
  const ListenAddress own = addressFor(head.connection);
  const auto& headers = head.request.headers;
  const auto [firstHost, endOfHosts] = headers.equal_range("Host");
  bool allowed = firstHost != endOfHosts;
  for (auto host = firstHost; host != endOfHosts; ++host) {
    allowed = allowed && isOwnHost(host->second, own);
  }
  if (!head.authority.empty()) allowed = allowed && isOwnHost(head.authority, own);
  if (!allowed) return Refusal{kForbidden, "foreign host"};

  const auto [firstOrigin, endOfOrigins] = headers.equal_range("Origin");
  for (auto origin = firstOrigin; origin != endOfOrigins; ++origin) {
    if (!isOwnOrigin(origin->second, own)) return Refusal{kForbidden, "foreign origin"};
  }
  return std::nullopt;
}

/// The address by which the client of `connection` reaches the inbox: where it listens, unless it
/// listens on every address of the machine.
ListenAddress InboxServer::addressFor(const Connection& connection) const {
  ListenAddress address = _socket.address();
  if (address.isWildcard()) address.address = connection.localAddress();
  return address;
}

}  // namespace zt::inbox
