// SPDX-License-Identifier: Apache-2.0
#include "tools/common/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "ztportal/base/Utf8.h"

namespace zt::terminal {

namespace {

std::string_view variable(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

struct Range {
  char32_t first;
  char32_t last;
};

/// Control characters, and format characters that are invisible or change the direction of the text
/// after them (Unicode categories Cc, Cf, Zl, Zp).
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

TerminalCharacter escaped(const char* format, unsigned value, std::size_t bytes) {
  std::array<char, 16> text{};
  const auto size =
      static_cast<std::size_t>(std::snprintf(text.data(), text.size(), format, value));
  return {{text.data(), size}, size, bytes};
}

}  // namespace

TerminalStyle outputStyle() {
  TerminalStyle style;
  if (::isatty(STDOUT_FILENO) == 0) return style;
  style.hasColours = variable("NO_COLOR").empty() && variable("TERM") != "dumb";
  winsize size{};
  if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) style.columns = size.ws_col;
  return style;
}

TerminalCharacter firstTerminalCharacter(std::string_view bytes) {
  if (bytes.front() >= ' ' && bytes.front() < '\x7f') return {bytes.substr(0, 1), 1, 1};
  const auto character = firstUtf8Character(bytes);
  const std::size_t length = character ? character->length : 1;
  if (character && !isHidden(character->code)) return {bytes.substr(0, length), 1, length};
  return length == 1 ? escaped("\\x%02x", static_cast<unsigned char>(bytes.front()), 1)
                     : escaped("\\u{%x}", static_cast<unsigned>(character->code), length);
}

std::string terminalText(std::string_view bytes, std::size_t longest) {
  std::string text;
  std::size_t shown = 0;
  while (!bytes.empty()) {
    const TerminalCharacter character = firstTerminalCharacter(bytes);
    const bool last = bytes.size() == character.length();
    if (shown + character.columns() > longest - (last ? 0 : 1)) return text + "…";
    text += character.text();
    shown += character.columns();
    bytes.remove_prefix(character.length());
  }
  return text;
}

}  // namespace zt::terminal
