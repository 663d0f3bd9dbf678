#pragma once

#include <string_view>

namespace zt {

/// `text`, which is UTF-8, without the white space and line ends (Unicode property White_Space) at
/// both of its ends. A part of `text`, not a copy.
std::string_view trimmed(std::string_view text);

}  // namespace zt
