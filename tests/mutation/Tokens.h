#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace zt::mutation {

enum class TokenKind { Word, Number, String, Character, Sign };

struct Token {
  TokenKind kind;
  std::size_t begin;      ///< in the source
  std::string_view text;  ///< a part of the source, quotes included
};

/// The tokens of a C++ source, without its comments and its lines for the preprocessor.
std::vector<Token> tokensOf(std::string_view source);

}  // namespace zt::mutation
