#pragma once

#include <utility>

#include "ztportal/base/ZtString.h"

namespace zt {

/// The reporting server of a customer, as its configuration document names it, and what is known
/// of it so far. A value; used by one thread at a time.
///
///     ReportingServer server(configurationUrl);
///     server.connect(false);
///     bool accepted = server.send(request);
class ReportingServer {
 public:
  /// Makes no request.
  explicit ReportingServer(ZtString configurationUrl)
      : _configurationUrl(std::move(configurationUrl)) {}

  /// Reads the configuration and, if that succeeds, asks the server for its version: it is online
  /// when the version is not empty. Without a configuration the online state does not change.
  void connect(bool tryLocalCopy);
  /// Reads the URLs from the configuration document, with `tryLocalCopy` from the local copy if
  /// that is well-formed XML. True when the document has a URL for reports. A test URL is stored
  /// in any case.
  bool readConfiguration(bool tryLocalCopy);
  /// Asks the server for its version and stores it. Missing, with the last version unchanged, when
  /// the response has none.
  ZtString readVersion();

  /// Posts `request` to `url()`. True when the response confirms the report.
  bool send(const ZtString& request);

  /// One exchange of 2 seconds at most: a POST of `body`, or a GET if it is missing. The body of
  /// the response, missing when it is not valid UTF-8; empty for every status outside 200 to 299
  /// and when there is no response.
  static ZtString exchange(const ZtString& url, const ZtString& body);

  /// Where requests go: the test URL in test mode, otherwise the report URL. Either may be empty.
  ZtString url() const;
  bool isReady() const { return _gotConfiguration && _online; }

  const ZtString& configurationUrl() const { return _configurationUrl; }
  const ZtString& reportUrl() const { return _reportUrl; }
  const ZtString& testUrl() const { return _testUrl; }
  const ZtString& version() const { return _version; }
  bool gotConfiguration() const { return _gotConfiguration; }
  bool online() const { return _online; }
  /// HTTP status of the response to the last `send`; 0 when there was none.
  int status() const { return _status; }

 private:
  ZtString _configurationUrl;
  ZtString _reportUrl = ZtString::constant<"">();
  ZtString _testUrl = ZtString::constant<"">();
  ZtString _version;
  bool _gotConfiguration = false;
  bool _online = false;
  int _status = 0;
};

}  // namespace zt
