// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/locale/PosixLocale.h"

#include <unicode/locid.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "ztportal/base/Text.h"

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

std::string_view userLocaleName(const char* category) {
  for (const char* variable : {"LC_ALL", category, "LANG"}) {
    const char* const name = std::getenv(variable);
    if (name != nullptr && *name != '\0') return name;
  }
  return "C";
}

PosixLocaleParts posixLocaleParts(std::string_view name) {
  const std::string_view body = name.substr(0, name.find_first_of(".@"));
  const std::string_view language = body.substr(0, body.find_first_of("_-"));
  const std::size_t at = std::min(name.find('@'), name.size());
  return {language, body.substr(language.size()), name.substr(std::min(at + 1, name.size()))};
}

bool isPosixLocale(std::string_view name) {
  const std::string_view language = posixLocaleParts(name).language;
  const bool isLanguage = (language.size() == 2 || language.size() == 3) &&
                          std::all_of(language.begin(), language.end(), isLetter);
  return !isLanguage;
}

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
    // The variant is the third or fourth part even without a territory.
    identifier.append(parts.territory.empty() ? "__" : "_").append(known->variant);
  }
  if (parts.modifier.find('=') != std::string_view::npos) {
    identifier.append("@").append(parts.modifier);
  }

  const icu::Locale locale = icu::Locale::createCanonical(identifier.c_str());
  return locale.isBogus() ? kPosix : locale.getName();
}

}  // namespace zt
