#pragma once

#include <string>

namespace zt::inbox {

/// Where a request goes (RFC 9112, section 3.2).
struct RequestTarget {
  std::string path;       ///< percent escapes decoded
  std::string authority;  ///< host and port of a target in absolute form, else empty
};

/// Takes apart `target` as the client wrote it, whose part before the query is `decoded`.
///
///     http://config.kelvane.example/reporting/kelvane.xml  ->  /reporting/kelvane.xml
RequestTarget readTarget(const std::string& target, const std::string& decoded);

}  // namespace zt::inbox
