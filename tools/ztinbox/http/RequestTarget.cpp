#include "tools/ztinbox/http/RequestTarget.h"

#include <strings.h>

#include <string_view>

namespace zt::inbox {

namespace {

constexpr std::string_view kScheme = "http://";

bool isAbsolute(const std::string& target) {
  return strncasecmp(target.c_str(), kScheme.data(), kScheme.size()) == 0;
}

}  // namespace

RequestTarget readTarget(const std::string& target, const std::string& decoded) {
  if (!isAbsolute(target)) return {decoded, {}};
  const std::string_view rest = std::string_view(target).substr(kScheme.size());
  const std::string authority(rest.substr(0, rest.find_first_of("/?#")));
  // An escape in a host name moves the path within the decoded text; no host here has one.
  if (authority.find('%') != std::string::npos) return {decoded, authority};
  const std::string path = decoded.substr(kScheme.size() + authority.size());
  return {path.empty() ? "/" : path, authority};
}

}  // namespace zt::inbox
