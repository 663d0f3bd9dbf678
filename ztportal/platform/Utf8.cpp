#include "ztportal/platform/Utf8.h"

#include <unicode/utf8.h>

#include <cstddef>

namespace zt {

bool isUtf8(std::string_view bytes) {
  const auto* text = reinterpret_cast<const unsigned char*>(bytes.data());
  const auto length = static_cast<std::ptrdiff_t>(bytes.size());
  std::ptrdiff_t position = 0;
  while (position < length) {
    UChar32 character = 0;
    U8_NEXT(text, position, length, character);
    if (character < 0) return false;
  }
  return true;
}

}  // namespace zt
