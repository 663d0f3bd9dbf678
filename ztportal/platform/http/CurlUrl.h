// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "ztportal/platform/http/CurlLibrary.h"
#include "ztportal/platform/http/CurlNames.h"

// URLs, which libcurl parses.

namespace zt {

using CurlUrl = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

/// A part of `url`; empty if it has none.
std::string partOf(const CurlLibrary& curl, const CurlUrl& url, CURLUPart part, unsigned flags = 0);

/// `text` as a URL; null unless its scheme is http or https.
CurlUrl httpUrl(const CurlLibrary& curl, std::string_view text, unsigned flags = 0);

/// Scheme, host and port: what a user name and its password are meant for (RFC 6454).
std::array<std::string, 3> originOf(const CurlLibrary& curl, const CurlUrl& url);

struct CurlCredentials {
  std::string user;
  std::string password;

  bool isEmpty() const { return user.empty() && password.empty(); }
  friend bool operator==(const CurlCredentials&, const CurlCredentials&) = default;
};

/// Takes user name and password out of `url`. Nothing if libcurl does not decode them, as it does
/// not decode control characters.
std::optional<CurlCredentials> takeCredentials(const CurlLibrary& curl, const CurlUrl& url);

/// Whether a request for `url` needs no name look-up, whichever proxy it goes through.
bool hasOnlyAddresses(const CurlLibrary& curl, const CurlUrl& url, const CurlRoute& route);

}  // namespace zt
