#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "tests/unit/pools/ExpectedText.h"
#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalPoolComputerSystem.h"

namespace {

using zt::test::ExpectedText;
using zt::test::kNoon;
using zt::test::kNoonText;
using zt::test::written;

struct System {
  std::string_view name;
  std::string_view version = "(null)";
  std::string_view servicePack = "0";
  std::string_view osLanguage = "NEUTRAL";
  std::string_view userLanguage = "NEUTRAL";
  std::string_view isAdmin = "FALSE";
};

class ZtPortalPoolComputerSystemTest : public zt::test::PoolsFixture {
 protected:
  /// A pool's text up to the user's rights.
  static ExpectedText begun(bool soap, const System& system = {}, std::size_t indent = 0) {
    ExpectedText text(soap, indent);
    text.beginPool("COMPUTER_SYSTEM", kNoonText)
        .field("string", "OS_NAME", system.name)
        .field("string", "OS_VERSION", system.version)
        .field("integer", "OS_SERVICEPACK", system.servicePack)
        .field("string", "OS_LANGUAGE", system.osLanguage)
        .field("string", "USER_LANGUAGE", system.userLanguage)
        .field("boolean", "USER_ISADMIN", system.isAdmin);
    return text;
  }
  static ExpectedText& firewallOff(ExpectedText& text) {
    return text.field("boolean", "WINDOWS_FIREWALL_ENABLED", "FALSE");
  }
  static std::string untouched(bool soap, const System& system = {}) {
    ExpectedText text = begun(soap, system);
    return firewallOff(text).endPool();
  }

