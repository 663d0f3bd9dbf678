#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tests/portal/PortalTest.h"
#include "ztportal/pools/ZtPortalPoolBOOL.h"
#include "ztportal/pools/ZtPortalPoolString.h"
#include "ztportal/report/ZtReport.h"

namespace {

using zt::test::kAccepted;
using zt::test::kRefused;
using Texts = std::vector<std::string>;

class ZtReportTest : public zt::test::PortalTest {
 protected:
  ZtReportTest() {
    ZtHost::setBundleInfo({{"CFBundleName", "Setup"},
                           {"CFBundleShortVersionString", "2.1"},
                           {"CFBundleVersion", "77"}});
  }

  static std::shared_ptr<ZtReport> made() {
    return ZtReport::initWithCustomerAndGuid(REP_CUSTOMERID_ZT, nullptr);
  }

  static std::size_t executionPools(const ZtReport& facade) {
    std::size_t count = 0;
    for (const auto& pool : facade.data()->pools()) count += pool->poolType() == "EXECUTION";
    return count;
  }

  /// The generic fields of the execution pool, each "type name=value".
  static Texts facts(const ZtReport& facade) {
    Texts texts;
    for (const auto& field : facade.poolExecution()->fields()->fields()) {
      std::string text(field->fieldName().printed());
      if (const auto string = std::dynamic_pointer_cast<ZtPortalPoolString>(field)) {
        text.insert(0, "string ").append("=").append(string->data().printed());
      } else if (const auto flag = std::dynamic_pointer_cast<ZtPortalPoolBOOL>(field)) {
        text.insert(0, "boolean ").append(flag->data() == 1 ? "=yes" : "=no");
      }
      texts.push_back(text);
    }
    return texts;
  }

  std::size_t savedReports() {
    const auto names = platform.files_.list("/home/user/.local/share/Kelvane/Setup/reports");
    return names ? names->size() : 0;
  }
};

TEST_F(ZtReportTest, MakesADocumentOfTheCustomerWithAnInventoryOfTheComputer) {
  const auto facade = made();
  ASSERT_NE(facade, nullptr);
  EXPECT_EQ(facade->customerId(), "Kelvane");
  EXPECT_EQ(facade->url(), REP_URL_ZT);
  EXPECT_EQ(facade->poolExecution(), nullptr);
  EXPECT_TRUE(facade->installDataString()->empty());
  EXPECT_TRUE(facade->installDataBOOL()->empty());

  const auto document = facade->data();
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->configurationUrl(), REP_URL_ZT);
  EXPECT_EQ(document->customerId(), "Kelvane");
  EXPECT_EQ(document->applicationId(), facade->appId());
  EXPECT_EQ(document->applicationVersion(), "2.1.77");
  EXPECT_TRUE(document->online());
  EXPECT_EQ(steps, (Texts{"GET http://config.kelvane.example/reporting/kelvane.xml",
                          "version http://report.test/soap"}));

  ASSERT_EQ(document->pools().size(), 1U);
  const auto computer = std::dynamic_pointer_cast<ZtPortalPoolComputerSystem>(document->pools()[0]);
  ASSERT_NE(computer, nullptr);
  EXPECT_EQ(computer->osName(), "MACOS") << "the machine was not checked";
  EXPECT_FALSE(computer->timeStamp().isNull());
}

TEST_F(ZtReportTest, WithoutAGuidTheCustomersDefaultIsTaken) {
  const ZtString byDefault = made()->appId();
  EXPECT_EQ(byDefault.view().size(), 60U);
  EXPECT_EQ(ZtReport::initWithCustomerAndGuid("Kelvane", "")->appId(), byDefault);
  EXPECT_EQ(ZtReport::initWithCustomerAndGuid("Kelvane", " ")->appId(), " ");
  EXPECT_EQ(ZtReport::initWithCustomerAndGuid("Kelvane", "{MINE}")->appId(), "{MINE}");
}

