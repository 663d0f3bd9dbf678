#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/ScopedEnvironment.h"
#include "ztportal/platform/locale/Languages.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using zt::test::ScopedEnvironment;

/// The languages with these variables; null: not set.
std::vector<std::string> languages(const char* language, const char* all, const char* messages,
                                   const char* lang) {
  const ScopedEnvironment scopedLanguage("LANGUAGE", language);
  const ScopedEnvironment scopedAll("LC_ALL", all);
  const ScopedEnvironment scopedMessages("LC_MESSAGES", messages);
  const ScopedEnvironment scopedLang("LANG", lang);
  return zt::preferredLanguages();
}

TEST(PreferredLanguagesTest, AreShortCodes) {
  struct Row {
    const char* locale;
    const char* code;
  };
  const Row rows[] = {
      {"de_DE.UTF-8", "de"},     {"de_DE@euro", "de"},  {"de_AT", "de-AT"},
      {"de_CH", "de-CH"},        {"de", "de"},          {"fr_FR", "fr"},
      {"fr_CA", "fr-CA"},        {"ja_JP", "ja"},       {"ja_JP.eucJP", "ja"},
      {"pt_BR", "pt-BR"},        {"pt_PT", "pt-PT"},    {"pt", "pt"},
      {"en_US", "en-US"},        {"en_GB", "en-GB"},    {"en", "en"},
      {"zh_CN", "zh-Hans"},      {"zh_SG", "zh-Hans"},  {"zh_TW", "zh-Hant"},
      {"zh_HK", "zh-Hant"},      {"zh_MO", "zh-Hant"},  {"zh", "zh-Hans"},
      {"zh_Hant_CN", "zh-Hant"}, {"nl_NL", "nl"},       {"nl_BE", "nl-BE"},
      {"nn_NO", "nn"},           {"nb_NO", "nb"},       {"no_NO", "nb"},
      {"sr_RS", "sr"},           {"sr_RS@latin", "sr"}, {"sr_ME", "sr-ME"},
      {"ca_ES@valencia", "ca"},  {"es_ES", "es"},       {"es_MX", "es-MX"},
      {"iw_IL", "he"},           {"gsw_CH", "gsw"},     {"th_TH@calendar=gregorian", "th"},
      {"uk_UA.KOI8-U", "uk"},
  };
  for (const Row& row : rows) {
    EXPECT_THAT(languages(nullptr, nullptr, nullptr, row.locale), ElementsAre(row.code))
        << row.locale;
  }
}

TEST(PreferredLanguagesTest, AreThoseOfTheListThenThatOfTheLocale) {
  EXPECT_THAT(languages("fr:de_AT:en", nullptr, nullptr, "de_DE.UTF-8"),
              ElementsAre("fr", "de-AT", "en", "de"));
}

TEST(PreferredLanguagesTest, AreNamedOnce) {
  EXPECT_THAT(languages("de:de_DE:fr_FR:de", nullptr, nullptr, "fr"), ElementsAre("de", "fr"));
}

TEST(PreferredLanguagesTest, LeaveOutWhatIsNoLanguage) {
  EXPECT_THAT(languages(":C::POSIX:fr:nonsense:", nullptr, nullptr, "de_DE"),
              ElementsAre("fr", "de"));
}

TEST(PreferredLanguagesTest, TakeTheFirstLocaleThatIsSetAndNotEmpty) {
  EXPECT_THAT(languages(nullptr, "fr_FR", "ja_JP", "de_DE"), ElementsAre("fr"));
  EXPECT_THAT(languages(nullptr, "", "ja_JP", "de_DE"), ElementsAre("ja"));
  EXPECT_THAT(languages(nullptr, nullptr, "", "de_DE"), ElementsAre("de"));
}

TEST(PreferredLanguagesTest, AreNoneInTheCLocaleWhateverTheListSays) {
  for (const char* locale : {"C", "POSIX", "C.UTF-8", "", static_cast<const char*>(nullptr)}) {
    EXPECT_THAT(languages("fr:de", nullptr, nullptr, locale), IsEmpty())
        << (locale == nullptr ? "unset" : locale);
  }
  EXPECT_THAT(languages("fr:de", "C", nullptr, "de_DE"), IsEmpty());
}

}  // namespace
