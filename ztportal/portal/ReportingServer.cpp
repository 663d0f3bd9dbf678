// SPDX-License-Identifier: Apache-2.0
#include "ztportal/portal/ReportingServer.h"

#include <array>
#include <chrono>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "ztportal/base/Log.h"
#include "ztportal/base/Text.h"
#include "ztportal/base/Utf8.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/platform/http/Gzip.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"
#include "ztportal/portal/Companion.h"
#include "ztportal/portal/RequestText.h"
#include "ztportal/portal/ZtPortalConstants.h"
#include "ztportal/portal/ZtUtils.h"
#include "ztportal/system/HostRules.h"

namespace zt {

namespace {

/// The last one is for compressed requests only.
constexpr std::array<HttpHeader, 3> kHeaders{{{"Content-Type", "application/xml"},
                                              {"User-Agent", "Kelvane portal service (osx)"},
                                              {"Content-Encoding", "gzip"}}};
constexpr std::size_t kLeastCompressed = 1024;

ZtString trimmedText(const ZtXMLNode& node) {
  const ZtString text = node.text();
  return trimmed(text.view());
}

/// The file name is deliberate: the folder of the local copy was never set, and installers put the
/// copy where the library has always looked for it, "(null)configuration.xml" in the working
/// directory.
std::shared_ptr<ZtXMLDocument> localConfiguration() {
  std::string path;
  appendText(path, ZtString().printed(), APP_CONFIGURATIONFILE.view());
  const std::optional<std::string> content =
      Platform::current().files().read(path, kSettingsFileLimit);
  auto document = content ? ZtXMLDocument::parseFileContent(*content) : nullptr;
  log(ZtLogLevel::Debug, "configuration",
      document != nullptr ? "the local copy is used"
                          : "there is no local copy that is well-formed XML");
  return document;
}

/// The name of the response element and the word "true" may be anywhere, because servers word the
/// rest of the response differently.
bool isAccepted(const ZtString& response) {
  return containsAnyCase(response.view(), "postpooldatasresponse") &&
         containsAnyCase(response.view(), "true");
}

/// `url` without user name and password (RFC 3986, 3.2.1).
std::string withoutCredentials(std::string_view url) {
  const std::size_t scheme = url.find("://");
  const std::size_t start = scheme == std::string_view::npos ? 0 : scheme + 3;
  const std::string_view authority = url.substr(start, url.find_first_of("/?#", start) - start);
  const std::size_t end = authority.rfind('@');
  std::string shown(url);
  if (end != std::string_view::npos) shown.erase(start, end + 1);
  return shown;
}

constexpr const char* kNoConfiguration = "There is no configuration with a URL for reports";
constexpr const char* kNoVersion = "The server has not told its version";

/// Sends `request` by the host's own transport, with the headers of the library and then those of
/// the options. An exception counts as a failure.
HttpResponse exchangeByHost(const HttpRequest& request) {
  HttpResponse response;
  // A host that wants no server for a document gives it no URL.
  if (request.url.empty()) {
    response.error = ZtDeliveryError::Address;
    response.message = "There is no URL.";
    return response;
  }
  ZtTransportRequest passed;
  passed.method = request.method;
  passed.url = request.url;
  for (const HttpHeader& header : request.headers) {
    passed.headers.emplace_back(header.name, header.value);
  }
  const auto& more = request.options->headers;
  passed.headers.insert(passed.headers.end(), more.begin(), more.end());
  passed.body = request.body.value_or("");

  const auto start = std::chrono::steady_clock::now();
  ZtTransportResponse received;
  try {
    received = request.options->transport(passed);
  } catch (const std::exception& error) {
    setText(received.error, error.what());
  } catch (...) {
    received = {};
  }
  response.times.total = std::chrono::duration_cast<std::chrono::microseconds>(
      std::chrono::steady_clock::now() - start);
  response.status = received.status;
  response.retryAfter = received.retryAfter;
  if (received.status != 0) {
    response.body = std::move(received.body);
    return response;
  }
  response.error = ZtDeliveryError::Host;
  response.message = std::move(received.error);
  if (response.message.empty()) response.message = "The host's transport failed.";
  return response;
}

template <class... Parts>
ZtDelivery receiptOf(ZtDeliveryOutcome outcome, ZtDeliveryError error, const Parts&... parts) {
  ZtDelivery receipt;
  receipt.outcome = outcome;
  receipt.error = error;
  setText(receipt.message, parts...);
  return receipt;
}

/// Notes in `receipt` what became of a request.
void note(ZtDelivery& receipt, const HttpRequest& request, HttpResponse& response) noexcept try {
  receipt.httpStatus = response.status;
  receipt.responseBytes = response.body.size();
  receipt.lookupTime = response.times.lookup;
  receipt.connectTime = response.times.connect;
  receipt.tlsTime = response.times.tls;
  receipt.responseTime = response.times.response;
  receipt.totalTime = response.times.total;
  receipt.retryAfter = response.retryAfter;
  if (response.status >= 200 && response.status <= 299) {
    receipt.outcome = ZtDeliveryOutcome::InvalidResponse;
    receipt.error = ZtDeliveryError::Content;
    setText(receipt.message, "The response is not the expected one.");
  } else if (response.status != 0) {
    receipt.outcome = ZtDeliveryOutcome::Refused;
    receipt.error = ZtDeliveryError::HttpStatus;
    setText(receipt.message, "The server responded with HTTP status ",
            std::to_string(response.status), ".");
  } else {
    receipt.error = response.error;
    if (receipt.error == ZtDeliveryError::NoError) receipt.error = ZtDeliveryError::Transfer;
    receipt.outcome = receipt.error == ZtDeliveryError::Timeout ? ZtDeliveryOutcome::TimedOut
                                                                : ZtDeliveryOutcome::Unreachable;
    receipt.message = std::move(response.message);
    if (receipt.message.empty()) setText(receipt.message, "No complete response arrived.");
  }
  receipt.url = response.url.empty() ? withoutCredentials(request.url) : std::move(response.url);
} catch (const std::bad_alloc&) {
}

}  // namespace

void ReportingServer::connect(bool tryLocalCopy) {
  const bool isRead = readConfiguration(tryLocalCopy);
  if (isRead) _online = !readVersion().empty();
  // A host may want no server, and then gives no URL.
  if ((isRead && _online) || _configurationUrl.empty()) return;
  log(ZtLogLevel::Warning, "configuration", isRead ? kNoVersion : kNoConfiguration,
      _connection.message.empty() ? "" : ": ", _connection.message);
}

bool ReportingServer::readConfiguration(bool tryLocalCopy) try {
  _connection = {};
  std::shared_ptr<ZtXMLDocument> document = tryLocalCopy ? localConfiguration() : nullptr;
  if (document == nullptr) {
    const ZtString response = exchange(_configurationUrl, nullptr, _options, _connection);
    if (!response.isNull()) document = ZtXMLDocument::parse(response.view());
  }
  if (document == nullptr) return false;
  const std::optional<ZtXMLNode> root = document->rootElement();
  if (!root) return false;

  bool isRead = false;
  if (const auto url = ZtUtils::childNamed(*root, "defSOAP")) {
    _reportUrl = trimmedText(*url);
    _gotConfiguration = isRead = !_reportUrl.empty();
  }
  if (const auto url = ZtUtils::childNamed(*root, "defTestSOAP")) _testUrl = trimmedText(*url);
  return isRead;
} catch (const ZtException&) {
  return false;
} catch (const std::bad_alloc&) {
  return false;
}

ZtString ReportingServer::readVersion() try {
  const ZtString response = exchange(url(), versionRequest(), _options, _connection);
  if (response.isNull()) return nullptr;
  const auto document = ZtXMLDocument::parse(response.view());
  if (document == nullptr) return nullptr;
  const auto version = ZtUtils::childNamed(document->documentNode(), "versioninfo");
  if (!version) return nullptr;
  _version = trimmedText(*version);
  return _version;
} catch (const ZtException&) {
  return "";
} catch (const std::bad_alloc&) {
  return nullptr;
}

ZtDelivery ReportingServer::sendTo(const ZtString& target, const ZtString& request) const {
  ZtDelivery receipt;
  if (isAccepted(exchange(target, request, _options, receipt))) {
    receipt.outcome = ZtDeliveryOutcome::Accepted;
    receipt.error = ZtDeliveryError::NoError;
    setText(receipt.message, "The server has accepted the report.");
    log(ZtLogLevel::Info, "report", "accepted by ", receipt.url);
  } else if (target.empty()) {
    return notSent();
  } else {
    log(ZtLogLevel::Warning, "report", "not accepted by ", receipt.url, ": ", receipt.message);
  }
  return receipt;
}

ZtString ReportingServer::exchange(const ZtString& url, const ZtString& body,
                                   const ZtTransportOptions& options, ZtDelivery& receipt) try {
  receipt = {};
  if (consentIsRevoked()) {
    receipt = withoutConsent();
    return "";
  }
  HttpRequest request;
  request.url = url.view();
  request.method = body.isNull() ? "GET" : "POST";
  request.headers = std::span(kHeaders).first(2);
  request.options = &options;
  if (!body.isNull()) request.body = body.view();
  request.timeout =
      options.timeout.count() > 0 ? options.timeout : std::chrono::milliseconds::max();

  std::string compressed;
  if (options.compressRequests && body.view().size() > kLeastCompressed) {
    compressed = gzip(body.view());
    if (!compressed.empty()) {
      request.body = compressed;
      request.headers = kHeaders;
    }
  }
  HttpResponse response =
      options.transport ? exchangeByHost(request) : Platform::current().http().exchange(request);
  note(receipt, request, response);
  receipt.requestBytes = body.view().size();
  if (response.status < 200 || response.status > 299) return "";
  return isUtf8(response.body) ? ZtString(response.body) : nullptr;
} catch (const ZtException& error) {
  receipt = receiptOf(ZtDeliveryOutcome::Unreachable, ZtDeliveryError::Host, error.what());
  return "";
} catch (const std::bad_alloc&) {
  receipt.error = ZtDeliveryError::Memory;
  setText(receipt.message, "out of memory");
  return nullptr;
}

ZtDelivery ReportingServer::withoutConsent() {
  return receiptOf(ZtDeliveryOutcome::NoConsent, ZtDeliveryError::NoError,
                   "The user has revoked the consent to reports.");
}

ZtDelivery ReportingServer::dropped() {
  return receiptOf(ZtDeliveryOutcome::Dropped, ZtDeliveryError::NoError,
                   "The host's request hook has dropped the report.");
}

ZtDelivery ReportingServer::notSent() const {
  if (consentIsRevoked()) return withoutConsent();
  const bool hasNoTestUrl = !_reportUrl.empty() && url().empty();
  ZtDelivery receipt =
      hasNoTestUrl ? receiptOf(ZtDeliveryOutcome::NoTestUrl, ZtDeliveryError::Content,
                               "Test mode is on, and the configuration has no URL for it.")
                   : receiptOf(ZtDeliveryOutcome::Offline, _connection.error,
                               _gotConfiguration ? kNoVersion : kNoConfiguration,
                               _connection.message.empty() ? "." : ": ", _connection.message);
  log(ZtLogLevel::Warning, "report", "not sent: ", receipt.message);
  return receipt;
}

ZtString ReportingServer::url() const { return testModeIsOn() ? _testUrl : _reportUrl; }

}  // namespace zt
