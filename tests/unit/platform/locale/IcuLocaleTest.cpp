#include <gtest/gtest.h>

#include <string>

#include "ztportal/platform/locale/PosixLocale.h"

namespace {

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
