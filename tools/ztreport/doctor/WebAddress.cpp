#include "tools/ztreport/doctor/WebAddress.h"

#include <curl/curl.h>

#include <memory>

namespace zt::tools {

namespace {

struct FreeUrl {
  void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
using Url = std::unique_ptr<CURLU, FreeUrl>;

std::string part(const Url& url, CURLUPart which) {
  char* text = nullptr;
  if (curl_url_get(url.get(), which, &text, 0) != CURLUE_OK) return "";
  std::string result(text);
  curl_free(text);
  return result;
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
  // What follows "user:" is a secret; who the user is may be one, too.
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

}  // namespace zt::tools
