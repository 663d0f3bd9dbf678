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
  std::string error;  ///< for status 0 the reason, one sentence for people
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
///     if (const std::string wrong = ZtHost::setTransportOptions(options); !wrong.empty())
///     warn(wrong);
///
/// Those of `ZtHost` are for all documents that are created later; those of a document are for that
/// document alone. Options with a wrong value are not taken over.
struct ZT_EXPORT ZtTransportOptions {
  /// Certificate authorities (PEM) instead of the system's: a file, and a folder with hashed names.
  std::string authorityFile;
  std::string authorityFolder;
  /// The client's own certificate and its private key (PEM files), and the password of the key.
  std::string clientCertificate;
  std::string clientKey;
  std::string clientKeyPassword;
  ZtTlsVersion minimumTlsVersion = ZtTlsVersion::SystemDefault;

  /// URL of the proxy, or empty for none; without a value that of the environment.
  std::optional<std::string> proxy;
  /// Hosts that are reached without it, separated by commas; without a value `no_proxy`.
  std::optional<std::string> noProxy;

  /// For the whole exchange, name look-up and redirects included. Zero: no limit, which asks for an
  /// `idleTimeout`.
  std::chrono::milliseconds timeout{2000};
  /// Until the connection is made, TLS included. Zero: only `timeout` counts.
  std::chrono::milliseconds connectTimeout{0};
  /// How long a connection may transfer nothing; rounded up to seconds. Zero: only `timeout`
  /// counts.
  std::chrono::milliseconds idleTimeout{0};

  /// Added to every request, such as {"Authorization", "Bearer …"}. A redirect to another origin
  /// does not get them.
  std::vector<std::pair<std::string, std::string>> headers;
  /// Sends reports as "Content-Encoding: gzip" (RFC 1952). The server must be known to accept it.
  bool compressRequests = false;

  /// The host's own transport in place of libcurl. It runs on the thread that sends, follows
  /// redirects itself, and keeps the time limits itself; an exception counts as a failure.
  std::function<ZtTransportResponse(const ZtTransportRequest& request)> transport;

  /// Why these options cannot be used, one sentence for people that names the member; empty if they
  /// can. Files are looked at.
  std::string problem() const;
};
