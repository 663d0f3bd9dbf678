#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>
#include <vector>

#include "tests/support/Printing.h"
#include "ztportal/pools/LanguageTable.h"
#include "ztportal/pools/ZtPortalDef.h"

namespace {

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

TEST(LanguageTableTest, TheEnumerationHasTheNumbers) {
  EXPECT_EQ(ZtLanguageNeutral, 1U);
  EXPECT_EQ(ZtLanguageGerman, 19U);
  EXPECT_EQ(ZtLanguageSerbian, 35U);
  EXPECT_EQ(ZtLanguageVietnamese, 43U);
  static_assert(sizeof(ZtLanguage) == 8);
}

}  // namespace
