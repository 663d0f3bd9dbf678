#include "ztportal/platform/TextEncoding.h"

// A stand-in that knows ISO-8859-1.

namespace zt {

std::optional<std::string> utf8From(std::string_view bytes, const std::string& encoding) {
  if (encoding != "ISO-8859-1") return std::nullopt;
  std::string text;
  for (const char byte : bytes) {
    const auto character = static_cast<unsigned char>(byte);
    if (character < 0x80) {
      text += byte;
    } else {
      text += static_cast<char>(0xC0U | character >> 6U);
      text += static_cast<char>(0x80U | (character & 0x3FU));
    }
  }
  return text;
}

}  // namespace zt
