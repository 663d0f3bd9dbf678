#include "ztportal/platform/locale/PreferredLanguages.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "ztportal/platform/locale/IcuLocale.h"
#include "ztportal/platform/locale/LanguageTag.h"
#include "ztportal/platform/locale/PosixLocale.h"

namespace zt {
namespace {

/// The short code of a POSIX locale name's language; empty when it has none.
std::string languageOf(std::string_view localeName) {
  if (isPosixLocale(localeName)) return {};
  std::string identifier = icuLocaleName(localeName);
  identifier.erase(std::min(identifier.find('@'), identifier.size()));
  const std::string tag = canonicalLanguageTag(identifier);
  LanguageParts parts = languageParts(tag);
  if (parts.language.empty()) return {};
  if (parts.language == "zh") {
    const std::string script = languageParts(withLikelySubtags(tag)).script;
    return script.empty() ? parts.language : parts.language + "-" + script;
  }
  if (parts.language == "no") parts.language = "nb";
  if (parts.region.empty()) return parts.language;

  std::string withRegion = parts.language + "-" + parts.region;
  if (parts.language == "en" || parts.language == "pt") return withRegion;
  return withoutLikelySubtags(withRegion);
}

void addLanguage(std::vector<std::string>& languages, std::string_view localeName) {
  std::string language = languageOf(localeName);
  if (language.empty()) return;
  if (std::find(languages.begin(), languages.end(), language) != languages.end()) return;
  languages.push_back(std::move(language));
}

}  // namespace

std::vector<std::string> preferredLanguages() {
  const std::string_view localeName = userLocaleName("LC_MESSAGES");
  if (isPosixLocale(localeName)) return {};

  std::vector<std::string> languages;
  const char* const list = std::getenv("LANGUAGE");
  std::string_view rest = list == nullptr ? "" : list;
  while (!rest.empty()) {
    const std::size_t colon = std::min(rest.find(':'), rest.size());
    addLanguage(languages, rest.substr(0, colon));
    rest.remove_prefix(std::min(colon + 1, rest.size()));
  }
  addLanguage(languages, localeName);
  return languages;
}

}  // namespace zt
