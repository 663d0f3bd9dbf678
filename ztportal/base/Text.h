#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace zt {

/// Appends all `pieces` to `text`:
///
///     appendText(line, prefix, "<Name>", name, "</Name>\r\n");
template <class... Pieces>
void appendText(std::string& text, const Pieces&... pieces) {
  (text.append(std::string_view(pieces)), ...);
}

/// The path of `name` in `folder`.
inline std::string joinedPath(std::string_view folder, std::string_view name) {
  std::string path;
  appendText(path, folder, "/", name);
  return path;
}

/// Removes the first line from `text` and returns it without its line feed:
///
///     while (!text.empty()) use(takeLine(text));
constexpr std::string_view takeLine(std::string_view& text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(line.size() + 1, text.size()));
  return line;
}

/// The UTF-8 string `text` without leading and trailing white space (Unicode property White_Space,
/// which includes line ends). A view into `text`, not a copy.
constexpr std::string_view trimmed(std::string_view text) {
  constexpr std::array<std::string_view, 25> kWhiteSpace{
      "\t",           "\n",           "\v",
      "\f",           "\r",           " ",
      "\xC2\x85",     "\xC2\xA0",     "\xE1\x9A\x80",
      "\xE2\x80\x80", "\xE2\x80\x81", "\xE2\x80\x82",
      "\xE2\x80\x83", "\xE2\x80\x84", "\xE2\x80\x85",
      "\xE2\x80\x86", "\xE2\x80\x87", "\xE2\x80\x88",
      "\xE2\x80\x89", "\xE2\x80\x8A", "\xE2\x80\xA8",
      "\xE2\x80\xA9", "\xE2\x80\xAF", "\xE2\x81\x9F",
      "\xE3\x80\x80"};
  const auto sizeWhere = [&kWhiteSpace](auto isThere) -> std::size_t {
    const auto found = std::find_if(kWhiteSpace.begin(), kWhiteSpace.end(), isThere);
    return found == kWhiteSpace.end() ? 0 : found->size();
  };
  const auto isAtStart = [&text](std::string_view blank) { return text.starts_with(blank); };
  const auto isAtEnd = [&text](std::string_view blank) { return text.ends_with(blank); };
  while (const std::size_t size = sizeWhere(isAtStart)) text.remove_prefix(size);
  while (const std::size_t size = sizeWhere(isAtEnd)) text.remove_suffix(size);
  return text;
}

/// `path` without trailing slashes; the root folder stays "/".
constexpr std::string_view withoutTrailingSlashes(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
  return path;
}

/// Whether `name` can be the name of a file or folder that stays in its place and can be read: no
/// slash, "." or "..", and no control character (ASCII).
constexpr bool isFileName(std::string_view name) {
  const auto isForbidden = [](char character) {
    return character == '/' || character == '\x7F' || static_cast<unsigned char>(character) < ' ';
  };
  return name != "." && name != ".." && std::none_of(name.begin(), name.end(), isForbidden);
}

/// Whether `c` is an ASCII letter.
constexpr bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

/// Whether `letter` equals `lower` in either case. `lower` is ASCII and not a capital letter.
constexpr bool isLetterAnyCase(char letter, char lower) {
  return letter == lower || (letter >= 'A' && letter <= 'Z' && letter - 'A' + 'a' == lower);
}

/// Whether `text` equals `word` in any letter case. `word` is lower-case ASCII.
///
///     equalsAnyCase("Yes", "yes")    true
constexpr bool equalsAnyCase(std::string_view text, std::string_view word) {
  return std::equal(text.begin(), text.end(), word.begin(), word.end(), isLetterAnyCase);
}

/// Whether `text` contains `word` in any letter case. `word` is lower-case ASCII.
constexpr bool containsAnyCase(std::string_view text, std::string_view word) {
  return std::search(text.begin(), text.end(), word.begin(), word.end(), isLetterAnyCase) !=
         text.end();
}

}  // namespace zt
