#include "tools/common/Place.h"

#include <algorithm>

namespace zt::reader {

namespace {

std::string message(Place place, const std::string& reason) {
  std::string text = "line ";
  text.append(std::to_string(place.line)).append(", column ");
  return text.append(std::to_string(place.column)).append(": ").append(reason);
}

}  // namespace

Place placeIn(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  const auto lineEnds = static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
  const std::size_t lineStart = before.rfind('\n') + 1;  // 0 on the first line
  return {lineEnds + 1, before.size() - lineStart + 1};
}

ReadError::ReadError(Place place, const std::string& reason)
    : std::runtime_error(message(place, reason)), _place(place) {}

}  // namespace zt::reader
