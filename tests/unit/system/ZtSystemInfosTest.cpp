// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "tests/support/Printing.h"
#include "ztportal/platform/FakePlatform.h"
#include "ztportal/system/ZtSystemInfos.h"

namespace {

constexpr std::uint32_t kSysv = 0x73797376;  // 'sysv'
constexpr std::uint32_t kSys1 = 0x73797331;  // 'sys1'
constexpr std::uint32_t kSys2 = 0x73797332;  // 'sys2'
constexpr std::uint32_t kSys3 = 0x73797333;  // 'sys3'

using Answers = std::map<std::uint32_t, std::int32_t>;
using Selectors = std::vector<std::uint32_t>;
using Infos = std::map<std::string, ZtString>;

struct Version {
  std::int32_t major = -100;
  std::int32_t minor = -100;
  std::int32_t bugFix = -100;
  friend bool operator==(const Version&, const Version&) = default;
};

void PrintTo(const Version& version, std::ostream* out) {
  *out << version.major << ", " << version.minor << ", " << version.bugFix;
}

class ZtSystemInfosTest : public ::testing::Test {
 protected:
  void answer(const Answers& answers) {
    _machine.gestalt_.answers = answers;
    _machine.gestalt_.asked.clear();
  }

  static Version systemVersion() {
    Version version;
    ZtSystemInfos::getSystemVersionMajor(&version.major, &version.minor, &version.bugFix);
    return version;
  }

