// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace zt::tools {

/// `text` as one word of a shell command that can be pasted: in single quotes, or, with anything in
/// it that a terminal would not show as it is, in the form $'…' (bash, zsh, ksh).
///
///     shellWord("a'b c.ztr")   // 'a'\''b c.ztr'
///     shellWord("a\nb")        // $'a\012b'
std::string shellWord(std::string_view text);

}  // namespace zt::tools
