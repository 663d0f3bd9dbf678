#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace zt::terminal {

/// How a program's output is shown.
struct TerminalStyle {
  bool hasColours = false;
  std::size_t columns = 0;  ///< of a line; 0: unlimited
};

/// The style for standard output: colours and the width of the window on a terminal, neither
/// elsewhere. No colours either where `NO_COLOR` is set and not empty (https://no-color.org) or
/// `TERM` is "dumb".
TerminalStyle outputStyle();

/// `bytes` made safe for a terminal: UTF-8 on one line, nothing in it that moves the cursor, hides
/// or reorders text. Everything else becomes an escape: a control character or a byte that is not
/// UTF-8
/// `\x1b`, a control or format character beyond ASCII `\u{202e}`. At most `longest` characters; a
/// longer text ends in "…".
std::string terminalText(std::string_view bytes, std::size_t longest);

/// One character of such a text.
class TerminalCharacter {
 public:
  /// `text` is the character or its escape; it represents `length` bytes.
  TerminalCharacter(std::string_view text, std::size_t columns, std::size_t length)
      : _size(text.copy(_text.data(), _text.size())), _columns(columns), _length(length) {}

  std::string_view text() const { return {_text.data(), _size}; }
  std::size_t columns() const { return _columns; }  ///< how many characters are shown
  std::size_t length() const { return _length; }    ///< how many bytes it represents

 private:
  std::array<char, 12> _text;  // the longest is "\u{10ffff}"
  std::size_t _size;
  std::size_t _columns;
  std::size_t _length;
};

/// The first character of `bytes`, which are not empty.
TerminalCharacter firstTerminalCharacter(std::string_view bytes);

}  // namespace zt::terminal
