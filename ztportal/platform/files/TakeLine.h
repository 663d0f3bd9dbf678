#pragma once

#include <algorithm>
#include <string_view>

namespace zt {

/// The first line of `text` without its line feed; both are taken off `text`.
///
///     while (!text.empty()) use(takeLine(text));
inline std::string_view takeLine(std::string_view& text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(line.size() + 1, text.size()));
  return line;
}

}  // namespace zt
