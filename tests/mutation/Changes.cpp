#include "tests/mutation/Changes.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <optional>

#include "tests/mutation/Tokens.h"

namespace zt::mutation {

namespace {

struct Turned {
  std::string_view before;
  std::string_view after;
};

/// Those with two operands, which the formatter puts between blanks; others that look like them,
/// as in templates and references, are not.
constexpr std::array<Turned, 21> kBetweenBlanks{{
    {"==", "!="}, {"!=", "=="}, {"<", "<="}, {"<", ">="},  {"<=", "<"},  {">", ">="},  {">", "<="},
    {">=", ">"},  {"+", "-"},   {"-", "+"},  {"*", "/"},   {"/", "*"},   {"%", "*"},   {"&&", "||"},
    {"||", "&&"}, {"&", "|"},   {"|", "&"},  {"<<", ">>"}, {">>", "<<"}, {"+=", "-="}, {"-=", "+="},
}};

constexpr std::array<Turned, 5> kAnywhere{
    {{"!", ""}, {"++", "--"}, {"--", "++"}, {"true", "false"}, {"false", "true"}}};

constexpr std::array<std::string_view, 6> kBeforeBlocks{")", "]", "else", "do", "try", "const"};

/// A statement that begins with one of these is none that can be dropped, or declares what others
/// need.
constexpr std::array<std::string_view, 10> kKept{"else", "catch", "case",      "default", "using",
                                                 "auto", "const", "constexpr", "static",  "}"};

/// A statement that begins with one of these ends with its block, if it has one.
constexpr std::array<std::string_view, 6> kWithBlock{"if", "for", "while", "do", "switch", "try"};

template <std::size_t Count>
bool isIn(const std::array<std::string_view, Count>& words, std::string_view text) {
  return std::find(words.begin(), words.end(), text) != words.end();
}

bool opens(const Token& token) {
  return token.text == "(" || token.text == "[" || token.text == "{";
}

bool closes(const Token& token) {
  return token.text == ")" || token.text == "]" || token.text == "}";
}

bool isBetweenBlanks(std::string_view source, const Token& token) {
  constexpr std::string_view kBlanks = " \n";
  const std::size_t end = token.begin + token.text.size();
  return token.begin > 0 && kBlanks.find(source[token.begin - 1]) != std::string_view::npos &&
         end < source.size() && kBlanks.find(source[end]) != std::string_view::npos;
}

/// A literal with its last letter or digit changed to another of the same kind, so that it still
/// has its form; one with neither begins with an X.
std::string endedDifferently(std::string_view literal) {
  std::string text(literal);
  for (std::size_t at = text.size() - 1; at > 1; --at) {
    char& byte = text[at - 1];
    const bool isPlain = std::isalnum(static_cast<unsigned char>(byte)) != 0;
    if (!isPlain || text[at - 2] == '\\') continue;
    constexpr std::string_view kLastOfTheirKind = "9FZz";
    const bool isLast = kLastOfTheirKind.find(byte) != std::string_view::npos;
    byte = static_cast<char>(isLast ? byte - 1 : byte + 1);
    return text;
  }
  return text.replace(1, text[1] == '\\' ? 2 : 1, "X");
}

class Finder {
 public:
  explicit Finder(std::string_view source) : _source(source), _tokens(tokensOf(source)) {}

  std::vector<Change> find() {
    for (std::size_t index = 0; index < _tokens.size(); ++index) {
      const Token& token = _tokens[index];
      addStatement(index);
      switch (token.kind) {
        case TokenKind::Word:
        case TokenKind::Sign:
          addTurned(token);
          break;
        case TokenKind::Number:
          addNumbers(token);
          break;
        case TokenKind::String:
        case TokenKind::Character:
          addTexts(token);
          break;
      }
      follow(index);
    }
    return std::move(_changes);
  }

 private:
  void add(const Token& token, std::string replacement) {
    _changes.push_back({token.begin, token.text.size(), std::move(replacement)});
  }

  void addTurned(const Token& token) {
    for (const Turned& turned : kAnywhere) {
      if (token.text == turned.before) add(token, std::string(turned.after));
    }
    if (!isBetweenBlanks(_source, token)) return;
    for (const Turned& turned : kBetweenBlanks) {
      if (token.text == turned.before) add(token, std::string(turned.after));
    }
  }

