// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Printing.h"
#include "tests/support/ScopedEnvironment.h"
#include "ztportal/platform/locale/Languages.h"
#include "ztportal/pools/LanguageTable.h"
#include "ztportal/pools/ZtPortalDef.h"

namespace {

using zt::test::ScopedEnvironment;

struct Row {
  std::uint64_t value;
  std::string_view name;
  std::vector<std::string_view> codes;
};

const std::vector<Row>& table() {
  static const std::vector<Row> rows{
      {1, "NEUTRAL", {}},
      {2, "AFRIKAANS", {"af"}},
      {3, "ALBANIAN", {"sq"}},
      {4, "ARABIC", {"ar"}},
      {5, "BASQUE", {"eu"}},
      {6, "BELARUSIAN", {"be"}},
      {7, "BULGARIAN", {"bg"}},
      {8, "CATALAN", {"ca"}},
      {9, "CHINESE", {"zh-Hans", "zh-Hant"}},
      {10, "CROATIAN", {"hr"}},
      {11, "CZECH", {"cs"}},
      {12, "DANISH", {"da"}},
      {13, "DUTCH", {"nl", "nl-BE"}},
      {14, "ENGLISH", {"en", "en-AU", "en-BG", "en-CA", "en-US"}},
      {15, "ESTONIAN", {"et"}},
      {16, "FAROESE", {"fo"}},
      {17, "FINNISH", {"fi"}},
      {18, "FRENCH", {"fr"}},
      {19, "GERMAN", {"de"}},
      {20, "GREEK", {"el"}},
      {21, "HEBREW", {"he"}},
      {22, "HUNGARIAN", {"hu"}},
      {23, "ICELANDIC", {"is"}},
      {24, "INDONESIAN", {"id"}},
      {25, "ITALIAN", {"it"}},
      {26, "JAPANESE", {"ja"}},
      {27, "KOREAN", {"ko"}},
      {28, "LATVIAN", {"lv"}},
      {29, "LITHUANIAN", {"lt"}},
      {30, "NORWEGIAN", {"nn", "nb"}},
      {31, "POLISH", {"pl"}},
      {32, "PORTUGUESE", {"pt", "pt-PT", "pt-BR"}},
      {33, "ROMANIAN", {"ro"}},
      {34, "RUSSIAN", {"ru"}},
      {35, "", {"sr"}},
      {36, "SLOVAK", {"sk"}},
      {37, "SLOVENIAN", {"sl"}},
      {38, "SPANISH", {"es"}},
      {39, "SWEDISH", {"sv"}},
      {40, "THAI", {"th"}},
      {41, "TURKISH", {"tr"}},
      {42, "UKRAINIAN", {"uk"}},
      {43, "VIETNAMESE", {"vi"}},
  };
  return rows;
}

TEST(LanguageTableTest, EveryLanguageHasItsNumberNameAndCodes) {
  std::uint64_t next = 1;
  for (const Row& row : table()) {
    EXPECT_EQ(row.value, next++);
    EXPECT_EQ(ZtPortalDef::languageToString(row.value), row.name) << row.value;
    for (const std::string_view code : row.codes) {
      EXPECT_EQ(zt::languageOfCode(code), row.value) << code;
    }
  }
  EXPECT_EQ(next, 44U);
}

TEST(LanguageTableTest, OtherNumbersHaveNoName) {
  for (const std::uint64_t number :
       {std::uint64_t{0}, std::uint64_t{44}, ~std::uint64_t{0}, std::uint64_t{1} << 32 | 19}) {
    EXPECT_EQ(ZtPortalDef::languageToString(number), "") << number;
  }
}

TEST(LanguageTableTest, OtherCodesAreNeutral) {
  for (const std::string_view code : {"", "DE", "de-DE", "de-AT", "en-GB", "en-gb", "zh", "zh-hans",
                                      "zh-TW", "no", "sr-Latn", " de", "d", "gem"}) {
    EXPECT_EQ(zt::languageOfCode(code), 1U) << code;
  }
}

struct LocalesOfLanguage {
  std::uint64_t language;
  std::vector<const char*> locales;
};

/// Every locale of the C library whose language is in the table, without codesets.
const LocalesOfLanguage kLanguageLocales[] = {
    {ZtLanguageAfrikaans, {"af_ZA"}},
    {ZtLanguageAlbanian, {"sq_AL", "sq_MK"}},
    {ZtLanguageArabic,
     {"ar_AE", "ar_BH", "ar_DZ", "ar_EG", "ar_IN", "ar_IQ", "ar_JO", "ar_KW", "ar_LB", "ar_LY",
      "ar_MA", "ar_OM", "ar_QA", "ar_SA", "ar_SD", "ar_SS", "ar_SY", "ar_TN", "ar_YE"}},
    {ZtLanguageBasque, {"eu_ES", "eu_ES@euro", "eu_FR", "eu_FR@euro"}},
    {ZtLanguageBelarusian, {"be_BY", "be_BY@latin"}},
    {ZtLanguageBulgarian, {"bg_BG"}},
    {ZtLanguageCatalan, {"ca_AD", "ca_ES", "ca_ES@euro", "ca_ES@valencia", "ca_FR", "ca_IT"}},
    {ZtLanguageChinese, {"zh_CN", "zh_HK", "zh_SG", "zh_TW"}},
    {ZtLanguageCroatian, {"hr_HR"}},
    {ZtLanguageCzech, {"cs_CZ"}},
    {ZtLanguageDanish, {"da_DK"}},
    {ZtLanguageDutch, {"nl_AW", "nl_BE", "nl_BE@euro", "nl_NL", "nl_NL@euro"}},
    {ZtLanguageNeutral,
     {"en_AG", "en_BW", "en_DK", "en_GB", "en_HK", "en_IE", "en_IE@euro", "en_IL", "en_IN", "en_NG",
      "en_NZ", "en_PH", "en_SC", "en_SG", "en_ZA", "en_ZM", "en_ZW"}},
    {ZtLanguageEnglish, {"en_AU", "en_CA", "en_US"}},
    {ZtLanguageEstonian, {"et_EE"}},
    {ZtLanguageFaroese, {"fo_FO"}},
    {ZtLanguageFinnish, {"fi_FI", "fi_FI@euro"}},
    {ZtLanguageFrench,
     {"fr_BE", "fr_BE@euro", "fr_CA", "fr_CH", "fr_FR", "fr_FR@euro", "fr_LU", "fr_LU@euro"}},
    {ZtLanguageGerman,
     {"de_AT", "de_AT@euro", "de_BE", "de_BE@euro", "de_CH", "de_DE", "de_DE@euro", "de_IT",
      "de_LI", "de_LU", "de_LU@euro"}},
    {ZtLanguageGreek, {"el_CY", "el_GR", "el_GR@euro"}},
    {ZtLanguageHebrew, {"he_IL"}},
    {ZtLanguageHungarian, {"hu_HU"}},
    {ZtLanguageIcelandic, {"is_IS"}},
    {ZtLanguageIndonesian, {"id_ID"}},
    {ZtLanguageItalian, {"it_CH", "it_IT", "it_IT@euro"}},
    {ZtLanguageJapanese, {"ja_JP"}},
    {ZtLanguageKorean, {"ko_KR"}},
    {ZtLanguageLatvian, {"lv_LV"}},
    {ZtLanguageLithuanian, {"lt_LT"}},
    {ZtLanguageNorwegian, {"nb_NO", "nn_NO"}},
    {ZtLanguagePolish, {"pl_PL"}},
    {ZtLanguagePortuguese, {"pt_BR", "pt_PT", "pt_PT@euro"}},
    {ZtLanguageRomanian, {"ro_RO"}},
    {ZtLanguageRussian, {"ru_RU", "ru_UA"}},
    {ZtLanguageSerbian, {"sr_ME", "sr_RS", "sr_RS@latin"}},
    {ZtLanguageSlovak, {"sk_SK"}},
    {ZtLanguageSlovenian, {"sl_SI"}},
    {ZtLanguageSpanish,
     {"es_AR", "es_BO",      "es_CL", "es_CO", "es_CR", "es_CU", "es_DO", "es_EC",
      "es_ES", "es_ES@euro", "es_GT", "es_HN", "es_MX", "es_NI", "es_PA", "es_PE",
      "es_PR", "es_PY",      "es_SV", "es_US", "es_UY", "es_VE"}},
    {ZtLanguageSwedish, {"sv_FI", "sv_FI@euro", "sv_SE"}},
    {ZtLanguageThai, {"th_TH"}},
    {ZtLanguageTurkish, {"tr_CY", "tr_TR"}},
    {ZtLanguageUkrainian, {"uk_UA"}},
    {ZtLanguageVietnamese, {"vi_VN"}},
};

// Of these, only the English regions that the table lacks are neutral. Many others were: their
// regions were kept.
TEST(LanguageTableTest, EveryLocaleHasItsLanguage) {
  const ScopedEnvironment list("LANGUAGE", nullptr);
  for (const LocalesOfLanguage& row : kLanguageLocales) {
    for (const char* name : row.locales) {
      const ScopedEnvironment all("LC_ALL", name);
      EXPECT_EQ(zt::languageOfCode(zt::preferredLanguages().front()), row.language) << name;
    }
  }
}

/// Which regions a user's languages keep is decided without this table.
TEST(LanguageTableTest, EveryCodeIsThatOfALocale) {
  const ScopedEnvironment list("LANGUAGE", nullptr);
  for (const Row& row : table()) {
    for (const std::string_view code : row.codes) {
      std::string name(code);
      std::replace(name.begin(), name.end(), '-', '_');
      const ScopedEnvironment all("LC_ALL", name.c_str());
      EXPECT_EQ(zt::preferredLanguages().front(), code);
    }
  }
}

TEST(LanguageTableTest, TheEnumerationHasTheNumbers) {
  EXPECT_EQ(ZtLanguageNeutral, 1U);
  EXPECT_EQ(ZtLanguageGerman, 19U);
  EXPECT_EQ(ZtLanguageSerbian, 35U);
  EXPECT_EQ(ZtLanguageVietnamese, 43U);
  static_assert(sizeof(ZtLanguage) == 8);
}

}  // namespace
