#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zt::inbox {

/// `bytes` as it may go to a terminal: UTF-8 on one line, nothing in it that moves the cursor,
/// hides or reorders text. What is not shown as it is becomes an escape: a control character or a
/// byte that is not UTF-8 `\x1b`, a control or format character beyond ASCII `\u{202e}`. At most
/// `longest` characters; a longer text ends in "…".
std::string terminalText(std::string_view bytes, std::size_t longest);

}  // namespace zt::inbox
