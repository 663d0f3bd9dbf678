#include "ztportal/platform/LowerCase.h"

// A stand-in that knows the letters of ASCII and Latin-1.

namespace zt {

std::string lowerCase(std::string_view text) {
  constexpr unsigned kLatin1 = 0xC3;  // leads U+00C0 to U+00FF
  constexpr unsigned kTimesSign = 0x97;
  std::string lower;
  unsigned before = 0;
  for (const char next : text) {
    const unsigned byte = static_cast<unsigned char>(next);
    const bool isLatin1Capital = before == kLatin1 && byte <= 0x9E && byte != kTimesSign;
    const bool isCapital = isLatin1Capital || (byte >= 'A' && byte <= 'Z');
    lower += isCapital ? static_cast<char>(byte + 0x20) : next;
    before = byte;
  }
  return lower;
}

}  // namespace zt
