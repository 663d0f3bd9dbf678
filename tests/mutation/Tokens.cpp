#include "tests/mutation/Tokens.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>

namespace zt::mutation {

namespace {

/// The longer ones first.
constexpr std::array<std::string_view, 26> kSigns{
    "<=>", "<<=", ">>=", "...", "->*", "::", "->", "++", "--", "==", "!=", "<=", ">=",
    "&&",  "||",  "+=",  "-=",  "*=",  "/=", "|=", "&=", "^=", "%=", "<<", ">>", "##"};

bool isBlank(char byte) { return std::isspace(static_cast<unsigned char>(byte)) != 0; }
bool isDigit(char byte) { return std::isdigit(static_cast<unsigned char>(byte)) != 0; }
bool isWordPart(char byte) {
  return std::isalnum(static_cast<unsigned char>(byte)) != 0 || byte == '_';
}

/// How much of `rest` there is up to `end` and with it; all of it without one.
std::size_t behind(std::string_view rest, std::string_view end, std::size_t from) {
  const std::size_t at = rest.find(end, from);
  return at == std::string_view::npos ? rest.size() : at + end.size();
}

std::size_t directiveSize(std::string_view rest) {
  std::size_t size = behind(rest, "\n", 0);
  while (size >= 2 && rest[size - 2] == '\\') size = behind(rest, "\n", size);
  return size;
}

std::size_t quotedSize(std::string_view rest) {
  std::size_t size = 1;
  while (size < rest.size() && rest[size] != rest.front()) size += rest[size] == '\\' ? 2 : 1;
  return size + 1;
}

std::size_t rawStringSize(std::string_view rest) {
  const std::size_t open = rest.find('(');
  const std::string end = ")" + std::string(rest.substr(2, open - 2)) + "\"";
  return behind(rest, end, open);
}

template <class Predicate>
std::size_t sizeOfAll(std::string_view rest, Predicate isPart) {
  const auto end = std::find_if_not(rest.begin(), rest.end(), isPart);
  return static_cast<std::size_t>(end - rest.begin());
}

std::size_t signSize(std::string_view rest) {
  const auto* const sign = std::find_if(
      kSigns.begin(), kSigns.end(), [rest](auto candidate) { return rest.starts_with(candidate); });
  return sign != kSigns.end() ? sign->size() : 1;
}

Token tokenAt(std::string_view source, std::size_t begin) {
  const std::string_view rest = source.substr(begin);
  const auto token = [&](TokenKind kind, std::size_t size) {
    return Token{kind, begin, rest.substr(0, size)};
  };
  if (rest.starts_with("R\"")) return token(TokenKind::String, rawStringSize(rest));
  if (rest.front() == '"') return token(TokenKind::String, quotedSize(rest));
  if (rest.front() == '\'') return token(TokenKind::Character, quotedSize(rest));
  if (isDigit(rest.front())) {
    return token(TokenKind::Number, sizeOfAll(rest, [](char byte) {
                   return isWordPart(byte) || byte == '.' || byte == '\'';
                 }));
  }
  if (isWordPart(rest.front())) return token(TokenKind::Word, sizeOfAll(rest, isWordPart));
  return token(TokenKind::Sign, signSize(rest));
}

}  // namespace

std::vector<Token> tokensOf(std::string_view source) {
  std::vector<Token> tokens;
  bool atLineStart = true;
  for (std::size_t at = 0; at < source.size();) {
    const std::string_view rest = source.substr(at);
    if (isBlank(rest.front())) {
      if (rest.front() == '\n') atLineStart = true;
      ++at;
    } else if (rest.starts_with("//")) {
      at += behind(rest, "\n", 0);
      atLineStart = true;
    } else if (rest.starts_with("/*")) {
      at += behind(rest, "*/", 2);
    } else if (atLineStart && rest.front() == '#') {
      at += directiveSize(rest);
    } else {
      tokens.push_back(tokenAt(source, at));
      at += tokens.back().text.size();
      atLineStart = false;
    }
  }
  return tokens;
}

}  // namespace zt::mutation
