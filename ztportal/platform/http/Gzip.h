// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace zt {

/// `text` in the gzip format (RFC 1952), as "Content-Encoding: gzip" wants it (RFC 9110, 8.4.1.3).
/// Empty if zlib cannot compress it.
std::string gzip(std::string_view text);

}  // namespace zt
