// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "tests/support/ScopedEnvironment.h"
#include "ztportal/platform/locale/PosixLocale.h"

namespace {

using zt::test::ScopedEnvironment;

TEST(PosixLocaleTest, FindsTheLocaleOfACategory) {
  const ScopedEnvironment all("LC_ALL", nullptr);
  const ScopedEnvironment time("LC_TIME", "fr_FR.UTF-8");
  const ScopedEnvironment messages("LC_MESSAGES", "");
  const ScopedEnvironment lang("LANG", "de_DE.UTF-8");
  EXPECT_EQ(zt::userLocaleName("LC_TIME"), "fr_FR.UTF-8");
  EXPECT_EQ(zt::userLocaleName("LC_MESSAGES"), "de_DE.UTF-8");
  const ScopedEnvironment forAll("LC_ALL", "ja_JP");
  EXPECT_EQ(zt::userLocaleName("LC_TIME"), "ja_JP");
  EXPECT_EQ(zt::userLocaleName("LC_MESSAGES"), "ja_JP");
}

TEST(PosixLocaleTest, IsTheCLocaleWhereNothingIsSet) {
  const ScopedEnvironment all("LC_ALL", nullptr);
  const ScopedEnvironment time("LC_TIME", nullptr);
  const ScopedEnvironment lang("LANG", "");
  EXPECT_EQ(zt::userLocaleName("LC_TIME"), "C");
}

TEST(PosixLocaleTest, CutsANameIntoItsParts) {
  struct Row {
    const char* name;
    const char* language;
    const char* territory;
    const char* modifier;
  };
  const Row rows[] = {
      {"de", "de", "", ""},
      {"de_DE", "de", "_DE", ""},
      {"de-DE.UTF-8", "de", "-DE", ""},
      {"sr_RS.UTF-8@latin", "sr", "_RS", "latin"},
      {"sr@latin", "sr", "", "latin"},
      {"de_DE@a@b", "de", "_DE", "a@b"},
      {"de_DE@", "de", "_DE", ""},
      {".UTF-8", "", "", ""},
      {"", "", "", ""},
  };
  for (const Row& row : rows) {
    const zt::PosixLocaleParts parts = zt::posixLocaleParts(row.name);
    EXPECT_EQ(parts.language, row.language) << row.name;
    EXPECT_EQ(parts.territory, row.territory) << row.name;
    EXPECT_EQ(parts.modifier, row.modifier) << row.name;
  }
}

TEST(PosixLocaleTest, TellsLocalesWithoutALanguage) {
  for (const char* name :
       {"C", "POSIX", "C.UTF-8", "C.utf8", "POSIX.UTF-8", "", "english", "_DE"}) {
    EXPECT_TRUE(zt::isPosixLocale(name)) << name;
  }
  for (const char* name : {"de", "de_DE", "de_DE.UTF-8@euro", "gsw_CH", "en-GB"}) {
    EXPECT_FALSE(zt::isPosixLocale(name)) << name;
  }
}

TEST(IcuLocaleTest, NamesTheUnicodeLocale) {
  struct Row {
    const char* posix;
    const char* icu;
  };
  const Row rows[] = {
      {"de_DE", "de_DE"},
      {"de_DE.UTF-8", "de_DE"},
      {"de_DE.UTF-8@euro", "de_DE"},
      {"de_DE@euro", "de_DE"},
      {"de", "de"},
      {"de.UTF-8", "de"},
      {"sr_RS", "sr_RS"},
      {"sr_RS@latin", "sr_Latn_RS"},
      {"sr_RS.UTF-8@latin", "sr_Latn_RS"},
      {"sr@latin", "sr_Latn"},
      {"uz_UZ@cyrillic", "uz_Cyrl_UZ"},
      {"sd_IN@devanagari", "sd_Deva_IN"},
      {"tt_RU@iqtelif", "tt_Latn_RU"},
      {"ca_ES@valencia", "ca_ES_VALENCIA"},
      {"ca@valencia", "ca__VALENCIA"},
      {"gez_ET@abegede", "gez_ET"},
      {"iw_IL", "he_IL"},
      {"zh_TW.Big5", "zh_TW"},
      {"zh_Hant_TW", "zh_Hant_TW"},
      {"de-AT", "de_AT"},
      {"th_TH@calendar=gregorian", "th_TH@calendar=gregorian"},
      {"DE_de", "de_DE"},
      {"C", "en_US_POSIX"},
      {"C.UTF-8", "en_US_POSIX"},
      {"POSIX", "en_US_POSIX"},
      {"C@euro", "en_US_POSIX"},
      {"", "en_US_POSIX"},
      {"/etc/passwd", "en_US_POSIX"},
      {"german", "en_US_POSIX"},
      {"d1_DE", "en_US_POSIX"},
      {"\xff\xff_DE", "en_US_POSIX"},
  };
  for (const Row& row : rows) EXPECT_EQ(zt::icuLocaleName(row.posix), row.icu) << row.posix;
}

TEST(IcuLocaleTest, ALocaleThatUnicodeRefusesIsTheCLocale) {
  EXPECT_EQ(zt::icuLocaleName("de_DE@=buddhist"), "en_US_POSIX");
  EXPECT_EQ(zt::icuLocaleName("de_DE@" + std::string(300, 'k') + "=v"), "en_US_POSIX");
}

}  // namespace
