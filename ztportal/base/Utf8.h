// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zt {

struct Utf8Character {
  char32_t code;
  std::size_t length;  ///< in bytes
};

/// The first character of `bytes`, or nullopt if they are empty or do not start with a well-formed
/// character (Unicode, table 3-7: no surrogates, no overlong forms).
constexpr std::optional<Utf8Character> firstUtf8Character(std::string_view bytes) {
  if (bytes.empty()) return std::nullopt;
  const auto byteAt = [bytes](std::size_t index) -> char32_t {
    return static_cast<unsigned char>(bytes[index]);
  };
  const char32_t lead = byteAt(0);
  if (lead < 0x80) return Utf8Character{lead, 1};
  const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (lead < 0xc2 || lead > 0xf4 || bytes.size() < length) return std::nullopt;
  char32_t code = lead & (0x7fU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byteAt(i) & 0xc0U) != 0x80) return std::nullopt;
    code = (code << 6U) | (byteAt(i) & 0x3fU);
  }
  const bool isOverlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  const bool isSurrogate = code >= 0xd800 && code <= 0xdfff;
  if (isOverlong || isSurrogate || code > 0x10ffff) return std::nullopt;
  return Utf8Character{code, length};
}

/// The number of bytes at the start of `bytes` that are well-formed UTF-8: all of them, or those
/// before the first malformed character.
constexpr std::size_t utf8Length(std::string_view bytes) {
  std::size_t position = 0;
  while (position < bytes.size()) {
    const auto character = firstUtf8Character(bytes.substr(position));
    if (!character) break;
    position += character->length;
  }
  return position;
}

/// U+FFFD, for what cannot be written.
inline constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";

constexpr bool isUtf8(std::string_view bytes) { return utf8Length(bytes) == bytes.size(); }

/// Removes the beginning of a character from the end of `text`, which is not empty.
inline void removeHalfCharacter(std::string& text) {
  std::size_t last = text.size();
  do {
    --last;
  } while (last > 0 && text.size() - last < 4 && (text[last] & 0xc0) == 0x80);
  if (!isUtf8(std::string_view(text).substr(last))) text.resize(last);
}

}  // namespace zt
