#pragma once

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

}  // namespace zt
