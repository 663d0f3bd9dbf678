#pragma once

#include <string>
#include <string_view>

namespace zt {

/// `text`, which is UTF-8, in lower case (Unicode default case conversion, no locale's rules).
std::string lowerCase(std::string_view text);

}  // namespace zt
