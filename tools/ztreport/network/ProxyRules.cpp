// SPDX-License-Identifier: Apache-2.0
#include "tools/ztreport/network/ProxyRules.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <strings.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <initializer_list>
#include <optional>
#include <string_view>

namespace zt::tools {

namespace {

using Address = std::array<unsigned char, sizeof(in6_addr)>;

std::optional<Address> addressOf(int family, const std::string& text) {
  Address address{};
  if (::inet_pton(family, text.c_str(), address.data()) != 1) return std::nullopt;
  return address;
}

bool haveSameStart(const Address& one, const Address& other, std::size_t bits) {
  for (std::size_t bit = 0; bit < bits; ++bit) {
    const unsigned mask = 0x80U >> (bit % 8);
    if (((one[bit / 8] ^ other[bit / 8]) & mask) != 0) return false;
  }
  return true;
}

/// `network` is an address, optionally with the number of its significant bits.
bool isInNetwork(int family, const Address& address, const std::string& network) {
  const std::size_t slash = network.find('/');
  const auto start = addressOf(family, network.substr(0, slash));
  if (!start) return false;
  const std::size_t all = family == AF_INET ? 32 : 128;
  std::size_t bits = 0;
  if (slash != std::string::npos) bits = std::strtoul(network.c_str() + slash + 1, nullptr, 10);
  if (bits > all) return false;
  return haveSameStart(address, *start, bits == 0 ? all : bits);
}

std::string_view withoutLastDot(std::string_view name) {
  if (name.ends_with('.')) name.remove_suffix(1);
  return name;
}

bool isInDomain(std::string_view host, std::string_view domain) {
  host = withoutLastDot(host);
  domain = withoutLastDot(domain);
  if (domain.starts_with('.')) domain.remove_prefix(1);
  if (domain.size() > host.size()) return false;
  const std::size_t before = host.size() - domain.size();
  return (before == 0 || host[before - 1] == '.') &&
         ::strncasecmp(host.data() + before, domain.data(), domain.size()) == 0;
}

bool matches(const std::string& entry, const std::string& host) {
  for (const int family : {AF_INET, AF_INET6}) {
    if (const auto address = addressOf(family, host)) return isInNetwork(family, *address, entry);
  }
  return isInDomain(host, entry);
}

/// The first of these variables that is set and not empty.
ProxyChoice firstOf(std::initializer_list<std::string> names, const Variables& variables) {
  for (const std::string& name : names) {
    const char* const value = variables(name.c_str());
    if (value != nullptr && *value != '\0') return {value, name};
  }
  return {};
}

}  // namespace

bool isNamedIn(const std::string& list, const std::string& host) {
  constexpr const char* kBetween = ", \t";
  if (list == "*") return true;
  for (std::size_t begin = list.find_first_not_of(kBetween); begin != std::string::npos;) {
    const std::size_t end = list.find_first_of(kBetween, begin);
    if (matches(list.substr(begin, end - begin), host)) return true;
    begin = list.find_first_not_of(kBetween, end);
  }
  return false;
}

ProxyChoice proxyFor(const std::string& scheme, const std::string& host,
                     const Variables& variables) {
  const ProxyChoice excluded = firstOf({"no_proxy", "NO_PROXY"}, variables);
  if (isNamedIn(excluded.url, host)) return {"", excluded.variable};
  return scheme == "https"
             ? firstOf({"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}, variables)
             : firstOf({"http_proxy", "all_proxy", "ALL_PROXY"}, variables);
}

}  // namespace zt::tools
