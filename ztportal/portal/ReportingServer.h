// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

#include "ztportal/base/ZtString.h"
#include "ztportal/platform/http/ZtTransportOptions.h"
#include "ztportal/portal/ZtDelivery.h"

namespace zt {

/// The reporting server of a customer: its URLs from the configuration document, and its version. A
/// value; used by one thread at a time.
///
///     ReportingServer server(configurationUrl);
///     server.connect(false);
///     bool accepted = server.send(request).outcome == ZtDeliveryOutcome::Accepted;
class ReportingServer {
 public:
  /// Sends no request.
  explicit ReportingServer(ZtString configurationUrl, ZtTransportOptions options = {})
      : _configurationUrl(std::move(configurationUrl)), _options(std::move(options)) {}

  /// Reads the configuration and, if that succeeds, asks the server for its version: it is online
  /// if the version is not empty. Without a configuration the online state does not change.
  void connect(bool tryLocalCopy);
  /// Reads the URLs from the configuration document; with `tryLocalCopy` from the local copy, if
  /// that is well-formed XML. True if the document has a URL for reports. A test URL is stored in
  /// any case.
  bool readConfiguration(bool tryLocalCopy);
  /// Asks the server for its version and stores it. If the response has none, returns a missing
  /// string and keeps the last version.
  ZtString readVersion();

  // The only ways to the network. Without the user's consent none sends anything.

  /// Posts `request` to `url()`. Accepted if the response confirms the report.
  ZtDelivery send(const ZtString& request) const { return sendTo(url(), request); }
  /// The same, with what `url()` has returned: looking up the test mode takes time.
  ZtDelivery sendTo(const ZtString& target, const ZtString& request) const;
  /// One exchange: a POST of `body`, or a GET if it is missing. Returns the body of the response:
  /// missing if it is not valid UTF-8, empty for every status outside 200 to 299 and if there is no
  /// response. `receipt` gets what became of it: for a status of success that the response is
  /// invalid, since only the caller knows which one it expects.
  static ZtString exchange(const ZtString& url, const ZtString& body,
                           const ZtTransportOptions& options, ZtDelivery& receipt);

  /// The receipt of a report that is not sent while the server is not ready.
  ZtDelivery notSent() const;
  /// The receipt of a report that is not sent because the user has revoked the consent.
  static ZtDelivery withoutConsent();
  /// The receipt of a report that the host's hook has dropped.
  static ZtDelivery dropped();

  /// Where requests go: the test URL in test mode, otherwise the report URL. Either may be empty.
  ZtString url() const;
  bool isReady() const { return _gotConfiguration && _online; }

  const ZtTransportOptions& options() const { return _options; }
  void setOptions(ZtTransportOptions options) { _options = std::move(options); }

  const ZtString& configurationUrl() const { return _configurationUrl; }
  const ZtString& reportUrl() const { return _reportUrl; }
  const ZtString& testUrl() const { return _testUrl; }
  const ZtString& version() const { return _version; }
  bool gotConfiguration() const { return _gotConfiguration; }
  bool online() const { return _online; }

 private:
  ZtString _configurationUrl;
  ZtTransportOptions _options;
  ZtString _reportUrl = ZtString::constant<"">();
  ZtString _testUrl = ZtString::constant<"">();
  ZtString _version;
  bool _gotConfiguration = false;
  bool _online = false;
  ZtDelivery _connection;  // the last exchange of `connect`
};

}  // namespace zt
