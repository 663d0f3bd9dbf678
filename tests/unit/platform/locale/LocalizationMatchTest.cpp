#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ztportal/platform/locale/Languages.h"

namespace {

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
