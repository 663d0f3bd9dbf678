// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace zt {

/// Appends all `pieces` to `text`:
///
///     appendText(line, prefix, "<Name>", name, "</Name>\r\n");
template <class... Pieces>
void appendText(std::string& text, const Pieces&... pieces) {
  (text.append(std::string_view(pieces)), ...);
}

/// Sets `text` to all `pieces`; the last ones are missing if memory runs out.
template <class... Pieces>
void setText(std::string& text, const Pieces&... pieces) noexcept try {
  text.clear();
  appendText(text, pieces...);
} catch (const std::bad_alloc&) {
}

/// The path of `name` in `folder`.
inline std::string joinedPath(std::string_view folder, std::string_view name) {
  std::string path;
  appendText(path, folder, "/", name);
  return path;
}

/// Removes the first line from `text` and returns it without its line feed, or without another
/// `end`:
///
///     while (!text.empty()) use(takeLine(text));
constexpr std::string_view takeLine(std::string_view& text, char end = '\n') {
  const std::string_view line = text.substr(0, text.find(end));
  text.remove_prefix(std::min(line.size() + 1, text.size()));
  return line;
}

/// `text` as a number; nothing unless all of it is one, and one that the type can hold.
template <class Number>
std::optional<Number> parseNumber(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
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

/// Whether `character` is a control character of ASCII.
constexpr bool isControl(char character) {
  return static_cast<unsigned char>(character) < ' ' || character == '\x7F';
}

constexpr bool hasControl(std::string_view text) {
  return std::any_of(text.begin(), text.end(), isControl);
}

/// Whether `name` can be the name of a file or folder that stays in its place and can be read: no
/// slash, "." or "..", and no control character.
constexpr bool isFileName(std::string_view name) {
  return name != "." && name != ".." && name.find('/') == std::string_view::npos &&
         !hasControl(name);
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

/// Whether `text` equals one of `words` in any letter case.
template <class Words>
constexpr bool isAnyOf(std::string_view text, const Words& words) {
  return std::any_of(words.begin(), words.end(),
                     [text](std::string_view word) { return equalsAnyCase(text, word); });
}

/// Whether `text` contains `word` in any letter case. `word` is lower-case ASCII.
constexpr bool containsAnyCase(std::string_view text, std::string_view word) {
  return std::search(text.begin(), text.end(), word.begin(), word.end(), isLetterAnyCase) !=
         text.end();
}

}  // namespace zt
