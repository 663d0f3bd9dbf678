#pragma once

#include <functional>
#include <optional>
#include <string>

// How the library reaches a server, with reasons for failures that the library does not give.

namespace zt::tools {

/// Result of a request.
struct Response {
  std::string failure;  ///< why there is no response; empty when there is one
  long status = 0;
  std::string body;
};

/// Sends a GET, or a POST when there is a `body`, with the library's time limit, redirects and
/// headers.
Response request(const std::string& url, const std::optional<std::string>& body = std::nullopt);

/// Why `host` has no address; empty when it has, with the addresses in `addresses`. Waits no longer
/// than the library waits for a whole response.
std::string lookUp(const std::string& host, std::string& addresses);

/// Why no connection to `host` and `port` is possible, or empty. Sends nothing.
std::string connectTo(const std::string& host, int port);

/// The parts of a URL that matter for the connection.
struct WebAddress {
  std::string scheme;  ///< lower case
  std::string host;    ///< an IPv6 address has no brackets
  int port;
  std::string shown;  ///< the URL without user and password
};

/// Parses a complete http or https URL; empty for anything else.
std::optional<WebAddress> webAddress(const std::string& url);

/// Parses the URL of a proxy as libcurl does: the default scheme is http.
std::optional<WebAddress> proxyAddress(const std::string& url);

/// Reads an environment variable; null when it is not set.
using Variables = std::function<const char*(const char*)>;

/// The proxy of a request, and the environment variable that selects it.
struct ProxyChoice {
  std::string url;       ///< empty: no proxy
  std::string variable;  ///< empty when none is set
};

/// libcurl's rules (CURLOPT_PROXY(3), CURLOPT_NOPROXY(3)): `no_proxy` first, then the variable of
/// the scheme, then `all_proxy`; lower case before upper case, but HTTP_PROXY is ignored; an empty
/// variable counts as unset. An IPv6 `host` has no brackets.
ProxyChoice proxyFor(const std::string& scheme, const std::string& host,
                     const Variables& variables);

/// Whether `list`, the value of `no_proxy`, contains `host`: "*" matches all hosts, a domain itself
/// and its subdomains, an address or a network ("10.0.0.0/8") its addresses.
bool isNamedIn(const std::string& list, const std::string& host);

}  // namespace zt::tools
