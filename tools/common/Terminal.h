// SPDX-License-Identifier: Apache-2.0
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

/// The style for standard output: on a terminal, colours and the width of the window; otherwise
/// neither. There are no colours if `NO_COLOR` is set and not empty (https://no-color.org) or
/// `TERM` is "dumb".
TerminalStyle outputStyle();

/// Makes `bytes` safe for a terminal: UTF-8 on one line, without anything that moves the cursor or
/// that hides or reorders text. A control character or a byte that is not UTF-8 is escaped as
/// `\x1b`, a control or format character beyond ASCII as `\u{202e}`. The result has at most
/// `longest` characters; a longer text ends in "…".
std::string terminalText(std::string_view bytes, std::size_t longest = std::string_view::npos);

/// One character of such a text, or its escape.
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

/// The first character of `bytes`, which must not be empty.
TerminalCharacter firstTerminalCharacter(std::string_view bytes);

}  // namespace zt::terminal
