#pragma once

#include <algorithm>
#include <string_view>

namespace zt {

/// Whether `letter` is `lower`, an ASCII character that is no capital letter, in any letter case.
constexpr bool isLetterAnyCase(char letter, char lower) {
  return letter == lower || (letter >= 'A' && letter <= 'Z' && letter - 'A' + 'a' == lower);
}

/// Whether `text` contains `word`, which is in lower-case ASCII, in any letter case.
constexpr bool containsAnyCase(std::string_view text, std::string_view word) {
  return std::search(text.begin(), text.end(), word.begin(), word.end(), isLetterAnyCase) !=
         text.end();
}

/// Whether `text` is `word`, which is in lower-case ASCII, in any letter case.
///
///     equalsAnyCase("Yes", "yes")    true
constexpr bool equalsAnyCase(std::string_view text, std::string_view word) {
  return std::equal(text.begin(), text.end(), word.begin(), word.end(), isLetterAnyCase);
}

}  // namespace zt
