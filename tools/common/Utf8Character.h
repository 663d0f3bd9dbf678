#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace zt::terminal {

struct Utf8Character {
  char32_t code;
  std::size_t length;  ///< in bytes
};

/// The character at the beginning of `bytes`, which are not empty, or nothing for what is not UTF-8
/// (Unicode, table 3-7: no surrogates, no overlong forms).
std::optional<Utf8Character> firstCharacter(std::string_view bytes);

}  // namespace zt::terminal
