// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ztportal/base/ZtExport.h"

/// A request that a host's own transport sends. The views end with the call.
struct ZtTransportRequest {
  std::string_view method;  ///< "GET" or "POST"
  std::string_view url;     ///< absolute, http or https
  std::vector<std::pair<std::string, std::string>> headers;
  std::string_view body;  ///< empty for a GET
};

/// What it received.
struct ZtTransportResponse {
  std::int32_t status = 0;  ///< HTTP status; 0 if no complete response arrived
  std::string body;
  std::string error;  ///< for status 0 the reason, one sentence for people, without passwords
  std::chrono::seconds retryAfter{0};  ///< from the header Retry-After; zero if there is none
};

/// The oldest version of TLS that may be used.
enum class ZtTlsVersion : std::uint8_t {
  SystemDefault,
  Tls12,  ///< RFC 5246
  Tls13   ///< RFC 8446
};

/// How requests travel. Every member has the default that the library uses without options.
///
///     ZtTransportOptions options;
///     options.proxy = "http://proxy.example.com:3128";
///     options.authorityFile = "/opt/setup/ca.pem";
///     options.timeout = std::chrono::minutes(5);
///     options.idleTimeout = std::chrono::seconds(10);
///     const std::string wrong = ZtHost::setTransportOptions(options);
///     if (!wrong.empty()) warn(wrong);
///
/// Those of `ZtHost` are for all documents that are created later, from their first request on;
/// `ZtPortalData::setTransportOptions` is for the later requests of that document alone. Options
/// with a wrong value are not taken over. A value; `transport` must be safe to call from each
/// thread that sends.
struct ZT_EXPORT ZtTransportOptions {
  /// Certificate authorities (PEM) instead of the system's: a file, and a folder with hashed names.
  std::string authorityFile;
  std::string authorityFolder;
  /// The client's own certificate and its private key (PEM files), and the password of the key.
  /// Without `clientKey` the key is in the file of the certificate. A redirect to another origin
  /// does not get the certificate.
  std::string clientCertificate;
  std::string clientKey;
  std::string clientKeyPassword;
  ZtTlsVersion minimumTlsVersion = ZtTlsVersion::SystemDefault;

  /// URL of the proxy (http, https, socks4, socks4a, socks5 or socks5h), or empty for none; without
  /// a value that of the environment.
  std::optional<std::string> proxy;
  /// Hosts that are reached without it, separated by commas; without a value `no_proxy`.
  std::optional<std::string> noProxy;

  /// For the whole exchange, name look-up and redirects included. Zero: no limit, which asks for an
  /// `idleTimeout`.
  std::chrono::milliseconds timeout{2000};
  /// Until the connection is made, name look-up and TLS included. Zero: `idleTimeout` counts.
  std::chrono::milliseconds connectTimeout{0};
  /// How long a connection may transfer nothing, such as while the server thinks; rounded up to
  /// seconds. Zero: only `timeout` counts.
  std::chrono::milliseconds idleTimeout{0};

  /// Added to every request, such as {"Authorization", "Bearer …"}. A redirect to another origin
  /// does not get them.
  std::vector<std::pair<std::string, std::string>> headers;
  /// Sends requests above 1 KiB with "Content-Encoding: gzip" (RFC 1952). The server must be known
  /// to accept it.
  bool compressRequests = false;

  /// The host's own transport in place of libcurl. It runs on the thread that sends, and decides
  /// itself on redirects, certificates, proxies and time limits; an exception counts as a failure.
  std::function<ZtTransportResponse(const ZtTransportRequest& request)> transport;

  /// Why these options cannot be used, one sentence for people that names the member; empty if they
  /// can. Files are looked at.
  std::string problem() const;
};
