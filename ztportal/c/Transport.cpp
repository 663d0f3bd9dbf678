// SPDX-License-Identifier: Apache-2.0
#include <vector>

#include "ztportal/c/Call.h"
#include "ztportal/system/ZtHost.h"

struct zt_response {
  ZtTransportResponse received;
};

namespace zt::c {

namespace {

static_assert(static_cast<zt_tls_version>(ZtTlsVersion::Tls12) == ZT_TLS_1_2 &&
              static_cast<zt_tls_version>(ZtTlsVersion::Tls13) == ZT_TLS_1_3);

/// Asks the host's own transport.
ZtTransportResponse exchangeBy(zt_transport transport, void* user,
                               const ZtTransportRequest& request) {
  const std::string method(request.method);
  const std::string url(request.url);
  const std::string body(request.body);
  std::vector<zt_pair> headers;
  for (const auto& [name, value] : request.headers) {
    headers.push_back({name.c_str(), value.c_str()});
  }
  zt_request passed{};
  passed.size = sizeof(passed);
  passed.method = method.c_str();
  passed.url = url.c_str();
  passed.headers = headers.data();
  passed.header_count = headers.size();
  passed.body = body.c_str();
  passed.body_length = body.size();
  zt_response response;
  transport(user, &passed, &response);
  return std::move(response.received);
}

void readInto(std::string& member, const char* given) {
  if (given != nullptr) member = given;
}

/// Here zero means no limit.
void readLimit(std::chrono::milliseconds& member, std::int64_t given, std::string_view name) {
  if (given == ZT_NO_LIMIT) {
    member = std::chrono::milliseconds(0);
  } else {
    readDuration(member, given, name);
  }
}

}  // namespace

ZtTransportOptions transportOptionsOf(const zt_transport_options& given) {
  const zt_transport_options known = readStructure(&given, "transport options");
  ZtTransportOptions options;
  readInto(options.authorityFile, known.authority_file);
  readInto(options.authorityFolder, known.authority_folder);
  readInto(options.clientCertificate, known.client_certificate);
  readInto(options.clientKey, known.client_key);
  readInto(options.clientKeyPassword, known.client_key_password);
  if (known.minimum_tls_version < ZT_TLS_SYSTEM_DEFAULT || known.minimum_tls_version > ZT_TLS_1_3) {
    fail(ZT_BAD_ARGUMENT, "minimum_tls_version: no such version");
  }
  options.minimumTlsVersion = static_cast<ZtTlsVersion>(known.minimum_tls_version);
  if (known.proxy != nullptr) options.proxy = known.proxy;
  if (known.no_proxy != nullptr) options.noProxy = known.no_proxy;
  readLimit(options.timeout, known.timeout_ms, "timeout_ms");
  readLimit(options.connectTimeout, known.connect_timeout_ms, "connect_timeout_ms");
  readLimit(options.idleTimeout, known.idle_timeout_ms, "idle_timeout_ms");
  if (known.header_count != 0) required(known.headers, "headers");
  for (std::size_t i = 0; i < known.header_count; ++i) {
    options.headers.emplace_back(requiredText(known.headers[i].name, "headers: a name"),
                                 requiredText(known.headers[i].value, "headers: a value"));
  }
  options.compressRequests = known.compress_requests;
  if (known.transport != nullptr) {
    options.transport = [transport = known.transport,
                         user = known.transport_user](const ZtTransportRequest& request) {
      return exchangeBy(transport, user, request);
    };
  }
  if (const std::string problem = options.problem(); !problem.empty()) {
    fail(ZT_BAD_ARGUMENT, problem);
  }
  return options;
}

std::optional<ZtTransportOptions> transportOptionsOf(const zt_transport_options* given) {
  if (given == nullptr) return std::nullopt;
  return transportOptionsOf(*given);
}

}  // namespace zt::c

zt_status zt_host_set_transport(const zt_transport_options* options) {
  return zt::c::call([&] {
    ZtHost::setTransportOptions(zt::c::transportOptionsOf(options).value_or(ZtTransportOptions()));
  });
}

zt_status zt_response_set(zt_response* response, int32_t http_status, const char* body,
                          size_t length) {
  return zt::c::call([&] {
    ZtTransportResponse& received = zt::c::required(response, "response").received;
    std::string text(zt::c::textOf(body, length).view());
    received.status = http_status;
    received.body = std::move(text);
  });
}

zt_status zt_response_set_retry_after(zt_response* response, int64_t seconds) {
  return zt::c::call([&] {
    ZtTransportResponse& received = zt::c::required(response, "response").received;
    received.retryAfter = zt::c::secondsOf(seconds, "seconds");
  });
}

zt_status zt_response_fail(zt_response* response, const char* error) {
  return zt::c::call([&] {
    ZtTransportResponse& received = zt::c::required(response, "response").received;
    received.error = zt::c::requiredText(error, "error");
    received.status = 0;
  });
}
