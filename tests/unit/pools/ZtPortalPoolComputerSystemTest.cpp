// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalPoolComputerSystem.h"

namespace zt::test {
namespace {

constexpr const char* kUnknown = R"(
string OS_NAME =
string OS_VERSION = (null)
integer OS_SERVICEPACK = 0
string OS_LANGUAGE = NEUTRAL
string USER_LANGUAGE = NEUTRAL
boolean USER_ISADMIN = FALSE
)";

class ZtPortalPoolComputerSystemTest : public PoolsFixture {
 protected:
  /// The text of a pool with these fields up to the user's rights and these others.
  static std::string text(const std::string& fields, bool soap = false,
                          const std::string& lists = "", const std::string& more = "") {
    return poolText("COMPUTER_SYSTEM",
                    fields + lists + "boolean WINDOWS_FIREWALL_ENABLED = FALSE\n" + more, soap, 11);
  }
  std::string written(bool soap = false) const {
    return test::written(*_pool, "           ", soap);
  }

  std::shared_ptr<ZtPortalPoolComputerSystem> _pool =
      ZtPortalPoolComputerSystem::initWithValues(kNoon, false);
};

TEST_F(ZtPortalPoolComputerSystemTest, WithoutACheckItWritesItsDefaultsAndNoArray) {
  EXPECT_EQ(written(true), text(kUnknown, true));
  EXPECT_EQ(written(), text(kUnknown));
}

TEST_F(ZtPortalPoolComputerSystemTest, LanguagesWithoutANameAreWrittenEmpty) {
  for (const std::uint64_t language : {35U, 0U, 44U}) {
    _pool->setOsLanguage(language);
    EXPECT_EQ(written(), text(R"(
string OS_NAME = | string OS_VERSION = (null) | integer OS_SERVICEPACK = 0
string OS_LANGUAGE = | string USER_LANGUAGE = NEUTRAL | boolean USER_ISADMIN = FALSE
)")) << language;
  }
}

TEST_F(ZtPortalPoolComputerSystemTest, FirewallAndBuildStringAreKeptButNotWritten) {
  _pool->setFirewallEnabled(1);
  _pool->setOsBuildString("10K549");
  EXPECT_EQ(_pool->firewallEnabled(), 1);
  EXPECT_EQ(_pool->osBuildString(), "10K549");
  EXPECT_EQ(written(), text(kUnknown));
}

TEST_F(ZtPortalPoolComputerSystemTest, WritesWhatIsSet) {
  _pool->setOsName("MACOS");
  _pool->setOsVersion("MACOS 10.6");
  _pool->setServicePack(-8);
  _pool->setOsLanguage(ZtLanguageGerman);
  _pool->setUserLanguage(ZtLanguagePortuguese);
  _pool->setIsAdmin(1);
  EXPECT_EQ(written(), text(R"(
string OS_NAME = MACOS
string OS_VERSION = MACOS 10.6
integer OS_SERVICEPACK = -8
string OS_LANGUAGE = GERMAN
string USER_LANGUAGE = PORTUGUESE
boolean USER_ISADMIN = TRUE
)"));
}

TEST_F(ZtPortalPoolComputerSystemTest, TheSameBrowserTwiceIsListedTwiceInCallOrder) {
  const auto first = _pool->addBrowser("Firefox", "128.3", 1);
  const auto second = _pool->addBrowser("Firefox", "128.3", 1);
  _pool->addBrowser("Opera", nullptr, 0);
  EXPECT_NE(first, second);
  ASSERT_EQ(_pool->browsers()->size(), 3U);
  EXPECT_EQ((*_pool->browsers())[1], second);
  EXPECT_EQ(written(true), text(kUnknown, true, R"(
records BROWSERS
  - string BROWSER_NAME = Firefox | string BROWSER_VERSION = 128.3 | boolean IS_STANDARD = TRUE
  - string BROWSER_NAME = Firefox | string BROWSER_VERSION = 128.3 | boolean IS_STANDARD = TRUE
  - string BROWSER_NAME = Opera | string BROWSER_VERSION = (null) | boolean IS_STANDARD = FALSE
)"));
}

TEST_F(ZtPortalPoolComputerSystemTest, WhetherAnApplicationIsTheStandardOneIsKeptAsGiven) {
  for (const int value : {0, 1, 2, -1}) {
    const auto given = static_cast<ZtBOOL>(value);
    EXPECT_EQ(_pool->addBrowser("Firefox", "128.3", given)->isStandard(), given);
    EXPECT_EQ(_pool->addEMailClient("Thunderbird", "115", given)->isStandard(), given);
  }
}

TEST_F(ZtPortalPoolComputerSystemTest, AFirewallAppThatWasNotChangedIsOffAndOfNoCompany) {
  _pool->addFirewallApp("Wall", "2");
  EXPECT_EQ(written(), text(kUnknown, false, "", R"(
records FIREWALLAPPS
  - string FIREWALLAPP_NAME = Wall | string FIREWALLAPP_VERSION = 2 | string FIREWALLAPP_COMPANY =
    boolean IS_ENABLED = FALSE
)"));
}

TEST_F(ZtPortalPoolComputerSystemTest, WritesAllListsInTheirPlacesAndGenericFieldsLast) {
  _pool->addString("GENERIC", "field");
  const auto antivirus = _pool->addAntivirusApp("AV & Co", "7");
  EXPECT_EQ(antivirus->appCompany(), "");
  EXPECT_EQ(antivirus->isEnabled(), 0);
  EXPECT_EQ(antivirus->isUpToDate(), 0);
  antivirus->setAppCompany("Company");
  antivirus->setIsEnabled(1);
  antivirus->setIsUpToDate(1);
  const auto firewall = _pool->addFirewallApp("Wall", "2");
  firewall->setAppName("Walls");
  firewall->setAppVersion("3");
  firewall->setAppCompany(nullptr);
  firewall->setIsEnabled(1);
  _pool->addEMailClient("Mail", "4.5", 0)->setIsStandard(1);
  _pool->addBrowser("Browser", "6", 0);

  const char* const lists = R"(
records BROWSERS
  - string BROWSER_NAME = Browser | string BROWSER_VERSION = 6 | boolean IS_STANDARD = FALSE
records EMAILCLIENTS
  - string EMAILCLIENT_NAME = Mail | string EMAILCLIENT_VERSION = 4.5 | boolean IS_STANDARD = TRUE
)";
  const char* const more = R"(
records FIREWALLAPPS
  - string FIREWALLAPP_NAME = Walls | string FIREWALLAPP_VERSION = 3
    string FIREWALLAPP_COMPANY = (null) | boolean IS_ENABLED = TRUE
records ANTIVIRUSAPP
  - string ANTIVIRUSAPP_NAME = AV & Co | string ANTIVIRUSAPP_VERSION = 7
    string ANTIVIRUSAPP_COMPANY = Company | boolean IS_ENABLED = TRUE | boolean IS_UPTODATE = TRUE
string GENERIC = field
)";
  for (const bool soap : {true, false}) {
    EXPECT_EQ(written(soap), text(kUnknown, soap, lists, more));
    EXPECT_EQ(written(soap), text(kUnknown, soap, lists, more)) << "written a second time";
  }
}

TEST_F(ZtPortalPoolComputerSystemTest, AMissingListIsEmptyAndTakesNoRecord) {
  _pool->setBrowsers(nullptr);
  _pool->setEmailClients(nullptr);
  _pool->setFirewallApps(nullptr);
  _pool->setAntivirusApps(nullptr);
  EXPECT_EQ(_pool->addBrowser("B", "1", 0), nullptr);
  EXPECT_EQ(_pool->addEMailClient("E", "1", 0), nullptr);
  EXPECT_EQ(_pool->addFirewallApp("F", "1"), nullptr);
  EXPECT_EQ(_pool->addAntivirusApp("A", "1"), nullptr);
  EXPECT_EQ(written(), text(kUnknown));
}

TEST_F(ZtPortalPoolComputerSystemTest, ItsListsAreLive) {
  const auto list = std::make_shared<ZtPortalPoolComputerSystem::Browsers>();
  _pool->setBrowsers(list);
  list->push_back(ZtPortalPoolBrowser::initWithNameAndVersion("Mine", "1"));
  _pool->addBrowser("Other", "2", 0);
  ASSERT_EQ(list->size(), 2U);
  EXPECT_EQ(list->back()->appName(), "Other");
  EXPECT_EQ(list->front()->isStandard(), 0);
}

}  // namespace
}  // namespace zt::test