  zt::test::FakePlatform _machine;
};

// Version.

TEST_F(ZtSystemInfosTest, AVersionBelow1040IsFourPackedDigits) {
  struct Row {
    std::int32_t packed;
    Version expected;
  };
  const Row table[] = {
      {0x1039, {10, 3, 9}},
      {0x103F, {10, 3, 15}},
      {0x0922, {9, 2, 2}},
      {0x1000, {10, 0, 0}},
      {0x0100, {1, 0, 0}},
      {0x0010, {0, 1, 0}},
      {0x0001, {0, 0, 1}},
      {0x0000, {0, 0, 0}},
      {0x0FFF, {15, 15, 15}},
      {-1, {165, 15, 15}},
      {static_cast<std::int32_t>(0xFFFF1234), {12, 3, 4}},
      {std::numeric_limits<std::int32_t>::min(), {0, 0, 0}},
  };
  for (const Row& row : table) {
    // The other selectors also have values, but must not be asked.
    answer({{kSysv, row.packed}, {kSys1, 1}, {kSys2, 2}, {kSys3, 3}});
    EXPECT_EQ(systemVersion(), row.expected) << row.packed;
    EXPECT_EQ(_machine.gestalt_.asked, Selectors{kSysv}) << row.packed;
  }
}

TEST_F(ZtSystemInfosTest, From1040OnAVersionHasThreeSelectors) {
  for (const std::int32_t packed :
       {0x1040, 0x1041, 0x1068, 0x2000, std::numeric_limits<std::int32_t>::max()}) {
    answer({{kSysv, packed}, {kSys1, 12}, {kSys2, 11}, {kSys3, 7}});
    EXPECT_EQ(systemVersion(), (Version{12, 11, 7})) << packed;
    EXPECT_EQ(_machine.gestalt_.asked, (Selectors{kSysv, kSys1, kSys2, kSys3})) << packed;
  }
}

TEST_F(ZtSystemInfosTest, AfterAFailingSelectorTheVersionIsTenZeroZeroAndNoOtherIsAsked) {
  struct Row {
    Answers answers;
    Selectors asked;
  };
  const Row table[] = {
      {{}, {kSysv}},
      {{{kSys1, 12}, {kSys2, 11}, {kSys3, 7}}, {kSysv}},
      {{{kSysv, 0x1040}, {kSys2, 11}, {kSys3, 7}}, {kSysv, kSys1}},
      {{{kSysv, 0x1040}, {kSys1, 12}, {kSys3, 7}}, {kSysv, kSys1, kSys2}},
      {{{kSysv, 0x1040}, {kSys1, 12}, {kSys2, 11}}, {kSysv, kSys1, kSys2, kSys3}},
  };
  for (const Row& row : table) {
    answer(row.answers);
    EXPECT_EQ(systemVersion(), (Version{10, 0, 0})) << row.asked.size() << " asked";
    EXPECT_EQ(_machine.gestalt_.asked, row.asked);
  }
}

TEST_F(ZtSystemInfosTest, NullPointersAreSkippedOnEveryPath) {
  struct Row {
    Answers answers;
    Version expected;
    Selectors asked;
  };
  const Row table[] = {
      {{{kSysv, 0x1039}}, {10, 3, 9}, {kSysv}},
      {{{kSysv, 0x1040}, {kSys1, 12}, {kSys2, 11}, {kSys3, 7}},
       {12, 11, 7},
       {kSysv, kSys1, kSys2, kSys3}},
      {{}, {10, 0, 0}, {kSysv}},
      {{{kSysv, 0x1040}, {kSys1, 12}}, {10, 0, 0}, {kSysv, kSys1, kSys2}},
  };
  for (const Row& row : table) {
    for (unsigned given = 0; given < 8; ++given) {
      answer(row.answers);
      Version version;
      ZtSystemInfos::getSystemVersionMajor((given & 1U) != 0 ? &version.major : nullptr,
                                           (given & 2U) != 0 ? &version.minor : nullptr,
                                           (given & 4U) != 0 ? &version.bugFix : nullptr);
      const Version expected{(given & 1U) != 0 ? row.expected.major : -100,
                             (given & 2U) != 0 ? row.expected.minor : -100,
                             (given & 4U) != 0 ? row.expected.bugFix : -100};
      EXPECT_EQ(version, expected) << "pointers " << given;
      EXPECT_EQ(_machine.gestalt_.asked, row.asked) << "pointers " << given;
    }
  }
}

TEST_F(ZtSystemInfosTest, EveryCallAsksAgain) {
  answer({{kSysv, 0x1039}});
  EXPECT_EQ(systemVersion(), (Version{10, 3, 9}));
  answer({{kSysv, 0x1028}});
  EXPECT_EQ(systemVersion(), (Version{10, 2, 8}));
  answer({});
  EXPECT_EQ(systemVersion(), (Version{10, 0, 0}));
}

TEST_F(ZtSystemInfosTest, ThePlatformUuidIsReturnedUnchanged) {
  for (const ZtString& uuid : {ZtString("564D1E2A-77C0-4B0E-9A55-0F1D6A5293E5"),
                               ZtString("lower {braces} kept"), ZtString(""), ZtString()}) {
    _machine.machineIdentity_.uuid = uuid;
    EXPECT_EQ(ZtSystemInfos::platformUUID(), uuid);
  }
}

// The dictionary.

TEST_F(ZtSystemInfosTest, TheInfosAreVersionServicePackAndUuid) {
  answer({{kSysv, 0x1068}, {kSys1, 10}, {kSys2, 6}, {kSys3, 8}});
  const Infos expected{
      {"ZtDIAG_SYSTEM_INFOS_OS_VERSION_NUMBER", "10.6"},
      {"ZtDIAG_SYSTEM_INFOS_OS_SERVICEPACK", "8"},
      {"ZtDIAG_SYSTEM_INFOS_PLATFORM_UUID", "564D1E2A-77C0-4B0E-9A55-0F1D6A5293E5"},
  };
  EXPECT_EQ(ZtSystemInfos::getSystemInfos(), expected);
  EXPECT_EQ(_machine.gestalt_.asked, (Selectors{kSysv, kSys1, kSys2, kSys3})) << "once";
}

TEST_F(ZtSystemInfosTest, TheInfosOfAnUnknownVersionHaveTenZero) {
  const Infos expected{
      {"ZtDIAG_SYSTEM_INFOS_OS_VERSION_NUMBER", "10.0"},
      {"ZtDIAG_SYSTEM_INFOS_OS_SERVICEPACK", "0"},
      {"ZtDIAG_SYSTEM_INFOS_PLATFORM_UUID", "564D1E2A-77C0-4B0E-9A55-0F1D6A5293E5"},
  };
  EXPECT_EQ(ZtSystemInfos::getSystemInfos(), expected);
}

TEST_F(ZtSystemInfosTest, TheInfosOfNegativeNumbersAreDecimal) {
  answer({{kSysv, 0x1040}, {kSys1, -1}, {kSys2, -2}, {kSys3, -3}});
  EXPECT_EQ(ZtSystemInfos::getSystemInfos().at("ZtDIAG_SYSTEM_INFOS_OS_VERSION_NUMBER"), "-1.-2");
  EXPECT_EQ(ZtSystemInfos::getSystemInfos().at("ZtDIAG_SYSTEM_INFOS_OS_SERVICEPACK"), "-3");
}

TEST_F(ZtSystemInfosTest, AMachineWithoutAUuidHasAnEmptyEntryAndNeverAMissingOne) {
  for (const ZtString& uuid : {ZtString(), ZtString("")}) {
    _machine.machineIdentity_.uuid = uuid;
    const Infos infos = ZtSystemInfos::getSystemInfos();
    ASSERT_EQ(infos.count("ZtDIAG_SYSTEM_INFOS_PLATFORM_UUID"), 1U);
    EXPECT_EQ(infos.at("ZtDIAG_SYSTEM_INFOS_PLATFORM_UUID"), "");
    EXPECT_EQ(infos.size(), 3U);
  }
}

// Language.

TEST_F(ZtSystemInfosTest, TheLanguageIsTheBestLocalizationThenTheCallersThenTheLocalesThenEnglish) {
  const struct {
    std::vector<ZtString> localizations;
    ZtString canonical;  // form of the first one
    ZtString ofLocale;
    ZtString before;
    ZtString expected;
  } rows[] = {
      {{"fr", "en"}, "fr", "de", nullptr, "fr"},
      {{"fr"}, "fr", "de", "mine", "fr"},
      {{"English"}, "en", "de", nullptr, "en"},
      // Not an ISO code, or not in its canonical form.
      {{"fr"}, "fr-FR", "de", nullptr, "de"},
      {{"zh-Hans", "fr"}, "zh-Hans", "de", "mine", "mine"},
      {{"zh-Hans", "fr"}, "zh-Hans", "de", nullptr, "de"},
      {{"zh-Hans", "fr"}, "zh-Hans", "de", "", "de"},
      {{"Base"}, nullptr, "de", nullptr, "de"},
      {{}, nullptr, "de", nullptr, "de"},
      {{}, nullptr, "de", "", "de"},
      {{}, nullptr, "de", "mine", "mine"},
      {{}, nullptr, nullptr, nullptr, "en"},
      {{}, nullptr, nullptr, "", "en"},
      {{}, nullptr, "", nullptr, "en"},
      {{}, nullptr, "", "", "en"},
  };
  for (const auto& row : rows) {
    _machine.localizations_.preferred = row.localizations;
    _machine.userLocale_.canonical.clear();
    if (!row.localizations.empty()) {
      const std::string first(row.localizations.front().view());
      _machine.userLocale_.canonical = {{first, row.canonical}};
    }
    _machine.userLocale_.language = row.ofLocale;
    ZtString language = row.before;
    ZtSystemInfos::getPreferredLanguage(&language, nullptr, nullptr);
    EXPECT_EQ(language, row.expected) << &row - rows;
  }
}

// Country.

TEST_F(ZtSystemInfosTest, ReturnsLanguageCountryAndItsName) {
  ZtString language;
  ZtString country;
  ZtString name;
  ZtSystemInfos::getPreferredLanguage(&language, &country, &name);
  EXPECT_EQ(language, "de");
  EXPECT_EQ(country, "DE");
  EXPECT_EQ(name, "Deutschland");
  EXPECT_EQ(_machine.userLocale_.askedCountries, std::vector<ZtString>{"DE"});
}

TEST_F(ZtSystemInfosTest, TheCountryDoesNotNeedItsNameOrTheLanguage) {
  ZtString country = "before";
  ZtSystemInfos::getPreferredLanguage(nullptr, &country, nullptr);
  EXPECT_EQ(country, "DE");
  EXPECT_EQ(_machine.userLocale_.askedCountries, std::vector<ZtString>{});
}

TEST_F(ZtSystemInfosTest, TheNameOfTheCountryIsNotSetWithoutTheCountry) {
  ZtString name = "before";
  ZtSystemInfos::getPreferredLanguage(nullptr, nullptr, &name);
  EXPECT_EQ(name, "before");
  ZtString language;
  ZtSystemInfos::getPreferredLanguage(&language, nullptr, &name);
  EXPECT_EQ(language, "de");
  EXPECT_EQ(name, "before");
  EXPECT_EQ(_machine.userLocale_.askedCountries, std::vector<ZtString>{});
}

TEST_F(ZtSystemInfosTest, ALocaleWithoutACountryClearsTheCallersValues) {
  _machine.userLocale_.country = nullptr;
  _machine.userLocale_.name = nullptr;
  ZtString country = "before";
  ZtString name = "before";
  ZtSystemInfos::getPreferredLanguage(nullptr, &country, &name);
  EXPECT_TRUE(country.isNull());
  EXPECT_TRUE(name.isNull());
  EXPECT_EQ(_machine.userLocale_.askedCountries, std::vector<ZtString>{nullptr});
}

TEST_F(ZtSystemInfosTest, NullPointersForEverythingAreAllowed) {
  ZtSystemInfos::getPreferredLanguage(nullptr, nullptr, nullptr);
  EXPECT_EQ(_machine.userLocale_.askedCountries, std::vector<ZtString>{});
  ZtSystemInfos::getSystemVersionMajor(nullptr, nullptr, nullptr);
  EXPECT_EQ(_machine.gestalt_.asked, Selectors{kSysv});
}

}  // namespace
