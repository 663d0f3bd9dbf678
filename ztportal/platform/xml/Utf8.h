#pragma once

#include <cstddef>
#include <string_view>

namespace zt {

/// How many bytes at the start of `bytes` are well-formed UTF-8: all of them, or those before the
/// first character that is not.
std::size_t utf8Length(std::string_view bytes);

/// Whether `bytes` are well-formed UTF-8 (Unicode, table 3-7: no surrogates, no overlong forms).
bool isUtf8(std::string_view bytes);

}  // namespace zt
