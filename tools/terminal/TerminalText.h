#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zt::terminal {

/// `bytes` as it may go to a terminal: UTF-8 on one line, nothing in it that moves the cursor,
/// hides or reorders text. What is not shown as it is becomes an escape: a control character or a
/// byte that is not UTF-8 `\x1b`, a control or format character beyond ASCII `\u{202e}`. At most
/// `longest` characters; a longer text ends in "…".
std::string terminalText(std::string_view bytes, std::size_t longest);

/// One character of a text as it may go to a terminal.
struct TerminalCharacter {
  std::string text;     ///< itself or its escape
  std::size_t columns;  ///< how many characters that is
  std::size_t length;   ///< how many bytes it stands for
};

/// The character at the beginning of `bytes`, which are not empty.
TerminalCharacter firstTerminalCharacter(std::string_view bytes);

}  // namespace zt::terminal
