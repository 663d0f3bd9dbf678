#include "ztportal/platform/xml/Utf8.h"

#include <unicode/utf8.h>

#include <cstddef>

namespace zt {

std::size_t utf8Length(std::string_view bytes) {
  const auto* text = reinterpret_cast<const unsigned char*>(bytes.data());
  const auto length = static_cast<std::ptrdiff_t>(bytes.size());
  std::ptrdiff_t position = 0;
  while (position < length) {
    const std::ptrdiff_t start = position;
    UChar32 character = 0;
    U8_NEXT(text, position, length, character);
    if (character < 0) return static_cast<std::size_t>(start);
  }
  return bytes.size();
}

bool isUtf8(std::string_view bytes) { return utf8Length(bytes) == bytes.size(); }

}  // namespace zt
