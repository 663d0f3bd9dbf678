#include "ztportal/platform/locale/LowerCase.h"

#include <unicode/locid.h>
#include <unicode/stringpiece.h>
#include <unicode/unistr.h>

namespace zt {

std::string lowerCase(std::string_view text) {
  icu::UnicodeString unicode = icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
  std::string lower;
  unicode.toLower(icu::Locale::getRoot()).toUTF8String(lower);
  return lower;
}

}  // namespace zt
