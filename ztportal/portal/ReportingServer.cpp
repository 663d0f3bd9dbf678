#include "ztportal/portal/ReportingServer.h"

#include <array>
#include <chrono>
#include <memory>
#include <new>
#include <optional>
#include <string>

#include "ztportal/base/Text.h"
#include "ztportal/base/Utf8.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"
#include "ztportal/portal/Companion.h"
#include "ztportal/portal/RequestText.h"
#include "ztportal/portal/ZtPortalConstants.h"
#include "ztportal/portal/ZtUtils.h"

namespace zt {

namespace {

constexpr std::chrono::milliseconds kTimeout{2000};

constexpr std::array<HttpHeader, 2> kHeaders{
    {{"Content-Type", "application/xml"}, {"User-Agent", "Kelvane portal service (osx)"}}};

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
  return content ? ZtXMLDocument::parseFileContent(*content) : nullptr;
}

/// The name of the response element and the word "true" may be anywhere, because servers word the
/// rest of the response differently.
bool isAccepted(const ZtString& response) {
  return containsAnyCase(response.view(), "postpooldatasresponse") &&
         containsAnyCase(response.view(), "true");
}

}  // namespace

void ReportingServer::connect(bool tryLocalCopy) {
  if (readConfiguration(tryLocalCopy)) _online = !readVersion().empty();
}

bool ReportingServer::readConfiguration(bool tryLocalCopy) try {
  std::shared_ptr<ZtXMLDocument> document = tryLocalCopy ? localConfiguration() : nullptr;
  if (document == nullptr) {
    const ZtString response = exchange(_configurationUrl, nullptr);
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
  const ZtString response = exchange(url(), versionRequest());
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

bool ReportingServer::send(const ZtString& request) {
  _status = 0;
  return isAccepted(exchange(url(), request, &_status));
}

ZtString ReportingServer::exchange(const ZtString& url, const ZtString& body, int* status) try {
  HttpRequest request;
  request.url = url.view();
  request.method = body.isNull() ? "GET" : "POST";
  request.headers = kHeaders;
  if (!body.isNull()) request.body = body.view();
  request.timeout = kTimeout;

  const HttpResponse response = Platform::current().http().exchange(request);
  if (status != nullptr) *status = response.status;
  if (response.status < 200 || response.status > 299) return "";
  return isUtf8(response.body) ? ZtString(response.body) : nullptr;
} catch (const ZtException&) {
  return "";
} catch (const std::bad_alloc&) {
  return nullptr;
}

ZtString ReportingServer::url() const { return testModeIsOn() ? _testUrl : _reportUrl; }

}  // namespace zt
