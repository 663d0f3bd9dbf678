#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace zt {

/// Appends all `pieces` to `text`, growing it once:
///
///     appendText(line, prefix, "<Name>", name, "</Name>\r\n");
template <class... Pieces>
void appendText(std::string& text, const Pieces&... pieces) {
  const auto append = [&text](auto... views) {
    const std::size_t before = text.size();
    text.resize(before + (views.size() + ...));
    char* end = text.data() + before;
    ((end = std::copy(views.begin(), views.end(), end)), ...);
  };
  append(std::string_view(pieces)...);
}

}  // namespace zt
