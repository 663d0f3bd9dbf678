#pragma once

#include <string>
#include <string_view>

namespace zt::inbox {

/// What a person typed as an expression of the full-text index (SQLite FTS5): all words have to
/// occur, in any order and in upper or lower case. A word of three characters or more finds what
/// begins with it too; what stands in quotation marks is found as it is, word after word.
///
///     copy fail "disk full"  ->  "copy" * AND "fail" * AND "disk full"
///
/// Whatever is typed, the expression is well-formed. Empty when there is no letter or digit in it.
std::string searchExpression(std::string_view typed);

}  // namespace zt::inbox
