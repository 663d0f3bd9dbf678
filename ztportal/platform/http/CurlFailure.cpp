// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/http/CurlFailure.h"

#include <array>
#include <utility>

#include "ztportal/base/Text.h"
#include "ztportal/base/Utf8.h"

namespace zt {

namespace {

constexpr std::string_view kEndedEarly = "The connection ended before the response was complete";

constexpr std::array<std::pair<ZtDeliveryError, std::string_view>, 10> kSentences{{
    {ZtDeliveryError::Library, "libcurl cannot be used"},
    {ZtDeliveryError::Address, "The URL is not one of http or https"},
    {ZtDeliveryError::NameLookup, "The server or the proxy has no known address"},
    {ZtDeliveryError::Proxy, "The proxy refused the request"},
    {ZtDeliveryError::Connection, "No connection could be made"},
    {ZtDeliveryError::Tls, "No secure connection could be made"},
    {ZtDeliveryError::Timeout, "No complete response arrived in time"},
    {ZtDeliveryError::Redirect, "The redirect is not followed"},
    {ZtDeliveryError::Host, "The request cannot be sent"},
    {ZtDeliveryError::Memory, "There is not enough memory"},
}};

constexpr std::array<std::pair<CURLcode, ZtDeliveryError>, 15> kErrors{{
    {CURLE_UNSUPPORTED_PROTOCOL, ZtDeliveryError::Address},
    {CURLE_URL_MALFORMAT, ZtDeliveryError::Address},
    {CURLE_COULDNT_RESOLVE_HOST, ZtDeliveryError::NameLookup},
    {CURLE_COULDNT_RESOLVE_PROXY, ZtDeliveryError::NameLookup},
    {CURLE_PROXY, ZtDeliveryError::Proxy},
    {CURLE_COULDNT_CONNECT, ZtDeliveryError::Connection},
    {CURLE_OPERATION_TIMEDOUT, ZtDeliveryError::Timeout},
    {CURLE_SSL_CONNECT_ERROR, ZtDeliveryError::Tls},
    {CURLE_SSL_CERTPROBLEM, ZtDeliveryError::Tls},
    {CURLE_SSL_CIPHER, ZtDeliveryError::Tls},
    {CURLE_PEER_FAILED_VERIFICATION, ZtDeliveryError::Tls},
    {CURLE_SSL_CACERT_BADFILE, ZtDeliveryError::Tls},
    {CURLE_SSL_CLIENTCERT, ZtDeliveryError::Tls},
    {CURLE_UNKNOWN_OPTION, ZtDeliveryError::Host},
    {CURLE_OUT_OF_MEMORY, ZtDeliveryError::Memory},
}};

/// The value of `key` in `table`, or else `usual`.
template <class Table, class Key, class Value>
Value valueIn(const Table& table, Key key, Value usual) {
  for (const auto& [known, value] : table) {
    if (known == key) return value;
  }
  return usual;
}

/// libcurl quotes a proxy's URL as it was given, and names in certificates as the server sent them.
bool canBeShown(std::string_view detail) {
  return detail.find('@') == std::string_view::npos && isUtf8(detail) && !hasControl(detail);
}

}  // namespace

ZtDeliveryError deliveryErrorOf(CURLcode code) {
  return valueIn(kErrors, code, ZtDeliveryError::Transfer);
}

HttpResponse failure(ZtDeliveryError error, std::string_view detail) {
  HttpResponse response;
  response.error = error;
  response.message = valueIn(kSentences, error, kEndedEarly);
  if (!detail.empty() && canBeShown(detail)) appendText(response.message, " (", detail, ")");
  response.message += '.';
  return response;
}

}  // namespace zt
