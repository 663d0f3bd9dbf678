#include "ztportal/platform/identity/UuidText.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace zt {

ZtString uuidText(std::span<const std::uint8_t, 16> bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr std::string_view kForm = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
  std::array<char, kForm.size()> text;
  std::size_t digit = 0;
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    if (kForm[i] == '-') {
      text[i] = '-';
      continue;
    }
    const unsigned byte = bytes[digit / 2];
    text[i] = kDigits[digit % 2 == 0 ? byte >> 4U : byte & 0xFU];
    ++digit;
  }
  return std::string_view(text.data(), text.size());
}

}  // namespace zt
