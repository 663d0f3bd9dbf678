#pragma once

#include <cstddef>
#include <string_view>

namespace zt::inbox {

/// How many blanks and tabs `line` begins with. Written out, since reports are mostly blanks: the
/// standard's search for any character but some looks each one up.
constexpr std::size_t blanksBefore(std::string_view line) {
  std::size_t count = 0;
  while (count < line.size() && (line[count] == ' ' || line[count] == '\t')) ++count;
  return count;
}

}  // namespace zt::inbox
