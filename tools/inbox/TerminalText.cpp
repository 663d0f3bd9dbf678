#include "tools/inbox/TerminalText.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>

namespace zt::inbox {

namespace {

struct Range {
  char32_t first;
  char32_t last;
};

/// Controls, and the format characters that are invisible or change the direction of what
/// follows (Unicode categories Cc, Cf, Zl, Zp).
constexpr std::array<Range, 14> kHidden{{
    {0x00, 0x1f},
    {0x7f, 0x9f},
    {0xad, 0xad},
    {0x600, 0x605},
    {0x61c, 0x61c},
    {0x6dd, 0x6dd},
    {0x70f, 0x70f},
    {0x180e, 0x180e},
    {0x200b, 0x200f},
    {0x2028, 0x202e},
    {0x2060, 0x206f},
    {0xfeff, 0xfeff},
    {0xfff9, 0xfffb},
    {0xe0000, 0xe0fff},
}};

bool isHidden(char32_t character) {
  return std::ranges::any_of(kHidden, [character](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

unsigned byteAt(std::string_view bytes, std::size_t index) {
  return static_cast<unsigned char>(bytes[index]);
}

struct Character {
  char32_t code;
  std::size_t length;
};

/// The character at the beginning of `bytes`, or nothing for what is not UTF-8 (Unicode, table
/// 3-7: no surrogates, no overlong forms).
std::optional<Character> firstCharacter(std::string_view bytes) {
  const unsigned lead = byteAt(bytes, 0);
  if (lead < 0x80) return Character{lead, 1};
  const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (lead < 0xc2 || lead > 0xf4 || bytes.size() < length) return std::nullopt;
  char32_t code = lead & (0x7fU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const unsigned next = byteAt(bytes, i);
    if ((next & 0xc0U) != 0x80) return std::nullopt;
    code = (code << 6U) | (next & 0x3fU);
  }
  const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  const bool surrogate = code >= 0xd800 && code <= 0xdfff;
  if (overlong || surrogate || code > 0x10ffff) return std::nullopt;
  return Character{code, length};
}

std::string escape(const char* format, unsigned value) {
  std::array<char, 16> text{};
  const int length = std::snprintf(text.data(), text.size(), format, value);
  return {text.data(), static_cast<std::size_t>(length)};
}

}  // namespace

std::string terminalText(std::string_view bytes, std::size_t longest) {
  std::string text;
  std::size_t shown = 0;
  while (!bytes.empty()) {
    const auto character = firstCharacter(bytes);
    const std::size_t length = character ? character->length : 1;
    std::string piece(bytes.substr(0, length));
    std::size_t columns = 1;
    if (!character || isHidden(character->code)) {
      piece = length == 1 ? escape("\\x%02x", byteAt(bytes, 0))
                          : escape("\\u{%x}", static_cast<unsigned>(character->code));
      columns = piece.size();
    }
    const bool last = bytes.size() == length;
    if (shown + columns > longest - (last ? 0 : 1)) return text + "…";
    text += piece;
    shown += columns;
    bytes.remove_prefix(length);
  }
  return text;
}

}  // namespace zt::inbox
