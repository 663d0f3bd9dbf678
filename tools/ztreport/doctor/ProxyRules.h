#pragma once

#include <functional>
#include <string>

namespace zt::tools {

/// The value of a variable of the environment, null when it is not set.
using Variables = std::function<const char*(const char*)>;

/// Which proxy a request goes through, and which variable of the environment decided that.
struct ProxyChoice {
  std::string url;       ///< empty: none
  std::string variable;  ///< empty when none is set
};

/// The rules of libcurl, by which the library sends (CURLOPT_PROXY(3), CURLOPT_NOPROXY(3)): the
/// variable of the scheme goes before `all_proxy`, small letters before capitals, but for http
/// small letters alone; an empty variable counts as unset; `no_proxy` goes before all of them.
/// `host` is that of the request, an IPv6 address without its brackets.
ProxyChoice proxyFor(const std::string& scheme, const std::string& host,
                     const Variables& variables);

/// Whether `list`, the value of `no_proxy`, names `host`: "*" names all, a domain names itself and
/// what is below it, an address or a network ("10.0.0.0/8") the addresses in it.
bool isNamedIn(const std::string& list, const std::string& host);

}  // namespace zt::tools
