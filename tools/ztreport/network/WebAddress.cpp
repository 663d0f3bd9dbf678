// SPDX-License-Identifier: Apache-2.0
#include "tools/ztreport/network/WebAddress.h"

#include <curl/curl.h>

#include <memory>

#include "ztportal/base/Free.h"

namespace zt::tools {

namespace {

using Url = std::unique_ptr<CURLU, Free<curl_url_cleanup>>;

std::string part(const Url& url, CURLUPart which, unsigned flags = 0) {
  char* text = nullptr;
  if (curl_url_get(url.get(), which, &text, flags) != CURLUE_OK) return "";
  return std::unique_ptr<char, Free<curl_free>>(text).get();
}

std::string withoutBrackets(const std::string& host) {
  return host.starts_with('[') ? host.substr(1, host.size() - 2) : host;
}

std::optional<WebAddress> parse(const std::string& text, unsigned flags, int plainPort) {
  const Url url(curl_url());
  if (curl_url_set(url.get(), CURLUPART_URL, text.c_str(), flags) != CURLUE_OK) return std::nullopt;
  WebAddress address;
  address.scheme = part(url, CURLUPART_SCHEME);
  address.host = withoutBrackets(part(url, CURLUPART_HOST));
  const std::string port = part(url, CURLUPART_PORT);
  const int usualPort = address.scheme == "https" ? 443 : plainPort;
  address.port = port.empty() ? usualPort : std::stoi(port);
  address.user = part(url, CURLUPART_USER, CURLU_URLDECODE);
  address.password = part(url, CURLUPART_PASSWORD, CURLU_URLDECODE);
  // The password is a secret, and the user name may be one.
  curl_url_set(url.get(), CURLUPART_USER, nullptr, 0);
  curl_url_set(url.get(), CURLUPART_PASSWORD, nullptr, 0);
  address.shown = part(url, CURLUPART_URL);
  return address;
}

}  // namespace

std::optional<WebAddress> webAddress(const std::string& url) {
  constexpr int kHttpPort = 80;
  auto address = parse(url, 0, kHttpPort);
  if (!address || (address->scheme != "http" && address->scheme != "https")) return std::nullopt;
  return address;
}

std::optional<WebAddress> proxyAddress(const std::string& url) {
  const bool hasScheme = url.find("://") != std::string::npos;
  constexpr int kProxyPort = 1080;
  return parse(hasScheme ? url : "http://" + url, CURLU_NON_SUPPORT_SCHEME, kProxyPort);
}

std::string shownUrl(const std::string& url) {
  if (const auto address = webAddress(url)) return address->shown;
  // In a text that is no URL, the password may be anything up to the last "@".
  const std::size_t end = url.rfind('@');
  if (end == std::string::npos) return url;
  const std::size_t scheme = url.find("://");
  const std::size_t begin = scheme < end ? scheme + 3 : 0;
  return url.substr(0, begin) + url.substr(end + 1);
}

}  // namespace zt::tools
