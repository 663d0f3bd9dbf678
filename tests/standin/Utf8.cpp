#include "ztportal/platform/Utf8.h"

#include <algorithm>
#include <cstddef>

namespace zt {
namespace {

/// A row of table 3-7: what the first and the second byte may be, and the length of the character.
struct Form {
  unsigned char first;
  unsigned char last;
  unsigned char firstSecond;
  unsigned char lastSecond;
  std::size_t length;
};
constexpr Form kForms[] = {
    {0x00, 0x7F, 0x00, 0x00, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

bool isWithin(char byte, unsigned char first, unsigned char last) {
  const auto value = static_cast<unsigned char>(byte);
  return value >= first && value <= last;
}

/// Length of the character that `bytes` start with; 0 when it is malformed.
std::size_t characterLength(std::string_view bytes) {
  for (const Form& form : kForms) {
    if (!isWithin(bytes.front(), form.first, form.last)) continue;
    if (bytes.size() < form.length) return 0;
    if (form.length > 1 && !isWithin(bytes[1], form.firstSecond, form.lastSecond)) return 0;
    const std::string_view rest =
        bytes.substr(0, form.length).substr(std::min<std::size_t>(form.length, 2));
    const bool isWhole =
        std::all_of(rest.begin(), rest.end(), [](char byte) { return isWithin(byte, 0x80, 0xBF); });
    return isWhole ? form.length : 0;
  }
  return 0;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t length = characterLength(bytes);
    if (length == 0) return false;
    bytes.remove_prefix(length);
  }
  return true;
}

}  // namespace zt
