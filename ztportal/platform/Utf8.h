#pragma once

#include <string_view>

namespace zt {

/// Whether `bytes` are well-formed UTF-8 (Unicode, table 3-7: no surrogates, no overlong forms).
bool isUtf8(std::string_view bytes);

}  // namespace zt