  void addNumbers(const Token& token) {
    const bool isHexadecimal = token.text.starts_with("0x");
    const std::string_view digits = token.text.substr(isHexadecimal ? 2 : 0);
    const char* const digitsEnd = digits.data() + digits.size();
    std::uint64_t number = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digitsEnd, number, isHexadecimal ? 16 : 10);
    const std::string_view suffix(end, static_cast<std::size_t>(digitsEnd - end));
    if (error != std::errc() || suffix.find_first_not_of("uUlL") != std::string_view::npos) return;
    add(token, std::to_string(number + 1).append(suffix));
    if (number > 0) add(token, std::to_string(number - 1).append(suffix));
  }

  void addTexts(const Token& token) {
    if (token.text == "\"\"") return add(token, "\"X\"");
    if (token.kind == TokenKind::Character) return add(token, "'X'");
    if (token.text.front() != '"') return;  // a raw one
    add(token, "\"\"");
    add(token, endedDifferently(token.text));
  }

  /// The statement that begins with a token, if one does.
  void addStatement(std::size_t index) {
    if (_insideBlocks.empty() || !_insideBlocks.back()) return;
    const std::string_view before = _tokens[index - 1].text;
    if (before != ";" && before != "{" && before != "}") return;
    const std::optional<std::size_t> end = statementEnd(index);
    if (!end) return;
    const std::size_t begin = _tokens[index].begin;
    const std::string_view text = _source.substr(begin, *end - begin);
    const auto lineEnds = std::count(text.begin(), text.end(), '\n');
    std::string nothing = ";";
    nothing.append(static_cast<std::size_t>(lineEnds), '\n');
    _changes.push_back({begin, text.size(), std::move(nothing)});
  }

  std::optional<std::size_t> statementEnd(std::size_t first) const {
    if (isIn(kKept, _tokens[first].text) || _tokens[first].text == ";") return std::nullopt;
    int depth = 0;
    for (std::size_t index = first; index < _tokens.size() && depth >= 0; ++index) {
      const Token& token = _tokens[index];
      if (depth == 0 && token.text == ";") return token.begin + 1;
      if (depth == 0 && token.text == "{" && isIn(kWithBlock, _tokens[first].text)) break;
      if (opens(token)) ++depth;
      if (closes(token)) --depth;
    }
    return std::nullopt;
  }

  /// Remembers which brackets are open, and whether they are those of a block of statements.
  void follow(std::size_t index) {
    const Token& token = _tokens[index];
    if (opens(token)) {
      _insideBlocks.push_back(token.text == "{" && index > 0 &&
                              isIn(kBeforeBlocks, _tokens[index - 1].text));
    } else if (closes(token) && !_insideBlocks.empty()) {
      _insideBlocks.pop_back();
    }
  }

  std::string_view _source;
  std::vector<Token> _tokens;
  std::vector<Change> _changes;
  std::vector<bool> _insideBlocks;
};

/// Lines in one, without what they are indented by.
std::string joined(std::string_view lines) {
  std::string text;
  bool isIndent = true;
  for (const char byte : lines) {
    if (byte == '\n' && !text.empty() && text.back() != ' ') text += ' ';
    isIndent = byte == '\n' || (isIndent && byte == ' ');
    if (!isIndent) text += byte;
  }
  return text;
}

}  // namespace

std::vector<Change> changesOf(std::string_view source) { return Finder(source).find(); }

std::string changed(std::string_view source, const Change& change) {
  std::string text(source.substr(0, change.begin));
  text += change.replacement;
  text += source.substr(change.begin + change.size);
  return text;
}

ChangedLines linesOf(std::string_view source, const Change& change) {
  const std::string_view ahead = source.substr(0, change.begin);
  const std::size_t begin = ahead.rfind('\n') + 1;  // 0 in the first line
  const std::size_t end = std::min(source.find('\n', change.begin + change.size), source.size());
  const std::string_view lines = source.substr(begin, end - begin);
  const Change inLines{change.begin - begin, change.size, change.replacement};
  return {static_cast<std::size_t>(std::count(ahead.begin(), ahead.end(), '\n')) + 1, joined(lines),
          joined(changed(lines, inLines))};
}

}  // namespace zt::mutation
