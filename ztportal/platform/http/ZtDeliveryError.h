// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

/// Where a delivery failed.
enum class ZtDeliveryError : std::uint8_t {
  NoError,
  Library,     ///< libcurl cannot be loaded
  Address,     ///< the URL is not one of http or https
  NameLookup,  ///< the server or the proxy has no known address
  Proxy,       ///< the proxy refused
  Connection,  ///< nobody listens there, or the network is down
  Tls,         ///< no secure connection, such as for a certificate that is not trusted
  Timeout,     ///< a time limit came first
  Transfer,    ///< the connection ended before the response was complete
  Redirect,    ///< too many redirects, or one that is not followed
  HttpStatus,  ///< a status outside 200 to 299
  Content,     ///< the content of the response
  File,        ///< the saved report
  Host,        ///< the host's own transport
  Memory       ///< not enough memory
};
