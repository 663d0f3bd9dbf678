#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zt {

/// `bytes`, which are text in the character set `encoding` (a name registered with IANA, or an
/// alias of one), as UTF-8. Nothing for an unknown character set, and nothing when a byte of it
/// has no meaning in it.
///
///     utf8From("gr\xFC\xDF", "ISO-8859-1")     // "grüß"
std::optional<std::string> utf8From(std::string_view bytes, const std::string& encoding);

}  // namespace zt
