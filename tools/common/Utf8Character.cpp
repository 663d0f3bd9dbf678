#include "tools/common/Utf8Character.h"

namespace zt::terminal {

namespace {

unsigned byteAt(std::string_view bytes, std::size_t index) {
  return static_cast<unsigned char>(bytes[index]);
}

}  // namespace

std::optional<Utf8Character> firstCharacter(std::string_view bytes) {
  const unsigned lead = byteAt(bytes, 0);
  if (lead < 0x80) return Utf8Character{lead, 1};
  const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (lead < 0xc2 || lead > 0xf4 || bytes.size() < length) return std::nullopt;
  char32_t code = lead & (0x7fU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const unsigned next = byteAt(bytes, i);
    if ((next & 0xc0U) != 0x80) return std::nullopt;
    code = (code << 6U) | (next & 0x3fU);
  }
  const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  const bool surrogate = code >= 0xd800 && code <= 0xdfff;
  if (overlong || surrogate || code > 0x10ffff) return std::nullopt;
  return Utf8Character{code, length};
}

}  // namespace zt::terminal
