// SPDX-License-Identifier: Apache-2.0
#include <map>
#include <vector>

#include "ztportal/c/Call.h"
#include "ztportal/system/ZtHost.h"

struct zt_replacement {
  std::string text;
};

struct zt_response {
  ZtTransportResponse received;
};

namespace zt::c {

namespace {

/// What the host's function `decide` returns.
template <class Decide>
ZtDecision decisionOf(Decide decide) {
  zt_replacement replacement;
  switch (decide(&replacement)) {
    case ZT_KEEP:
      return ZtDecision::keep();
    case ZT_REPLACE:
      return ZtDecision::replace(std::move(replacement.text));
    default:  // an unknown decision must not give anything away
      return ZtDecision::drop();
  }
}

/// A text with a length, which may be null if it is empty.
std::string textOf(const char* text, std::size_t length) {
  if (length != 0) required(text, "text");
  return {text == nullptr ? "" : text, length};
}

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
  const zt_request passed{.size = sizeof(zt_request),
                          .method = method.c_str(),
                          .url = url.c_str(),
                          .headers = headers.data(),
                          .header_count = headers.size(),
                          .body = body.c_str(),
                          .body_length = body.size()};
  zt_response response;
  transport(user, &passed, &response);
  return std::move(response.received);
}

/// Here zero means no limit.
void readLimit(std::chrono::milliseconds& member, std::int64_t given, std::string_view name) {
  if (given != 0) member = durationOf(given == ZT_NO_LIMIT ? 0 : given, name);
}

}  // namespace

std::optional<ZtTransportOptions> transportOptionsOf(const zt_transport_options* given) {
  if (given == nullptr) return std::nullopt;
  const zt_transport_options known = readStructure(given, "transport options");
  ZtTransportOptions options;
  const auto read = [](auto& member, const char* text) {
    if (text != nullptr) member = text;
  };
  read(options.authorityFile, known.authority_file);
  read(options.authorityFolder, known.authority_folder);
  read(options.clientCertificate, known.client_certificate);
  read(options.clientKey, known.client_key);
  read(options.clientKeyPassword, known.client_key_password);
  if (known.minimum_tls_version < ZT_TLS_SYSTEM_DEFAULT || known.minimum_tls_version > ZT_TLS_1_3) {
    fail(ZT_BAD_ARGUMENT, "minimum_tls_version: no such version");
  }
  options.minimumTlsVersion = static_cast<ZtTlsVersion>(known.minimum_tls_version);
  read(options.proxy, known.proxy);
  read(options.noProxy, known.no_proxy);
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
    options.transport = [known](const ZtTransportRequest& request) {
      return exchangeBy(known.transport, known.transport_user, request);
    };
  }
  if (const std::string problem = options.problem(); !problem.empty()) {
    fail(ZT_BAD_ARGUMENT, problem);
  }
  return options;
}

}  // namespace zt::c

using zt::c::call;
using zt::c::decisionOf;
using zt::c::fail;
using zt::c::required;
using zt::c::requiredText;
using zt::c::textOf;

zt_status zt_host_set_info(const zt_pair* pairs, size_t count) {
  return call([&] {
    if (count != 0) required(pairs, "pairs");
    std::map<std::string, ZtString> info;
    for (std::size_t i = 0; i < count; ++i) {
      info.insert_or_assign(requiredText(pairs[i].name, "name"), pairs[i].value);
    }
    ZtHost::setBundleInfo(std::move(info));
  });
}

zt_status zt_host_close_connections() { return call(ZtHost::closeConnections); }

zt_status zt_host_set_value_escaping(bool is_on) { return call(ZtHost::setValueEscaping, is_on); }

zt_status zt_host_set_broadcast_enabled(bool is_enabled) {
  return call(ZtHost::setBroadcastEnabled, is_enabled);
}

zt_status zt_host_set_consent(zt_consent consent) {
  return call([consent] {
    if (consent < ZT_CONSENT_UNSET || consent > ZT_CONSENT_REVOKED) {
      fail(ZT_BAD_ARGUMENT, "no such consent");
    }
    if (!ZtHost::setConsent(static_cast<ZtConsent>(consent))) {
      fail(ZT_SYSTEM, "the consent cannot be kept");
    }
  });
}

zt_status zt_host_consent(zt_consent* consent) {
  return call([&] { required(consent, "consent") = static_cast<zt_consent>(ZtHost::consent()); });
}

zt_status zt_host_set_log_handler(zt_log_handler handler, void* user) {
  return call([&] {
    if (handler == nullptr) return ZtHost::setLogHandler(nullptr);
    ZtHost::setLogHandler(
        [handler, user](ZtLogLevel level, std::string_view module, std::string_view message) {
          handler(user, static_cast<zt_log_level>(level), std::string(module).c_str(),
                  std::string(message).c_str());
        });
  });
}

zt_status zt_host_set_value_filter(zt_value_filter filter, void* user) {
  return call([&] {
    if (filter == nullptr) return ZtHost::setValueFilter(nullptr);
    ZtHost::setValueFilter(
        [filter, user](std::string_view poolType, std::string_view name, std::string_view value) {
          return decisionOf([&](zt_replacement* replacement) {
            return filter(user, std::string(poolType).c_str(), std::string(name).c_str(),
                          std::string(value).c_str(), value.size(), replacement);
          });
        });
  });
}

zt_status zt_host_set_request_hook(zt_request_hook hook, void* user) {
  return call([&] {
    if (hook == nullptr) return ZtHost::setRequestHook(nullptr);
    ZtHost::setRequestHook([hook, user](std::string_view request) {
      return decisionOf([&](zt_replacement* replacement) {
        return hook(user, std::string(request).c_str(), request.size(), replacement);
      });
    });
  });
}

zt_status zt_replacement_set_n(zt_replacement* replacement, const char* text, size_t length) {
  return call([&] { required(replacement, "replacement").text = textOf(text, length); });
}

zt_status zt_host_set_transport(const zt_transport_options* options) {
  return call([&] {
    ZtHost::setTransportOptions(zt::c::transportOptionsOf(options).value_or(ZtTransportOptions()));
  });
}

zt_status zt_response_set(zt_response* response, int32_t http_status, const char* body,
                          size_t length, int64_t retry_after_s) {
  return call([&] {
    const auto retryAfter = zt::c::durationOf<std::chrono::seconds>(retry_after_s, "retry_after_s");
    required(response, "response").received = {http_status, textOf(body, length), {}, retryAfter};
  });
}

zt_status zt_response_fail(zt_response* response, const char* error) {
  return call([&] {
    required(response, "response").received = {0, {}, requiredText(error, "error"), {}};
  });
}
