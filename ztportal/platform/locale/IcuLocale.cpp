#include "ztportal/platform/locale/IcuLocale.h"

#include <unicode/locid.h>

#include <algorithm>
#include <iterator>

#include "ztportal/platform/locale/PosixLocale.h"

namespace zt {
namespace {

struct Modifier {
  std::string_view name;
  std::string_view script;
  std::string_view variant;
};

constexpr Modifier kModifiers[] = {
    {"arabic", "_Arab", ""},      {"cyrillic", "_Cyrl", ""}, {"devanagari", "_Deva", ""},
    {"iqtelif", "_Latn", ""},     {"latin", "_Latn", ""},    {"nynorsk", "", "NY"},
    {"valencia", "", "VALENCIA"},
};

}  // namespace

std::string icuLocaleName(std::string_view name) {
  constexpr const char* kPosix = "en_US_POSIX";
  if (isPosixLocale(name)) return kPosix;

  const PosixLocaleParts parts = posixLocaleParts(name);
  const auto* const known =
      std::find_if(std::begin(kModifiers), std::end(kModifiers),
                   [&](const Modifier& entry) { return entry.name == parts.modifier; });

  std::string identifier(parts.language);
  if (known != std::end(kModifiers)) identifier.append(known->script);
  identifier.append(parts.territory);
  if (known != std::end(kModifiers) && !known->variant.empty()) {
    // The variant is the third or fourth part even where there is no territory.
    identifier.append(parts.territory.empty() ? "__" : "_").append(known->variant);
  }
  if (parts.modifier.find('=') != std::string_view::npos) {
    identifier.append("@").append(parts.modifier);
  }

  const icu::Locale locale = icu::Locale::createCanonical(identifier.c_str());
  return locale.isBogus() ? kPosix : locale.getName();
}

}  // namespace zt
