// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "tools/ztinbox/api/Api.h"
#include "tools/ztinbox/faults/Behaviour.h"
#include "tools/ztinbox/http/Exchange.h"
#include "tools/ztinbox/http/ListenAddress.h"
#include "tools/ztinbox/soap/Intake.h"
#include "tools/ztinbox/soap/SoapService.h"
#include "tools/ztinbox/store/ReportStore.h"

namespace zt::inbox {

/// Receives one or more lines, the last one without its line end.
using LineSink = std::function<void(std::string_view)>;

struct InboxSettings {
  ListenAddress listen{"127.0.0.1", 8025};
  std::string dataFolder;
  std::string store;  ///< options of a PostgreSQL database that is used instead; see libpq
  std::size_t mostReports = 10'000;
  BehaviourSettings behaviour;
};

/// The inbox: its listening socket and everything that responds to requests.
///
///     InboxServer server(settings, [](std::string_view line) { … });
///     server.run(stop);                        // until the descriptor `stop` is readable
class InboxServer {
 public:
  /// Starts listening; clients that connect before run() wait. `lines` receives a line for each
  /// report once it is in the database, and for each database fault, from any thread. Throws
  /// MachineFault if the address or the data folder is not available.
  InboxServer(const InboxSettings& settings, LineSink lines);

  /// "http://127.0.0.1:8025"
  std::string url() const { return "http://" + _socket.address().text(); }

  /// Serves until `stopDescriptor` becomes readable, then ends every connection and its threads.
  void run(int stopDescriptor);

 private:
  void respond(Exchange& exchange);
  void dispatch(Exchange& exchange);
  void sendConfiguration(Exchange& exchange) const;
  std::optional<Refusal> check(const HttpRequest& request, const Connection& connection) const;
  std::optional<Refusal> checkSite(const HttpRequest& request, const Connection& connection) const;
  ListenAddress addressFor(const Connection& connection) const;

  LineSink _lines;
  ListeningSocket _socket;
  Behaviour _behaviour;
  ReportStore _store;
  Intake _intake;
  SoapService _soap;
  Api _api;
};

}  // namespace zt::inbox
