// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace zt::test {

inline std::string repeated(std::string_view text, int times) {
  std::string result;
  result.reserve(text.size() * static_cast<std::size_t>(times));
  for (int i = 0; i < times; ++i) result += text;
  return result;
}

/// A document type declaration of ten entities, each of which expands to ten of the previous one:
/// the last one, "&e9;", expands to 10^9 strings.
inline std::string growingEntities(std::string_view root) {
  std::string text = "<!DOCTYPE " + std::string(root) + " [<!ENTITY e0 'http://report.test/'>";
  for (int i = 1; i < 10; ++i) {
    text += "<!ENTITY e" + std::to_string(i) + " '" +
            repeated("&e" + std::to_string(i - 1) + ";", 10) + "'>";
  }
  return text + "]>";
}

/// `content` in `depth` elements.
inline std::string nested(int depth, std::string_view content) {
  return repeated("<a>", depth) + std::string(content) + repeated("</a>", depth);
}

}  // namespace zt::test
