#include "ztportal/platform/locale/LanguageTag.h"

#include <unicode/locid.h>

#include <algorithm>
#include <iterator>

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
  // Longer ones are reserved for languages to come, and "Base" is no language.
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

std::string withoutLikelySubtags(const std::string& tag) {
  if (tag.empty()) return {};
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale locale = icu::Locale::forLanguageTag(tag, status);
  locale.minimizeSubtags(status);
  return tagOf(locale, status);
}

}  // namespace zt
