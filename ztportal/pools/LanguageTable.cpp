// SPDX-License-Identifier: Apache-2.0
#include "ztportal/pools/LanguageTable.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "ztportal/pools/ZtLanguage.h"

namespace zt {

namespace {

/// By number, starting with neutral.
constinit const std::array<ZtString, ZtLanguageVietnamese> kNames{
    ZtString::constant<"NEUTRAL">(),    ZtString::constant<"AFRIKAANS">(),
    ZtString::constant<"ALBANIAN">(),   ZtString::constant<"ARABIC">(),
    ZtString::constant<"BASQUE">(),     ZtString::constant<"BELARUSIAN">(),
    ZtString::constant<"BULGARIAN">(),  ZtString::constant<"CATALAN">(),
    ZtString::constant<"CHINESE">(),    ZtString::constant<"CROATIAN">(),
    ZtString::constant<"CZECH">(),      ZtString::constant<"DANISH">(),
    ZtString::constant<"DUTCH">(),      ZtString::constant<"ENGLISH">(),
    ZtString::constant<"ESTONIAN">(),   ZtString::constant<"FAROESE">(),
    ZtString::constant<"FINNISH">(),    ZtString::constant<"FRENCH">(),
    ZtString::constant<"GERMAN">(),     ZtString::constant<"GREEK">(),
    ZtString::constant<"HEBREW">(),     ZtString::constant<"HUNGARIAN">(),
    ZtString::constant<"ICELANDIC">(),  ZtString::constant<"INDONESIAN">(),
    ZtString::constant<"ITALIAN">(),    ZtString::constant<"JAPANESE">(),
    ZtString::constant<"KOREAN">(),     ZtString::constant<"LATVIAN">(),
    ZtString::constant<"LITHUANIAN">(), ZtString::constant<"NORWEGIAN">(),
    ZtString::constant<"POLISH">(),     ZtString::constant<"PORTUGUESE">(),
    ZtString::constant<"ROMANIAN">(),   ZtString::constant<"RUSSIAN">(),
    ZtString::constant<"">(),  // Serbian
    ZtString::constant<"SLOVAK">(),     ZtString::constant<"SLOVENIAN">(),
    ZtString::constant<"SPANISH">(),    ZtString::constant<"SWEDISH">(),
    ZtString::constant<"THAI">(),       ZtString::constant<"TURKISH">(),
    ZtString::constant<"UKRAINIAN">(),  ZtString::constant<"VIETNAMESE">(),
};

constinit const ZtString kNoName = ZtString::constant<"">();

struct Code {
  std::string_view code;
  ZtLanguage language;
};

/// Deliberately has "en-BG" and not British English: servers group reports by these codes.
constexpr std::array<Code, 51> kCodes{{
    {"af", ZtLanguageAfrikaans},     {"sq", ZtLanguageAlbanian},
    {"ar", ZtLanguageArabic},        {"eu", ZtLanguageBasque},
    {"be", ZtLanguageBelarusian},    {"bg", ZtLanguageBulgarian},
    {"ca", ZtLanguageCatalan},       {"zh-Hans", ZtLanguageChinese},
    {"zh-Hant", ZtLanguageChinese},  {"hr", ZtLanguageCroatian},
    {"cs", ZtLanguageCzech},         {"da", ZtLanguageDanish},
    {"nl", ZtLanguageDutch},         {"nl-BE", ZtLanguageDutch},
    {"en", ZtLanguageEnglish},       {"en-AU", ZtLanguageEnglish},
    {"en-BG", ZtLanguageEnglish},    {"en-CA", ZtLanguageEnglish},
    {"en-US", ZtLanguageEnglish},    {"et", ZtLanguageEstonian},
    {"fo", ZtLanguageFaroese},       {"fi", ZtLanguageFinnish},
    {"fr", ZtLanguageFrench},        {"de", ZtLanguageGerman},
    {"el", ZtLanguageGreek},         {"he", ZtLanguageHebrew},
    {"hu", ZtLanguageHungarian},     {"is", ZtLanguageIcelandic},
    {"id", ZtLanguageIndonesian},    {"it", ZtLanguageItalian},
    {"ja", ZtLanguageJapanese},      {"ko", ZtLanguageKorean},
    {"lv", ZtLanguageLatvian},       {"lt", ZtLanguageLithuanian},
    {"nn", ZtLanguageNorwegian},     {"nb", ZtLanguageNorwegian},
    {"pl", ZtLanguagePolish},        {"pt", ZtLanguagePortuguese},
    {"pt-PT", ZtLanguagePortuguese}, {"pt-BR", ZtLanguagePortuguese},
    {"ro", ZtLanguageRomanian},      {"ru", ZtLanguageRussian},
    {"sr", ZtLanguageSerbian},       {"sk", ZtLanguageSlovak},
    {"sl", ZtLanguageSlovenian},     {"es", ZtLanguageSpanish},
    {"sv", ZtLanguageSwedish},       {"th", ZtLanguageThai},
    {"tr", ZtLanguageTurkish},       {"uk", ZtLanguageUkrainian},
    {"vi", ZtLanguageVietnamese},
}};

}  // namespace

const ZtString& languageName(std::uint64_t language) {
  if (language < ZtLanguageNeutral || language > ZtLanguageVietnamese) return kNoName;
  return kNames[static_cast<std::size_t>(language - ZtLanguageNeutral)];
}

std::uint64_t languageOfCode(std::string_view code) {
  const auto* const found = std::find_if(kCodes.begin(), kCodes.end(),
                                         [code](const Code& row) { return row.code == code; });
  return found != kCodes.end() ? found->language : ZtLanguageNeutral;
}

}  // namespace zt