  std::shared_ptr<ZtPortalPoolComputerSystem> _pool =
      ZtPortalPoolComputerSystem::initWithValues(kNoon, false);
};

TEST_F(ZtPortalPoolComputerSystemTest, WithoutACheckItKnowsNothing) {
  EXPECT_EQ(_pool->poolType(), "COMPUTER_SYSTEM");
  EXPECT_EQ(_pool->timeStamp(), kNoon);
  EXPECT_TRUE(_pool->browsers()->empty());
  EXPECT_TRUE(_pool->emailClients()->empty());
  EXPECT_TRUE(_pool->firewallApps()->empty());
  EXPECT_TRUE(_pool->antivirusApps()->empty());
  EXPECT_EQ(_pool->osName(), "");
  EXPECT_EQ(_pool->servicePack(), 0);
  EXPECT_TRUE(_pool->osVersion().isNull());
  EXPECT_TRUE(_pool->osBuildString().isNull());
  EXPECT_EQ(_pool->osLanguage(), 1U);
  EXPECT_EQ(_pool->userLanguage(), 1U);
  EXPECT_EQ(_pool->firewallEnabled(), 0);
  EXPECT_EQ(_pool->isAdmin(), 0);
}

TEST_F(ZtPortalPoolComputerSystemTest, WithoutACheckItWritesItsDefaultsAndNoArray) {
  EXPECT_EQ(written(*_pool, "", true), untouched(true));
  EXPECT_EQ(written(*_pool, "", false), untouched(false));
}

TEST_F(ZtPortalPoolComputerSystemTest, LanguagesWithoutANameAreWrittenEmpty) {
  for (const std::uint64_t language : {35U, 0U, 44U}) {
    _pool->setOsLanguage(language);
    System system;
    system.osLanguage = "";
    EXPECT_EQ(written(*_pool, "", false), untouched(false, system)) << language;
  }
}

TEST_F(ZtPortalPoolComputerSystemTest, FirewallAndBuildStringAreKeptButNotWritten) {
  _pool->setFirewallEnabled(1);
  _pool->setOsBuildString("10K549");
  EXPECT_EQ(_pool->firewallEnabled(), 1);
  EXPECT_EQ(_pool->osBuildString(), "10K549");
  EXPECT_EQ(written(*_pool, "", true), untouched(true));
}

TEST_F(ZtPortalPoolComputerSystemTest, WritesWhatIsSet) {
  _pool->setOsName("MACOS");
  _pool->setOsVersion("MACOS 10.6");
  _pool->setServicePack(-8);
  _pool->setOsLanguage(ZtLanguageGerman);
  _pool->setUserLanguage(ZtLanguagePortuguese);
  _pool->setIsAdmin(1);
  EXPECT_EQ(written(*_pool, "", false),
            untouched(false, {"MACOS", "MACOS 10.6", "-8", "GERMAN", "PORTUGUESE", "TRUE"}));
}

TEST_F(ZtPortalPoolComputerSystemTest, TheSameBrowserTwiceIsListedTwiceInCallOrder) {
  const auto first = _pool->addBrowser("Firefox", "128.3", 1);
  const auto second = _pool->addBrowser("Firefox", "128.3", 1);
  _pool->addBrowser("Opera", nullptr, 0);
  EXPECT_NE(first, second);
  ASSERT_EQ(_pool->browsers()->size(), 3U);
  EXPECT_EQ((*_pool->browsers())[1], second);

  ExpectedText text = begun(true);
  text.beginArray("BROWSERS");
  for (int time = 0; time < 2; ++time) {
    text.beginRecord()
        .recordField("string", "BROWSER_NAME", "Firefox")
        .recordField("string", "BROWSER_VERSION", "128.3")
        .recordField("boolean", "IS_STANDARD", "TRUE")
        .endRecord();
  }
  text.beginRecord()
      .recordField("string", "BROWSER_NAME", "Opera")
      .recordField("string", "BROWSER_VERSION", "(null)")
      .recordField("boolean", "IS_STANDARD", "FALSE")
      .endRecord()
      .endArray();
  EXPECT_EQ(written(*_pool, "", true), firewallOff(text).endPool());
}

TEST_F(ZtPortalPoolComputerSystemTest, WhetherAnApplicationIsTheStandardOneIsKeptAsGiven) {
  for (const int value : {0, 1, 2, -1}) {
    const auto given = static_cast<ZtBOOL>(value);
    EXPECT_EQ(_pool->addBrowser("Firefox", "128.3", given)->isStandard(), given);
    EXPECT_EQ(_pool->addEMailClient("Thunderbird", "115", given)->isStandard(), given);
  }
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
  EXPECT_EQ(firewall->appCompany(), "");
  EXPECT_EQ(firewall->isEnabled(), 0);
  firewall->setAppName("Walls");
  firewall->setAppVersion("3");
  firewall->setAppCompany(nullptr);
  firewall->setIsEnabled(1);
  const auto client = _pool->addEMailClient("Mail", "4.5", 0);
  client->setIsStandard(1);
  _pool->addBrowser("Browser", "6", 0);

  for (const bool soap : {true, false}) {
    ExpectedText text = begun(soap, {}, 11);
    text.beginArray("BROWSERS")
        .beginRecord()
        .recordField("string", "BROWSER_NAME", "Browser")
        .recordField("string", "BROWSER_VERSION", "6")
        .recordField("boolean", "IS_STANDARD", "FALSE")
        .endRecord()
        .endArray()
        .beginArray("EMAILCLIENTS")
        .beginRecord()
        .recordField("string", "EMAILCLIENT_NAME", "Mail")
        .recordField("string", "EMAILCLIENT_VERSION", "4.5")
        .recordField("boolean", "IS_STANDARD", "TRUE")
        .endRecord()
        .endArray();
    firewallOff(text)
        .beginArray("FIREWALLAPPS")
        .beginRecord()
        .recordField("string", "FIREWALLAPP_NAME", "Walls")
        .recordField("string", "FIREWALLAPP_VERSION", "3")
        .recordField("string", "FIREWALLAPP_COMPANY", "(null)")
        .recordField("boolean", "IS_ENABLED", "TRUE")
        .endRecord()
        .endArray()
        .beginArray("ANTIVIRUSAPP")
        .beginRecord()
        .recordField("string", "ANTIVIRUSAPP_NAME", "AV & Co")
        .recordField("string", "ANTIVIRUSAPP_VERSION", "7")
        .recordField("string", "ANTIVIRUSAPP_COMPANY", "Company")
        .recordField("boolean", "IS_ENABLED", "TRUE")
        .recordField("boolean", "IS_UPTODATE", "TRUE")
        .endRecord()
        .endArray()
        .field("string", "GENERIC", "field");
    const std::string whole = text.endPool();
    EXPECT_EQ(written(*_pool, "           ", soap), whole);
    EXPECT_EQ(written(*_pool, "           ", soap), whole) << "written a second time";
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
  EXPECT_EQ(written(*_pool, "", true), untouched(true));
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
