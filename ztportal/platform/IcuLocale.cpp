#include "ztportal/platform/IcuLocale.h"

#include <unicode/locid.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

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

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// What stands before the codeset and the modifier: "de_DE".
std::string_view languageAndTerritory(std::string_view name) {
  return name.substr(0, name.find_first_of(".@"));
}

std::string_view languageOf(std::string_view languageAndTerritory) {
  return languageAndTerritory.substr(0, languageAndTerritory.find_first_of("_-"));
}

std::string_view modifierOf(std::string_view name) {
  const std::size_t at = name.find('@');
  return at == std::string_view::npos ? std::string_view() : name.substr(at + 1);
}

}  // namespace

std::string_view userLocaleName(const char* category) {
  for (const char* variable : {"LC_ALL", category, "LANG"}) {
    const char* const name = std::getenv(variable);
    if (name != nullptr && *name != '\0') return name;
  }
  return "C";
}

bool isPosixLocale(std::string_view name) {
  const std::string_view language = languageOf(languageAndTerritory(name));
  const bool isLanguage = (language.size() == 2 || language.size() == 3) &&
                          std::all_of(language.begin(), language.end(), isLetter);
  return !isLanguage;
}

std::string icuLocaleName(std::string_view name) {
  constexpr const char* kPosix = "en_US_POSIX";
  if (isPosixLocale(name)) return kPosix;

  const std::string_view body = languageAndTerritory(name);
  const std::string_view language = languageOf(body);
  const std::string_view territory = body.substr(language.size());
  const std::string_view modifier = modifierOf(name);
  const auto* const known =
      std::find_if(std::begin(kModifiers), std::end(kModifiers),
                   [&](const Modifier& entry) { return entry.name == modifier; });

  std::string identifier(language);
  if (known != std::end(kModifiers)) identifier.append(known->script);
  identifier.append(territory);
  if (known != std::end(kModifiers) && !known->variant.empty()) {
    // The variant is the third or fourth part even where there is no territory.
    identifier.append(territory.empty() ? "__" : "_").append(known->variant);
  }
  if (modifier.find('=') != std::string_view::npos) identifier.append("@").append(modifier);

  const icu::Locale locale = icu::Locale::createCanonical(identifier.c_str());
  return locale.isBogus() ? kPosix : locale.getName();
}

}  // namespace zt
