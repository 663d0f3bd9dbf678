#include <gtest/gtest.h>

#include "tests/support/ScopedEnvironment.h"
#include "ztportal/platform/locale/IcuUserLocale.h"

namespace {

using zt::test::ScopedEnvironment;

class IcuUserLocaleTest : public testing::Test {
 protected:
  zt::IcuUserLocale locale;

 private:
  ScopedEnvironment _all{"LC_ALL", nullptr};
  ScopedEnvironment _time{"LC_TIME", nullptr};
};

TEST_F(IcuUserLocaleTest, HasTheLanguageAndTheCountryOfTheEnvironment) {
  struct Row {
    const char* name;
    ZtString language;
    ZtString country;
  };
  const Row rows[] = {
      {"de_DE.UTF-8", "de", "DE"}, {"de_DE@euro", "de", "DE"},  {"pt_BR", "pt", "BR"},
      {"sr_RS@latin", "sr", "RS"}, {"zh_TW", "zh", "TW"},       {"iw_IL", "he", "IL"},
      {"gsw_CH", "gsw", "CH"},     {"de", "de", nullptr},       {"es_419", "es", nullptr},
      {"C", nullptr, nullptr},     {"POSIX", nullptr, nullptr}, {"C.UTF-8", nullptr, nullptr},
      {"", nullptr, nullptr},
  };
  for (const Row& row : rows) {
    const ScopedEnvironment lang("LANG", row.name);
    EXPECT_EQ(locale.languageCode(), row.language) << row.name;
    EXPECT_EQ(locale.countryCode(), row.country) << row.name;
  }
}

TEST_F(IcuUserLocaleTest, FollowsTheFirstVariableThatIsSet) {
  const ScopedEnvironment lang("LANG", "de_DE");
  EXPECT_EQ(locale.countryCode(), "DE");
  const ScopedEnvironment time("LC_TIME", "fr_FR");
  EXPECT_EQ(locale.countryCode(), "FR");
  const ScopedEnvironment all("LC_ALL", "ja_JP");
  EXPECT_EQ(locale.countryCode(), "JP");
}

TEST_F(IcuUserLocaleTest, NamesACountryInItsOwnLanguage) {
  struct Row {
    const char* locale;
    ZtString code;
    ZtString name;
  };
  const Row rows[] = {
      {"de_DE.UTF-8", "DE", "Deutschland"},
      {"de_DE.UTF-8", "FR", "Frankreich"},
      {"fr_FR.UTF-8", "DE", "Allemagne"},
      {"en_US.UTF-8", "DE", "Germany"},
      {"ja_JP.UTF-8", "JP", "日本"},
      {"sr_RS@latin", "DE", "Nemačka"},
      {"sr_RS", "DE", "Немачка"},
      {"C", "DE", "Germany"},
      {"de_DE.UTF-8", "ZZ", "Unbekannte Region"},
      {"de_DE.UTF-8", nullptr, nullptr},
      {"de_DE.UTF-8", "", nullptr},
      {"de_DE.UTF-8", "no country", nullptr},
  };
  for (const Row& row : rows) {
    const ScopedEnvironment lang("LANG", row.locale);
    EXPECT_EQ(locale.countryName(row.code), row.name) << row.locale << " " << row.code.printed();
  }
}

TEST_F(IcuUserLocaleTest, GivesLocalizationsTheirCanonicalIdentifier) {
  EXPECT_EQ(locale.canonicalLanguageIdentifier("de_DE"), "de-DE");
  EXPECT_EQ(locale.canonicalLanguageIdentifier("English"), "en");
  EXPECT_EQ(locale.canonicalLanguageIdentifier("zh-Hans"), "zh-Hans");
  EXPECT_EQ(locale.canonicalLanguageIdentifier("Base"), nullptr);
  EXPECT_EQ(locale.canonicalLanguageIdentifier(""), nullptr);
  EXPECT_EQ(locale.canonicalLanguageIdentifier(nullptr), nullptr);
}

TEST_F(IcuUserLocaleTest, KnowsTheIsoCodesLetterForLetter) {
  for (const char* code : {"de", "en", "ja", "zh", "gsw"}) {
    EXPECT_TRUE(locale.isIsoLanguageCode(code)) << code;
  }
  for (const ZtString& text : {ZtString("DE"), ZtString("de-DE"), ZtString("xx"),
                               ZtString("German"), ZtString(""), ZtString(nullptr)}) {
    EXPECT_FALSE(locale.isIsoLanguageCode(text)) << text.printed();
  }
}

}  // namespace