TEST_F(ZtReportTest, EveryCustomerHasItsUrlAndDefaultId) {
  const struct {
    const ZtString& id;
    std::string_view text;
    const ZtString& url;
    std::string_view file;
  } rows[] = {{REP_CUSTOMERID_ZT, "Kelvane", REP_URL_ZT, "kelvane"},
              {REP_CUSTOMERID_NORVANTEL, "Norvantel", REP_URL_NORVANTEL, "norvantel"},
              {REP_CUSTOMERID_BRISALINK, "Brisalink", REP_URL_BRISALINK, "brisalink"},
              {REP_CUSTOMERID_CAVOMEDIA, "cavomedia", REP_URL_CAVOMEDIA, "cavomedia"},
              {REP_CUSTOMERID_QUILLNET, "Quillnet", REP_URL_QUILLNET, "quillnet"}};
  std::set<std::string> ids;
  for (const auto& row : rows) {
    EXPECT_EQ(row.id, row.text);
    EXPECT_EQ(row.url, "http://config.kelvane.example/reporting/" + std::string(row.file) + ".xml");
    const auto facade = ZtReport::initWithCustomerAndGuid(row.id, nullptr);
    ASSERT_NE(facade, nullptr) << row.text;
    EXPECT_EQ(facade->customerId(), row.text);
    EXPECT_EQ(facade->url(), row.url);
    const std::string id(facade->appId().view());
    const std::string form = row.text == "Kelvane"
                                 ? "{########-####-####-####-############-####-################}"
                                 : "{########-####-####-####-############}";
    std::string shape = id;
    for (char& byte : shape) {
      if ((byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'F')) byte = '#';
    }
    EXPECT_EQ(shape, form);
    EXPECT_TRUE(ids.insert(id).second) << id << " twice";
  }
}

TEST_F(ZtReportTest, AnUnknownCustomerHasNoReportAndNoTraffic) {
  for (const ZtString& customer : {ZtString("kelvane"), ZtString("KELVANE"), ZtString("Cavomedia"),
                                   ZtString("Kelvane "), ZtString(""), ZtString()}) {
    EXPECT_EQ(ZtReport::initWithCustomerAndGuid(customer, "{MINE}"), nullptr) << customer.printed();
  }
  EXPECT_TRUE(steps.empty());
  EXPECT_TRUE(platform.gestalt_.asked.empty());
}

TEST_F(ZtReportTest, AHostWithoutAShortVersionHasNullInItsPlace) {
  ZtHost::setBundleInfo({{"CFBundleName", "Setup"}, {"CFBundleVersion", "77"}});
  EXPECT_EQ(made()->data()->applicationVersion(), "(null).77");
  ZtHost::setBundleInfo({{"CFBundleName", "Setup"}});
  EXPECT_EQ(made()->data()->applicationVersion(), "(null).(null)");
}

TEST_F(ZtReportTest, ARunBeginsAndEnds) {
  const auto facade = made();
  facade->startReport("setup");
  const auto execution = facade->poolExecution();
  ASSERT_NE(execution, nullptr);
  EXPECT_EQ(facade->data()->pools().back(), execution);
  EXPECT_EQ(execution->startPoint(), "setup");
  EXPECT_GE(execution->startTime(), execution->timeStamp());
  EXPECT_EQ(execution->endPoint(), "");

  execution->setEndTime(ZtDate());
  facade->stopReport("finish");
  EXPECT_EQ(execution->endPoint(), "finish");
  EXPECT_GE(execution->endTime(), execution->startTime());
}

TEST_F(ZtReportTest, ASecondStartKeepsTheExecutionAndGivesItANewStart) {
  const auto facade = made();
  facade->startReport("first");
  const auto execution = facade->poolExecution();
  execution->setStartTime(ZtDate());
  facade->startReport("second");
  EXPECT_EQ(facade->poolExecution(), execution);
  EXPECT_EQ(executionPools(*facade), 1U);
  EXPECT_EQ(execution->startPoint(), "second");
  EXPECT_FALSE(execution->startTime().isNull());
}

