// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/http/RequestTarget.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "ztportal/base/Text.h"

namespace zt::inbox {

namespace {

constexpr std::string_view kScheme = "http://";

enum class Plus { kStays, kIsBlank };

std::string decoded(std::string_view text, Plus plus) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '+' && plus == Plus::kIsBlank) {
      result += ' ';
      continue;
    }
    std::uint8_t byte = 0;
    if (text[i] == '%' && i + 2 < text.size()) {
      const char* const end = text.data() + i + 3;
      const auto [last, error] = std::from_chars(text.data() + i + 1, end, byte, 16);
      if (error == std::errc() && last == end) {
        result += static_cast<char>(byte);
        i += 2;
        continue;
      }
    }
    result += text[i];
  }
  return result;
}

/// Splits `text` at the first `mark`, which neither part has.
std::pair<std::string_view, std::string_view> split(std::string_view text, char mark) {
  const std::size_t at = text.find(mark);
  if (at == std::string_view::npos) return {text, {}};
  return {text.substr(0, at), text.substr(at + 1)};
}

}  // namespace

RequestTarget readTarget(std::string_view target) {
  RequestTarget result;
  target = target.substr(0, target.find('#'));
  const bool isAbsolute = equalsAnyCase(target.substr(0, kScheme.size()), kScheme);
  if (isAbsolute) {
    target.remove_prefix(kScheme.size());
    const std::size_t end = std::min(target.find_first_of("/?"), target.size());
    result.authority = target.substr(0, end);
    target.remove_prefix(end);
  }
  auto [path, query] = split(target, '?');
  result.path = isAbsolute && path.empty() ? "/" : decoded(path, Plus::kStays);
  while (!query.empty()) {
    const auto [parameter, rest] = split(query, '&');
    const auto [name, value] = split(parameter, '=');
    if (!name.empty()) {
      result.parameters.emplace(decoded(name, Plus::kIsBlank), decoded(value, Plus::kIsBlank));
    }
    query = rest;
  }
  return result;
}

}  // namespace zt::inbox
