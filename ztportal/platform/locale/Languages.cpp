// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/locale/Languages.h"

#include <unicode/locid.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string_view>
#include <utility>

#include "ztportal/base/Text.h"
#include "ztportal/platform/locale/PosixLocale.h"

namespace zt {

namespace {

struct EnglishName {
  std::string_view name;
  std::string_view tag;
};

constexpr EnglishName kEnglishNames[] = {
    {"Arabic", "ar"},     {"Bulgarian", "bg"},  {"Catalan", "ca"},   {"Chinese", "zh"},
    {"Croatian", "hr"},   {"Czech", "cs"},      {"Danish", "da"},    {"Dutch", "nl"},
    {"English", "en"},    {"Estonian", "et"},   {"Finnish", "fi"},   {"French", "fr"},
    {"German", "de"},     {"Greek", "el"},      {"Hebrew", "he"},    {"Hungarian", "hu"},
    {"Icelandic", "is"},  {"Italian", "it"},    {"Japanese", "ja"},  {"Korean", "ko"},
    {"Latvian", "lv"},    {"Lithuanian", "lt"}, {"Norwegian", "nb"}, {"Polish", "pl"},
    {"Portuguese", "pt"}, {"Romanian", "ro"},   {"Russian", "ru"},   {"Serbian", "sr"},
    {"Slovak", "sk"},     {"Slovenian", "sl"},  {"Spanish", "es"},   {"Swedish", "sv"},
    {"Thai", "th"},       {"Turkish", "tr"},    {"Ukrainian", "uk"}, {"Vietnamese", "vi"},
};

std::string tagOf(const icu::Locale& locale, UErrorCode status) {
  auto tag = locale.toLanguageTag<std::string>(status);
  return U_SUCCESS(status) ? tag : std::string();
}

/// The texts of a program that is not translated are English.
constexpr const char* kWithoutLocale = "en";

/// Languages whose regions reports tell apart; every region of English is.
constexpr std::string_view kReportedRegions[] = {"nl-BE", "pt-BR", "pt-PT"};

bool isReported(const std::string& withRegion) {
  return std::find(std::begin(kReportedRegions), std::end(kReportedRegions), withRegion) !=
         std::end(kReportedRegions);
}

/// The short tag of a POSIX locale name's language; empty if it is no locale name.
std::string languageOf(std::string_view localeName) {
  if (localeName == "C" || localeName == "POSIX") return kWithoutLocale;
  if (isPosixLocale(localeName)) return {};
  std::string identifier = icuLocaleName(localeName);
  identifier.erase(std::min(identifier.find('@'), identifier.size()));
  const std::string tag = canonicalLanguageTag(identifier);
  LanguageParts parts = languageParts(tag);
  if (parts.language == "zh") {
    const std::string script = languageParts(withLikelySubtags(tag)).script;
    return script.empty() ? parts.language : parts.language + "-" + script;
  }
  if (parts.language == "no") parts.language = "nb";
  if (parts.region.empty()) return parts.language;
  std::string withRegion = parts.language + "-" + parts.region;
  return parts.language == "en" || isReported(withRegion) ? withRegion : parts.language;
}

void addLanguage(std::vector<std::string>& languages, std::string_view localeName) {
  std::string language = languageOf(localeName);
  if (language.empty()) return;
  if (std::find(languages.begin(), languages.end(), language) != languages.end()) return;
  languages.push_back(std::move(language));
}

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

/// The kinds of matches, best first.
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

std::string canonicalLanguageTag(std::string_view name) {
  const auto* const english =
      std::find_if(std::begin(kEnglishNames), std::end(kEnglishNames),
                   [&](const EnglishName& entry) { return entry.name == name; });
  if (english != std::end(kEnglishNames)) return std::string(english->tag);

  std::string hyphenated(name);
  std::replace(hyphenated.begin(), hyphenated.end(), '_', '-');
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale locale = icu::Locale::forLanguageTag(hyphenated, status);
  locale.canonicalize(status);
  if (U_FAILURE(status)) return {};
  // Longer ones are reserved for future languages, and "Base" is no language.
  const std::string_view language = locale.getLanguage();
  if (language.size() != 2 && language.size() != 3) return {};
  return tagOf(locale, status);
}

LanguageParts languageParts(const std::string& tag) {
  if (tag.empty()) return {};
  UErrorCode status = U_ZERO_ERROR;
  const icu::Locale locale = icu::Locale::forLanguageTag(tag, status);
  if (U_FAILURE(status)) return {};
  return {locale.getLanguage(), locale.getScript(), locale.getCountry()};
}

std::string withLikelySubtags(const std::string& tag) {
  if (tag.empty()) return {};
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale locale = icu::Locale::forLanguageTag(tag, status);
  locale.addLikelySubtags(status);
  return tagOf(locale, status);
}

std::vector<std::string> preferredLanguages() {
  const std::string_view localeName = userLocaleName("LC_MESSAGES");
  std::vector<std::string> languages;
  const char* const list = isPosixLocale(localeName) ? nullptr : std::getenv("LANGUAGE");
  std::string_view rest = list == nullptr ? "" : list;
  while (!rest.empty()) addLanguage(languages, takeLine(rest, ':'));
  addLanguage(languages, localeName);
  if (languages.empty()) languages.emplace_back(kWithoutLocale);
  return languages;
}

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
