// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "tests/support/ScopedEnvironment.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/locale/IcuUserLocale.h"

namespace {

using zt::BundleLocalizations;
using zt::test::ScopedEnvironment;
using zt::test::Subprocess;
using zt::test::TemporaryFolder;

class IcuUserLocaleTest : public testing::Test {
 protected:
  zt::IcuUserLocale locale;

 private:
  ScopedEnvironment _all{"LC_ALL", nullptr};
  ScopedEnvironment _time{"LC_TIME", nullptr};
  ScopedEnvironment _messages{"LC_MESSAGES", nullptr};
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
  EXPECT_EQ(locale.languageCode(), "de");
  EXPECT_EQ(locale.countryCode(), "DE");
  const ScopedEnvironment messages("LC_MESSAGES", "it_IT");
  const ScopedEnvironment time("LC_TIME", "fr_FR");
  EXPECT_EQ(locale.languageCode(), "it");
  EXPECT_EQ(locale.countryCode(), "FR");
  const ScopedEnvironment all("LC_ALL", "ja_JP");
  EXPECT_EQ(locale.languageCode(), "ja");
  EXPECT_EQ(locale.countryCode(), "JP");
}

// The language was that of the locale for formats: "en" for a German user who has dates in the
// neutral form, and "de" for an English one in Germany.
TEST_F(IcuUserLocaleTest, TakesTheLanguageFromMessagesAndTheCountryFromFormats) {
  struct Row {
    const char* lang;
    const char* messages;
    const char* time;
    ZtString language;
    ZtString country;
    ZtString germany;
  };
  const Row rows[] = {
      {"de_DE.UTF-8", nullptr, "C", "de", nullptr, "Deutschland"},
      {"de_DE.UTF-8", nullptr, "POSIX", "de", nullptr, "Deutschland"},
      {"en_US.UTF-8", nullptr, "de_DE.UTF-8", "en", "DE", "Germany"},
      {"de_DE.UTF-8", "fr_FR.UTF-8", nullptr, "fr", "DE", "Allemagne"},
      {"de_DE.UTF-8", "C", nullptr, nullptr, "DE", "Germany"},
  };
  for (const Row& row : rows) {
    const ScopedEnvironment lang("LANG", row.lang);
    const ScopedEnvironment messages("LC_MESSAGES", row.messages);
    const ScopedEnvironment time("LC_TIME", row.time);
    SCOPED_TRACE(testing::Message() << row.lang << " " << (row.messages ? row.messages : "unset")
                                    << " " << (row.time ? row.time : "unset"));
    EXPECT_EQ(locale.languageCode(), row.language);
    EXPECT_EQ(locale.countryCode(), row.country);
    EXPECT_EQ(locale.countryName("DE"), row.germany);
  }
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

constexpr const char* kTellLocalizations = "ZT_TEST_TELL_LOCALIZATIONS";

/// A copy of this program that is started with the variable set says which localizations suit and
/// does nothing else.
const bool kIsTellingLocalizations = [] {
  if (std::getenv(kTellLocalizations) == nullptr) return false;
  for (const ZtString& name : BundleLocalizations().preferredLocalizations()) {
    std::fputs((std::string(name.printed()) + " ").c_str(), stdout);
  }
  std::exit(0);
}();

constexpr const char* kLocalizedInfo =
    "<plist><dict><key>CFBundleDevelopmentRegion</key><string>fr</string></dict></plist>";

class BundleLocalizationsTest : public testing::Test {
 protected:
  /// What a copy of this program at `place` says to a user with these languages.
  std::string toldAt(const std::string& place, const char* languages) const {
    const std::string program = _folder.path(place);
    std::filesystem::create_directories(std::filesystem::path(program).parent_path());
    std::filesystem::copy_file("/proc/self/exe", program,
                               std::filesystem::copy_options::overwrite_existing);
    const ScopedEnvironment telling(kTellLocalizations, "1");
    const ScopedEnvironment locale("LC_ALL", "en_US.UTF-8");
    const ScopedEnvironment language("LANGUAGE", languages);
    Subprocess copy({program});
    const std::optional<std::string> told = copy.readLine(std::chrono::seconds(60));
    EXPECT_EQ(copy.wait(), 0);
    return told.value_or("");
  }

  TemporaryFolder _folder;
};

TEST_F(BundleLocalizationsTest, AreThoseOfTheBundleAboveTheProgramThatSuitTheUser) {
  _folder.write("Setup.app/Contents/Info.plist", kLocalizedInfo);
  for (const char* name : {"de", "fr", "it"}) {
    std::filesystem::create_directories(
        _folder.path("Setup.app/Contents/Resources/" + std::string(name) + ".lproj"));
  }
  EXPECT_EQ(toldAt("Setup.app/Contents/Linux/setup", "it:de"), "it de ");
  EXPECT_EQ(toldAt("Setup.app/Contents/Linux/setup", "ja"), "fr ");
}

TEST_F(BundleLocalizationsTest, AreNoneOutsideABundle) {
  EXPECT_EQ(toldAt("bin/setup", "it:de"), "");
}

}  // namespace
