// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

namespace zt::tools {

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
