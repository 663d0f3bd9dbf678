#include <gtest/gtest.h>

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

}  // namespace
