#include "ztportal/platform/locale/LocalizationMatch.h"

#include <algorithm>

#include "ztportal/platform/locale/LanguageTag.h"

namespace zt {
namespace {

struct Language {
  explicit Language(std::string_view name)
      : tag(canonicalLanguageTag(name)),
        likely(withLikelySubtags(tag)),
        parts(languageParts(tag)),
        likelyParts(languageParts(likely)) {}

  std::string tag;
  std::string likely;
  LanguageParts parts;
  LanguageParts likelyParts;
};

using Matches = bool (*)(const Language& localization, const Language& wanted);

/// What counts as a match, the best kind first.
constexpr Matches kMatches[] = {
    [](const Language& localization, const Language& wanted) {
      return localization.tag == wanted.tag;
    },
    [](const Language& localization, const Language& wanted) {
      return localization.likely == wanted.likely;
    },
    [](const Language& localization, const Language& wanted) {
      return localization.tag == wanted.parts.language;
    },
    [](const Language& localization, const Language& wanted) {
      return localization.parts.language == wanted.parts.language &&
             localization.likelyParts.script == wanted.likelyParts.script;
    },
};

struct Localization {
  ZtString name;
  Language language;
  bool taken = false;
};

}  // namespace

std::vector<ZtString> matchLocalizations(const std::vector<std::string>& available,
                                         const std::vector<std::string>& preferred,
                                         const ZtString& developmentRegion) {
  std::vector<Localization> localizations;
  for (const std::string& name : available) {
    Language language(name);
    if (!language.tag.empty()) localizations.push_back({name, std::move(language)});
  }

  std::vector<ZtString> matches;
  for (const std::string& name : preferred) {
    const Language wanted(name);
    if (wanted.tag.empty()) continue;
    for (const Matches isMatch : kMatches) {
      for (Localization& localization : localizations) {
        if (localization.taken || !isMatch(localization.language, wanted)) continue;
        localization.taken = true;
        matches.push_back(localization.name);
      }
    }
  }
  if (!matches.empty()) return matches;

  const std::string development = canonicalLanguageTag(developmentRegion.view());
  const auto found = std::find_if(
      localizations.begin(), localizations.end(),
      [&](const Localization& localization) { return localization.language.tag == development; });
  if (found != localizations.end()) matches.push_back(found->name);
  return matches;
}

}  // namespace zt
