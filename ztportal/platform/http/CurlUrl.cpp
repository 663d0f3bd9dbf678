// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/http/CurlUrl.h"

#include <arpa/inet.h>

#include <cstdlib>
#include <utility>

#include "ztportal/base/Text.h"

namespace zt {

std::string partOf(const CurlLibrary& curl, const CurlUrl& url, CURLUPart part, unsigned flags) {
  char* text = nullptr;
  if (curl.urlGet(url.get(), part, &text, flags) != CURLUE_OK) return {};
  const std::unique_ptr<char, decltype(&curl_free)> owner(text, curl.free);
  return text;
}

CurlUrl httpUrl(const CurlLibrary& curl, std::string_view text, unsigned flags) {
  CurlUrl none(nullptr, curl.urlCleanup);
  if (text.find('\0') != std::string_view::npos) return none;
  CurlUrl url(curl.url(), curl.urlCleanup);
  // Without CURLU_GUESS_SCHEME a missing scheme is an error.
  if (!url ||
      curl.urlSet(url.get(), CURLUPART_URL, std::string(text).c_str(), flags) != CURLUE_OK) {
    return none;
  }
  const std::string scheme = partOf(curl, url, CURLUPART_SCHEME);
  return scheme == "http" || scheme == "https" ? std::move(url) : std::move(none);
}

std::array<std::string, 3> originOf(const CurlLibrary& curl, const CurlUrl& url) {
  return {partOf(curl, url, CURLUPART_SCHEME), partOf(curl, url, CURLUPART_HOST),
          partOf(curl, url, CURLUPART_PORT, CURLU_DEFAULT_PORT)};
}

std::optional<CurlCredentials> takeCredentials(const CurlLibrary& curl, const CurlUrl& url) {
  CurlCredentials taken{partOf(curl, url, CURLUPART_USER, CURLU_URLDECODE),
                        partOf(curl, url, CURLUPART_PASSWORD, CURLU_URLDECODE)};
  if (taken.user.empty() != partOf(curl, url, CURLUPART_USER).empty() ||
      taken.password.empty() != partOf(curl, url, CURLUPART_PASSWORD).empty()) {
    return std::nullopt;
  }
  curl.urlSet(url.get(), CURLUPART_USER, nullptr, 0);
  curl.urlSet(url.get(), CURLUPART_PASSWORD, nullptr, 0);
  return taken;
}

namespace {

/// Whether libcurl knows the address of `host` without asking anybody.
bool isAddress(const std::string& host) {
  in_addr address{};
  return host.starts_with('[') || equalsAnyCase(host, "localhost") ||
         ::inet_pton(AF_INET, host.c_str(), &address) == 1;
}

/// Whether `proxy`, the URL of a proxy or nothing, needs no name look-up.
bool isProxyAddress(const CurlLibrary& curl, const char* proxy) {
  if (proxy == nullptr || *proxy == '\0') return true;
  const CurlUrl url(curl.url(), curl.urlCleanup);
  constexpr unsigned kFlags = CURLU_NON_SUPPORT_SCHEME | CURLU_GUESS_SCHEME;
  return url && curl.urlSet(url.get(), CURLUPART_URL, proxy, kFlags) == CURLUE_OK &&
         isAddress(partOf(curl, url, CURLUPART_HOST));
}

}  // namespace

bool hasOnlyAddresses(const CurlLibrary& curl, const CurlUrl& url, const CurlRoute& route) {
  if (!isAddress(partOf(curl, url, CURLUPART_HOST))) return false;
  if (route.proxy != nullptr) return isProxyAddress(curl, route.proxy);
  for (const char* name : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}) {
    if (!isProxyAddress(curl, std::getenv(name))) return false;
  }
  return true;
}

}  // namespace zt
