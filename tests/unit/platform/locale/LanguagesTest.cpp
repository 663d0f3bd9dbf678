// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/ScopedEnvironment.h"
#include "ztportal/platform/locale/Languages.h"

namespace {

using testing::ElementsAre;
using zt::test::ScopedEnvironment;

TEST(LanguageTagTest, IsCanonical) {
  struct Row {
    const char* name;
    const char* tag;
  };
  const Row rows[] = {
      {"de", "de"},
      {"de_DE", "de-DE"},
      {"DE-de", "de-DE"},
      {"pt_BR", "pt-BR"},
      {"zh-Hans", "zh-Hans"},
      {"zh_hant_TW", "zh-Hant-TW"},
      {"zh-Hans_CN", "zh-Hans-CN"},
      {"es-419", "es-419"},
      {"ca-valencia", "ca-valencia"},
      {"iw", "he"},
      {"mo", "ro"},
      {"gsw", "gsw"},
      {"English", "en"},
      {"German", "de"},
      {"French", "fr"},
      {"Italian", "it"},
      {"Spanish", "es"},
      {"Japanese", "ja"},
      {"Dutch", "nl"},
      {"Norwegian", "nb"},
      {"Vietnamese", "vi"},
      {"", ""},
      {"Base", ""},
      {"english", ""},
      {"Klingon", ""},
      {"d", ""},
      {"de-", ""},
      {"-de", ""},
      {"de DE", ""},
      {"de_DE.UTF-8", ""},
      {"und", ""},
      {"und-DE", ""},
      {"x-private", ""},
      {"d\xc3\xa4", ""},
  };
  for (const Row& row : rows) EXPECT_EQ(zt::canonicalLanguageTag(row.name), row.tag) << row.name;
}

TEST(LanguageTagTest, IsCanonicalOnceAndForAll) {
  for (const char* name : {"pt_BR", "English", "zh-Hans", "iw", "ca-valencia", "sh_YU", "no"}) {
    const std::string tag = zt::canonicalLanguageTag(name);
    EXPECT_NE(tag, "") << name;
    EXPECT_EQ(zt::canonicalLanguageTag(tag), tag) << name;
  }
}

TEST(LanguageTagTest, HasParts) {
  const zt::LanguageParts whole = zt::languageParts("zh-Hant-TW");
  EXPECT_EQ(whole.language, "zh");
  EXPECT_EQ(whole.script, "Hant");
  EXPECT_EQ(whole.region, "TW");
  const zt::LanguageParts bare = zt::languageParts("de");
  EXPECT_EQ(bare.language, "de");
  EXPECT_EQ(bare.script, "");
  EXPECT_EQ(bare.region, "");
}

TEST(LanguageTagTest, GainsTheLikelyScriptAndRegion) {
  EXPECT_EQ(zt::withLikelySubtags("de"), "de-Latn-DE");
  EXPECT_EQ(zt::withLikelySubtags("de-AT"), "de-Latn-AT");
  EXPECT_EQ(zt::withLikelySubtags("zh-TW"), "zh-Hant-TW");
  EXPECT_EQ(zt::withLikelySubtags("sr-Latn"), "sr-Latn-RS");
}

TEST(LanguageTagTest, NoLanguageStaysNoLanguage) {
  EXPECT_EQ(zt::withLikelySubtags(""), "");
  EXPECT_EQ(zt::languageParts("").language, "");
}

/// The languages with these variables; null: not set.
std::vector<std::string> languages(const char* language, const char* all, const char* messages,
                                   const char* lang) {
  const ScopedEnvironment scopedLanguage("LANGUAGE", language);
  const ScopedEnvironment scopedAll("LC_ALL", all);
  const ScopedEnvironment scopedMessages("LC_MESSAGES", messages);
  const ScopedEnvironment scopedLang("LANG", lang);
  return zt::preferredLanguages();
}

TEST(PreferredLanguagesTest, AreTheCodesOfReports) {
  struct Row {
    const char* locale;
    const char* code;
  };
  const Row rows[] = {
      {"de_DE.UTF-8", "de"},
      {"de_DE@euro", "de"},
      {"de_AT", "de"},
      {"de", "de"},
      {"fr_CA", "fr"},
      {"ja_JP.eucJP", "ja"},
      {"es_MX", "es"},
      {"es_419", "es"},
      {"sr_ME", "sr"},
      {"sr_RS@latin", "sr"},
      {"ca_ES@valencia", "ca"},
      {"pt_BR", "pt-BR"},
      {"pt_PT", "pt-PT"},
      {"pt_AO", "pt"},
      {"pt", "pt"},
      {"nl_NL", "nl"},
      {"nl_BE", "nl-BE"},
      {"en_US", "en-US"},
      {"en_GB", "en-GB"},
      {"en", "en"},
      {"zh_CN", "zh-Hans"},
      {"zh_SG", "zh-Hans"},
      {"zh_TW", "zh-Hant"},
      {"zh_HK", "zh-Hant"},
      {"zh_MO", "zh-Hant"},
      {"zh", "zh-Hans"},
      {"zh_Hant_CN", "zh-Hant"},
      {"nn_NO", "nn"},
      {"nb_NO", "nb"},
      {"no_NO", "nb"},
      {"iw_IL", "he"},
      {"gsw_CH", "gsw"},
      {"th_TH@calendar=gregorian", "th"},
      {"uk_UA.KOI8-U", "uk"},
  };
  for (const Row& row : rows) {
    EXPECT_THAT(languages(nullptr, nullptr, nullptr, row.locale), ElementsAre(row.code))
        << row.locale;
  }
}

TEST(PreferredLanguagesTest, AreThoseOfTheListThenThatOfTheLocale) {
  EXPECT_THAT(languages("fr:de_AT:en", nullptr, nullptr, "de_DE.UTF-8"),
              ElementsAre("fr", "de", "en"));
}

TEST(PreferredLanguagesTest, AreNamedOnce) {
  EXPECT_THAT(languages("de:de_DE:fr_FR:de", nullptr, nullptr, "fr"), ElementsAre("de", "fr"));
}

TEST(PreferredLanguagesTest, LeaveOutWhatIsNoLanguage) {
  EXPECT_THAT(languages("::fr:nonsense:", nullptr, nullptr, "de_DE"), ElementsAre("fr", "de"));
}

TEST(PreferredLanguagesTest, AreEnglishForAnUntranslatedEntryOfTheList) {
  EXPECT_THAT(languages("fr:C", nullptr, nullptr, "de_DE"), ElementsAre("fr", "en", "de"));
  EXPECT_THAT(languages("POSIX", nullptr, nullptr, "de_DE"), ElementsAre("en", "de"));
}

TEST(PreferredLanguagesTest, TakeTheFirstLocaleThatIsSetAndNotEmpty) {
  EXPECT_THAT(languages(nullptr, "fr_FR", "ja_JP", "de_DE"), ElementsAre("fr"));
  EXPECT_THAT(languages(nullptr, "", "ja_JP", "de_DE"), ElementsAre("ja"));
  EXPECT_THAT(languages(nullptr, nullptr, "", "de_DE"), ElementsAre("de"));
}

// There was no language in these locales, which containers, services and installers run in, and the
// inventory ended early: it listed no application.
TEST(PreferredLanguagesTest, AreEnglishInTheCLocaleWhateverTheListSays) {
  for (const char* locale : {"C", "POSIX", "C.UTF-8", "C.utf8", "nonsense", "und_DE", "",
                             static_cast<const char*>(nullptr)}) {
    EXPECT_THAT(languages(nullptr, nullptr, nullptr, locale), ElementsAre("en"))
        << (locale == nullptr ? "unset" : locale);
  }
  EXPECT_THAT(languages("fr:de", nullptr, nullptr, "C.UTF-8"), ElementsAre("en"));
  EXPECT_THAT(languages("fr:de", "C", nullptr, "de_DE"), ElementsAre("en"));
}

using Names = std::vector<std::string>;

TEST(LocalizationMatchTest, PutsTheBestMatchFirst) {
  struct Row {
    Names available;
    Names preferred;
    ZtString developmentRegion;
    std::vector<ZtString> matches;
  };
  const Row rows[] = {
      // That very language, in the user's order.
      {{"de", "en", "fr"}, {"de"}, "en", {"de"}},
      {{"de", "en", "fr"}, {"fr", "de"}, "en", {"fr", "de"}},
      {{"pt-BR", "pt-PT"}, {"pt-PT"}, nullptr, {"pt-PT", "pt-BR"}},
      // In the bundle's spelling, whatever that is.
      {{"pt_BR"}, {"pt-BR"}, nullptr, {"pt_BR"}},
      {{"German", "English"}, {"de"}, "English", {"German"}},
      {{"de_DE"}, {"de"}, nullptr, {"de_DE"}},
      {{"zh_TW", "zh_CN"}, {"zh-Hans"}, nullptr, {"zh_CN"}},
      {{"zh_TW", "zh_CN"}, {"zh-Hant"}, nullptr, {"zh_TW"}},
      // Then without region and script, then other regions in the same script.
      {{"de", "de-AT"}, {"de-AT"}, nullptr, {"de-AT", "de"}},
      {{"de"}, {"de-AT"}, nullptr, {"de"}},
      {{"de-CH", "de"}, {"de-AT"}, nullptr, {"de", "de-CH"}},
      {{"en-GB", "en-AU"}, {"en-US"}, nullptr, {"en-GB", "en-AU"}},
      {{"zh"}, {"zh-Hant"}, nullptr, {"zh"}},
      {{"zh-HK"}, {"zh-Hant"}, nullptr, {"zh-HK"}},
      {{"zh-Hans"}, {"zh-Hant"}, nullptr, {}},
      {{"sr-Latn"}, {"sr"}, nullptr, {}},
      // A language of lower preference does not overtake a weaker match.
      {{"de", "en"}, {"de-AT", "en"}, nullptr, {"de", "en"}},
      // Each localization once.
      {{"de"}, {"de", "de-AT"}, nullptr, {"de"}},
      // The development region when nothing else is found, and only then.
      {{"de", "en"}, {"ja"}, "en", {"en"}},
      {{"German", "English"}, {"ja"}, "en", {"English"}},
      {{"de", "en"}, {"ja"}, "fr", {}},
      {{"de", "en"}, {"ja"}, nullptr, {}},
      {{"de", "en"}, {"ja"}, "", {}},
      {{"de", "en"}, {}, "en", {"en"}},
      {{"de", "en"}, {"de"}, "en", {"de"}},
      // What names no language matches nothing.
      {{"Base", "de"}, {"de"}, "en", {"de"}},
      {{"Base"}, {"de"}, "Base", {}},
      {{"de"}, {"nonsense", ""}, nullptr, {}},
      {{}, {"de"}, "en", {}},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(zt::matchLocalizations(row.available, row.preferred, row.developmentRegion),
              row.matches)
        << testing::PrintToString(row.available) << " for "
        << testing::PrintToString(row.preferred);
  }
}

}  // namespace