TEST_F(ZtReportTest, AStopWithoutAStartAddsNoExecution) {
  const auto facade = made();
  facade->stopReport("finish");
  EXPECT_EQ(facade->poolExecution(), nullptr);
  EXPECT_EQ(executionPools(*facade), 0U);
}

TEST_F(ZtReportTest, FactsBecomeFieldsOfTheExecutionOnce) {
  const auto facade = made();
  facade->startReport("setup");
  (*facade->installDataString())["EDITION"] = "Home";
  (*facade->installDataString())["ANY"] = nullptr;
  (*facade->installDataBOOL())["ICON"] = "yes";
  EXPECT_TRUE(facade->sendReport(true));
  const Texts once{"string ANY=(null)", "string EDITION=Home", "boolean ICON=yes"};
  EXPECT_EQ(facts(*facade), once);
  EXPECT_TRUE(facade->installDataString()->empty());
  EXPECT_TRUE(facade->installDataBOOL()->empty());
  facade->sendReport(false);
  EXPECT_EQ(facts(*facade), once);
}

TEST_F(ZtReportTest, YesInAnyLetterCaseIsTrueAndAllElseIsFalse) {
  const auto facade = made();
  facade->startReport("setup");
  auto& flags = *facade->installDataBOOL();
  flags = {{"A", "yes"}, {"B", "YES"},  {"C", "yEs"},   {"D", "true"}, {"E", "1"}, {"F", "y"},
           {"G", ""},    {"H", " yes"}, {"I", nullptr}, {"J", "yess"}, {"K", "no"}};
  facade->sendReport(false);
  EXPECT_EQ(facts(*facade),
            (Texts{"boolean A=yes", "boolean B=yes", "boolean C=yes", "boolean D=no",
                   "boolean E=no", "boolean F=no", "boolean G=no", "boolean H=no", "boolean I=no",
                   "boolean J=no", "boolean K=no"}));
}

TEST_F(ZtReportTest, BeforeAStartFactsAreDroppedAndTheReportIsSent) {
  const auto facade = made();
  (*facade->installDataString())["EDITION"] = "Home";
  (*facade->installDataBOOL())["ICON"] = "yes";
  forget();
  EXPECT_TRUE(facade->sendReport(true));
  EXPECT_EQ(steps, (Texts{"broadcast", "report http://report.test/soap"}));
  EXPECT_EQ(executionPools(*facade), 0U);
  EXPECT_TRUE(facade->installDataString()->empty());
  EXPECT_TRUE(facade->installDataBOOL()->empty());
}

TEST_F(ZtReportTest, SendingSaysWhatTheServerSaid) {
  const auto facade = made();
  EXPECT_TRUE(facade->sendReport(true));
  EXPECT_EQ(savedReports(), 0U);
  report = {200, kRefused};
  EXPECT_FALSE(facade->sendReport(true));
  EXPECT_EQ(savedReports(), 1U);
}

TEST_F(ZtReportTest, SavingIsAlwaysTrueAndSendsNothing) {
  const auto facade = made();
  forget();
  EXPECT_TRUE(facade->sendReport(false));
  EXPECT_EQ(savedReports(), 1U);
  EXPECT_TRUE(steps.empty());
  platform.supportFolder_.folder = std::nullopt;
  EXPECT_TRUE(facade->sendReport(false)) << "also where nothing can be written";
}

TEST_F(ZtReportTest, SavedReportsAreResentWithTheDocumentsResult) {
  const auto facade = made();
  facade->sendReport(false);
  forget();
  EXPECT_FALSE(facade->sendSavedReports());
  EXPECT_EQ(steps, (Texts{"broadcast", "report http://report.test/soap"}));
  EXPECT_EQ(savedReports(), 0U);
}

