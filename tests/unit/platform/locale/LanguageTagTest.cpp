#include <gtest/gtest.h>

#include <string>

#include "ztportal/platform/locale/Languages.h"

namespace {

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

TEST(LanguageTagTest, GainsAndLosesWhatGoesWithoutSaying) {
  struct Row {
    const char* tag;
    const char* longest;
    const char* shortest;
  };
  const Row rows[] = {
      {"de", "de-Latn-DE", "de"},           {"de-DE", "de-Latn-DE", "de"},
      {"de-AT", "de-Latn-AT", "de-AT"},     {"zh-TW", "zh-Hant-TW", "zh-TW"},
      {"sr-Latn", "sr-Latn-RS", "sr-Latn"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(zt::withLikelySubtags(row.tag), row.longest) << row.tag;
    EXPECT_EQ(zt::withoutLikelySubtags(row.tag), row.shortest) << row.tag;
  }
}

TEST(LanguageTagTest, NoLanguageStaysNoLanguage) {
  EXPECT_EQ(zt::withLikelySubtags(""), "");
  EXPECT_EQ(zt::withoutLikelySubtags(""), "");
  EXPECT_EQ(zt::languageParts("").language, "");
}

}  // namespace
