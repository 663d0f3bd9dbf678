#include "ztportal/platform/http/CurlFailure.h"

#include <algorithm>

#include "ztportal/base/Text.h"
#include "ztportal/base/Utf8.h"

namespace zt {

namespace {

std::string_view kindOf(ZtDeliveryError error) {
  switch (error) {
    case ZtDeliveryError::Library:
      return "libcurl cannot be used";
    case ZtDeliveryError::Address:
      return "The URL is not one of http or https";
    case ZtDeliveryError::NameLookup:
      return "The server or the proxy has no known address";
    case ZtDeliveryError::Proxy:
      return "The proxy refused the request";
    case ZtDeliveryError::Connection:
      return "No connection could be made";
    case ZtDeliveryError::Tls:
      return "No secure connection could be made";
    case ZtDeliveryError::Timeout:
      return "No complete response arrived in time";
    case ZtDeliveryError::Redirect:
      return "The redirect is not followed";
    case ZtDeliveryError::Host:
      return "The request cannot be sent";
    case ZtDeliveryError::Memory:
      return "There is not enough memory";
    default:
      return "The connection ended before the response was complete";
  }
}

/// libcurl quotes a proxy's URL as it was given, and names in certificates as the server sent them.
bool canBeShown(std::string_view detail) {
  const auto isControl = [](char character) {
    return static_cast<unsigned char>(character) < ' ' || character == '\x7F';
  };
  return detail.find('@') == std::string_view::npos && isUtf8(detail) &&
         std::none_of(detail.begin(), detail.end(), isControl);
}

}  // namespace

ZtDeliveryError deliveryErrorOf(CURLcode code) {
  switch (code) {
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_URL_MALFORMAT:
      return ZtDeliveryError::Address;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return ZtDeliveryError::NameLookup;
    case CURLE_PROXY:
      return ZtDeliveryError::Proxy;
    case CURLE_COULDNT_CONNECT:
      return ZtDeliveryError::Connection;
    case CURLE_OPERATION_TIMEDOUT:
      return ZtDeliveryError::Timeout;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_USE_SSL_FAILED:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_CLIENTCERT:
      return ZtDeliveryError::Tls;
    case CURLE_UNKNOWN_OPTION:
      return ZtDeliveryError::Host;
    case CURLE_OUT_OF_MEMORY:
      return ZtDeliveryError::Memory;
    default:
      return ZtDeliveryError::Transfer;
  }
}

std::string sentenceOf(ZtDeliveryError error, std::string_view detail) {
  std::string sentence(kindOf(error));
  if (!detail.empty() && canBeShown(detail)) appendText(sentence, " (", detail, ")");
  return sentence += '.';
}

}  // namespace zt