TEST_F(ZtReportTest, AnExceptionOfThePlatformIsFalseAndOthersReachTheCaller) {
  const auto facade = made();
  facade->startReport("setup");
  platform.broadcast_.onPost = zt::test::raise;
  EXPECT_FALSE(facade->sendReport(true));
  platform.broadcast_.onPost = zt::test::raiseForeign;
  EXPECT_THROW(facade->sendReport(true), zt::test::ForeignError);
}

TEST_F(ZtReportTest, ItsPropertiesMayBeReplaced) {
  const auto facade = made();
  facade->setAppId("app");
  facade->setCustomerId("customer");
  facade->setUrl("url");
  EXPECT_EQ(facade->appId(), "app");
  EXPECT_EQ(facade->customerId(), "customer");
  EXPECT_EQ(facade->url(), "url");
  const auto facts = std::make_shared<ZtReport::Facts>();
  facade->setInstallDataString(facts);
  facade->setInstallDataBOOL(facts);
  EXPECT_EQ(facade->installDataString(), facts);
  EXPECT_EQ(facade->installDataBOOL(), facts);
  const auto document = makeDocument();
  facade->setData(document);
  EXPECT_EQ(facade->data(), document);
  const auto execution = document->addPoolExecution(ZtDate::now());
  facade->setPoolExecution(execution);
  facade->startReport("mine");
  EXPECT_EQ(facade->poolExecution(), execution);
  EXPECT_EQ(execution->startPoint(), "mine");
}

TEST_F(ZtReportTest, WithoutADocumentOrFactsItDoesNothing) {
  const auto facade = made();
  facade->setData(nullptr);
  facade->setInstallDataString(nullptr);
  facade->setInstallDataBOOL(nullptr);
  forget();
  facade->startReport("setup");
  facade->stopReport("finish");
  EXPECT_EQ(facade->poolExecution(), nullptr);
  EXPECT_FALSE(facade->sendReport(true));
  EXPECT_TRUE(facade->sendReport(false));
  EXPECT_FALSE(facade->sendSavedReports());
  EXPECT_TRUE(steps.empty());
}

TEST_F(ZtReportTest, ApplicationIdsAreGuidsOfTheirOwn) {
  const ZtString* const all[] = {
      &REP_APPID_ZT_INSTALLER,         &REP_APPID_ZT_SETUPASSISTANT,
      &REP_APPID_ZT_REPAIRTOOL,        &REP_APPID_ZT_CONNECTIONMANAGER,
      &REP_APPID_NORVANTEL_INSTALLER,  &REP_APPID_NORVANTEL_SETUPASSISTANT,
      &REP_APPID_NORVANTEL_REPAIRTOOL, &REP_APPID_NORVANTEL_CONNECTIONMANAGER,
      &REP_APPID_BRISALINK_INSTALLER,  &REP_APPID_BRISALINK_SETUPASSISTANT,
      &REP_APPID_BRISALINK_REPAIRTOOL, &REP_APPID_BRISALINK_CONNECTIONMANAGER,
      &REP_APPID_CAVOMEDIA_INSTALLER,  &REP_APPID_CAVOMEDIA_SETUPASSISTANT,
      &REP_APPID_CAVOMEDIA_REPAIRTOOL, &REP_APPID_CAVOMEDIA_CONNECTIONMANAGER,
      &REP_APPID_QUILLNET_INSTALLER,   &REP_APPID_QUILLNET_SETUPASSISTANT,
      &REP_APPID_QUILLNET_REPAIRTOOL,  &REP_APPID_QUILLNET_CONNECTIONMANAGER};
  std::set<std::string_view> ids;
  for (const ZtString* id : all) {
    EXPECT_TRUE(ids.insert(id->view()).second) << id->view() << " twice";
    EXPECT_EQ(id->view().size(), 38U);
    EXPECT_EQ(id->view().front(), '{');
    EXPECT_EQ(id->view().back(), '}');
  }
  EXPECT_EQ(ids.size(), 20U);
}

}  // namespace
