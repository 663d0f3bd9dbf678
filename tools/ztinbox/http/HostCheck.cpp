#include "tools/ztinbox/http/HostCheck.h"

#include <algorithm>
#include <optional>
#include <string>

namespace zt::inbox {

namespace {

constexpr std::string_view kHttpPort = ":80";
constexpr std::string_view kOriginScheme = "http://";

std::string lowered(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return lower;
}

bool hasPort(std::string_view host) {
  const std::size_t colon = host.rfind(':');
  return colon != std::string_view::npos && !host.substr(colon).ends_with(']');
}

bool isLoopback(const ListenAddress& host) {
  return host.address.starts_with("127.") || host.address == "::1";
}

}  // namespace

bool isOwnHost(std::string_view host, const ListenAddress& own) {
  std::string text = lowered(host);
  if (!hasPort(text)) text += kHttpPort;
  const auto asked = parseListenAddress(text);
  if (!asked || asked->port != own.port) return false;
  return isLoopback(*asked) || asked->address == own.address;
}

bool isOwnOrigin(std::string_view origin, const ListenAddress& own) {
  const std::string text = lowered(origin);
  return text.starts_with(kOriginScheme) &&
         isOwnHost(std::string_view(text).substr(kOriginScheme.size()), own);
}

}  // namespace zt::inbox
