#include "tools/ztinbox/store/SearchWords.h"

#include <algorithm>

namespace zt::inbox {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
/// Shorter beginnings stand in almost every report.
constexpr std::size_t kShortestBeginning = 3;

/// The index knows letters and digits alone.
bool isWordCharacter(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte >= 0x80 || (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= 'a' && byte <= 'z');
}

void addWord(std::string& expression, std::string_view word, bool mayGoOn) {
  if (std::ranges::none_of(word, isWordCharacter)) return;
  if (!expression.empty()) expression += " AND ";
  expression += '"';
  for (const char character : word) expression += character == '\0' ? ' ' : character;
  expression += '"';
  const bool endsInWord = isWordCharacter(word.back());
  if (mayGoOn && endsInWord && word.size() >= kShortestBeginning) expression += " *";
}

}  // namespace

std::string searchExpression(std::string_view typed) {
  std::string expression;
  while (!typed.empty()) {
    if (typed.front() == '"') {
      typed.remove_prefix(1);
      const std::size_t end = std::min(typed.find('"'), typed.size());
      addWord(expression, typed.substr(0, end), false);
      typed.remove_prefix(std::min(end + 1, typed.size()));
      continue;
    }
    const std::size_t end =
        std::min(typed.find_first_of(std::string(kBlanks) + "\""), typed.size());
    addWord(expression, typed.substr(0, end), true);
    typed.remove_prefix(end);
    typed.remove_prefix(std::min(typed.find_first_not_of(kBlanks), typed.size()));
  }
  return expression;
}

}  // namespace zt::inbox
