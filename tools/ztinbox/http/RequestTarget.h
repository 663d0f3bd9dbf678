// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace zt::inbox {

/// The target of a request (RFC 9112, section 3.2), decoded.
struct RequestTarget {
  std::string path;
  std::string authority;  ///< host and port of a target in absolute form, as written; else empty
  std::multimap<std::string, std::string> parameters;
};

/// Splits `target` and decodes the percent escapes in its parts; those that are invalid stay as
/// they are.
///
///     http://config.kelvane.example/reporting/kelvane.xml?a=b  ->  /reporting/kelvane.xml
RequestTarget readTarget(std::string_view target);

}  // namespace zt::inbox
