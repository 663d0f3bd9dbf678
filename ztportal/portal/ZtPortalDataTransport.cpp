#include <array>
#include <chrono>
#include <optional>
#include <string>

#include "ztportal/base/Text.h"
#include "ztportal/base/Utf8.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"
#include "ztportal/portal/SoapEnvelope.h"
#include "ztportal/portal/ZtPortalConstants.h"
#include "ztportal/portal/ZtPortalData.h"
#include "ztportal/portal/ZtUtils.h"
#include "ztportal/system/ZtHost.h"

// Configuration and transport.

namespace {

constexpr std::chrono::milliseconds kTimeout{2000};

constexpr std::array<zt::HttpHeader, 2> kHeaders{
    {{"Content-Type", "application/xml"}, {"User-Agent", "Kelvane portal service (osx)"}}};

std::string joinedPath(std::string_view folder, std::string_view name) {
  std::string path;
  zt::appendText(path, folder, "/", name);
  return path;
}

ZtString trimmedText(const ZtXMLNode& node) {
  const ZtString text = node.text();
  return zt::trimmed(text.view());
}

std::string versionRequest() {
  std::string request;
  zt::appendText(request, zt::kEnvelopeStart, zt::kBodyStart,  //
                 "    <getVersionInfo", zt::kReportingNamespace, zt::kVersionEncoding, "/>",
                 zt::kBodyEnd, zt::kEnvelopeEnd);
  return request;
}

std::shared_ptr<ZtXMLDocument> localConfiguration(const ZtString& folder) {
  std::string path;
  zt::appendText(path, folder.printed(), APP_CONFIGURATIONFILE.view());
  const std::optional<std::string> content = zt::Platform::current().files().read(path);
  return content ? ZtXMLDocument::parseFileContent(*content) : nullptr;
}

}  // namespace

ZtString ZtPortalData::_localSupportFolder() {
  const ZtString name = ZtHost::bundleInfo("CFBundleName");
  if (name.isNull()) return nullptr;
  return _supportFolder(static_cast<std::uint16_t>(zt::kUserDomain),
                        joinedPath(COMPANY_NAME.view(), name.view()));
}

ZtString ZtPortalData::_supportFolder(std::uint32_t domain, const ZtString& relativePath) {
  zt::Platform& platform = zt::Platform::current();
  const auto domainCode = static_cast<std::int16_t>(domain & 0xFFFFU);
  const std::optional<std::string> support = platform.supportFolder().path(domainCode);
  if (!support || !platform.files().createFolders(*support)) return nullptr;

  const std::string path = joinedPath(*support, relativePath.view());
  if (platform.files().exists(path) || platform.files().createFolders(path)) return path;
  return nullptr;
}

ZtString ZtPortalData::_httpRequest(const ZtString& url, const ZtString& command) try {
  zt::HttpRequest request;
  request.url = url.view();
  request.method = command.isNull() ? "GET" : "POST";
  request.headers = kHeaders;
  if (!command.isNull()) request.body = command.view();
  request.timeout = kTimeout;

  const zt::HttpResponse answer = zt::Platform::current().http().exchange(request);
  if (answer.status < 200 || answer.status > 299) return "";
  return zt::isUtf8(answer.body) ? ZtString(answer.body) : nullptr;
} catch (const ZtException&) {
  return "";
}

bool ZtPortalData::_getConfiguration(const ZtString& /*url*/, bool cacheConfiguration) try {
  // Nothing ever sets the folder of the local copy, so it is looked for under the name
  // "(null)configuration.xml" in the working directory, where installers put it.
  std::shared_ptr<ZtXMLDocument> document =
      cacheConfiguration ? localConfiguration(_appPath) : nullptr;
  if (document == nullptr) {
    const ZtString answer = _httpRequest(_configurationUrl, nullptr);
    if (!answer.isNull()) document = ZtXMLDocument::parse(answer.view());
  }
  if (document == nullptr) return false;
  const std::optional<ZtXMLNode> root = document->rootElement();
  if (!root) return false;

  bool read = false;
  if (const auto url = ZtUtils::childNamed(*root, "defSOAP")) {
    _reportUrl = trimmedText(*url);
    _gotConfiguration = read = !_reportUrl.empty();
  }
  if (const auto url = ZtUtils::childNamed(*root, "defTestSOAP")) {
    _reportTestUrl = trimmedText(*url);
  }
  return read;
} catch (const ZtException&) {
  return false;
}

void ZtPortalData::_initHttp(const ZtString& url, bool cacheConfiguration) try {
  if (_getConfiguration(url, cacheConfiguration)) _online = !_getServerVersion().empty();
} catch (const ZtException&) {
  // Without an answer the document stays as it was: offline, or not configured.
}

ZtString ZtPortalData::_getServerVersion() try {
  const ZtString answer = _httpRequest(_getReportUrl(), versionRequest());
  if (answer.isNull()) return nullptr;
  const auto document = ZtXMLDocument::parse(answer.view());
  if (document == nullptr) return nullptr;
  const auto version = ZtUtils::childNamed(document->documentNode(), "versioninfo");
  if (!version) return nullptr;
  _serverVersion = trimmedText(*version);
  return _serverVersion;
} catch (const ZtException&) {
  return "";
}

ZtString ZtPortalData::_getReportUrl() const {
  return _mutexEnabled() ? _reportTestUrl : _reportUrl;
}
