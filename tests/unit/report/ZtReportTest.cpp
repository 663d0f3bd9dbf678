// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tests/unit/portal/PortalTest.h"
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

  /// The generic fields of the execution pool, each as "type name=value".
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

TEST_F(ZtReportTest, WithoutAGuidTheCustomersDefaultIsUsed) {
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
    std::string_view applicationId;
  } rows[] = {
      {REP_CUSTOMERID_ZT, "Kelvane", REP_URL_ZT, "kelvane",
       "{51414B0C-9B14-4AE3-AEAF-77084476EDED-AD32-B53E40FB73D93A3C}"},
      {REP_CUSTOMERID_NORVANTEL, "Norvantel", REP_URL_NORVANTEL, "norvantel",
       "{4AC1FFA7-0D5B-4B01-82CF-4A7F3D8C7A31}"},
      {REP_CUSTOMERID_BRISALINK, "Brisalink", REP_URL_BRISALINK, "brisalink",
       "{9D5A644A-C47F-46E1-957B-59702FFEE53A}"},
      {REP_CUSTOMERID_CAVOMEDIA, "cavomedia", REP_URL_CAVOMEDIA, "cavomedia",
       "{55F8F5AD-4F4C-4935-B4D4-4A72885500BA}"},
      {REP_CUSTOMERID_QUILLNET, "Quillnet", REP_URL_QUILLNET, "quillnet",
       "{3A261E04-A188-45CB-9783-32CFE041B4A3}"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.id, row.text);
    EXPECT_EQ(row.url, "http://config.kelvane.example/reporting/" + std::string(row.file) + ".xml");
    const auto facade = ZtReport::initWithCustomerAndGuid(row.id, nullptr);
    ASSERT_NE(facade, nullptr) << row.text;
    EXPECT_EQ(facade->customerId(), row.text);
    EXPECT_EQ(facade->url(), row.url);
    EXPECT_EQ(facade->appId(), row.applicationId);
  }
}

TEST_F(ZtReportTest, AnUnknownCustomerHasNoReportAndMakesNoRequest) {
  for (const ZtString& customer : {ZtString("kelvane"), ZtString("KELVANE"), ZtString("Cavomedia"),
                                   ZtString("Kelvane "), ZtString(""), ZtString()}) {
    EXPECT_EQ(ZtReport::initWithCustomerAndGuid(customer, "{MINE}"), nullptr) << customer.printed();
  }
  EXPECT_TRUE(steps.empty());
  EXPECT_TRUE(platform.gestalt_.asked.empty());
}

TEST_F(ZtReportTest, AHostWithoutAShortVersionHasNullInstead) {
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

TEST_F(ZtReportTest, ASecondStartKeepsTheExecutionPoolWithANewStart) {
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

TEST_F(ZtReportTest, SendingReturnsTheResultOfReportToServer) {
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

TEST_F(ZtReportTest, AnExceptionOfThePlatformIsFalseAndOthersPass) {
  const auto facade = made();
  facade->startReport("setup");
  platform.broadcast_.onPost = zt::test::throwZtException;
  EXPECT_FALSE(facade->sendReport(true));
  platform.broadcast_.onPost = zt::test::throwForeign;
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

TEST_F(ZtReportTest, ApplicationIdsAreTheKnownOnes) {
  const struct {
    const ZtString& id;
    std::string_view text;
  } rows[] = {
      {REP_APPID_ZT_INSTALLER, "{F0862C47-59CA-4B15-9612-01F52E295C59}"},
      {REP_APPID_ZT_SETUPASSISTANT, "{2B2A985D-6459-489A-A61D-3E68EB137814}"},
      {REP_APPID_ZT_REPAIRTOOL, "{5326173B-AD35-4E00-A859-85C0DCE7A46E}"},
      {REP_APPID_ZT_CONNECTIONMANAGER, "{063732DE-9D2C-4143-9EB6-D69E5EE35F62}"},
      {REP_APPID_NORVANTEL_INSTALLER, "{6FEE95A9-E375-4E43-8405-3899B0FC3EE0}"},
      {REP_APPID_NORVANTEL_SETUPASSISTANT, "{77B58678-657B-461D-9BA9-7F96BD5CCFC4}"},
      {REP_APPID_NORVANTEL_REPAIRTOOL, "{B113641E-7657-4D4F-BDD9-182EF34EEC31}"},
      {REP_APPID_NORVANTEL_CONNECTIONMANAGER, "{43019364-5F7A-4FBB-8E50-0779EEADE78A}"},
      {REP_APPID_BRISALINK_INSTALLER, "{2269C39E-92B4-4E20-84C7-AFAA89837938}"},
      {REP_APPID_BRISALINK_SETUPASSISTANT, "{D37D19D3-C258-4061-8D3F-BE9540A606E5}"},
      {REP_APPID_BRISALINK_REPAIRTOOL, "{0AFE993C-2BA0-4FEF-A3BA-E2FBCA76E398}"},
      {REP_APPID_BRISALINK_CONNECTIONMANAGER, "{90BD1D7A-BA7E-4BE8-B6CC-AD4EACDDFEBF}"},
      {REP_APPID_CAVOMEDIA_INSTALLER, "{4D0FA742-7E13-40C1-8B4E-B388A30FB233}"},
      {REP_APPID_CAVOMEDIA_SETUPASSISTANT, "{0D9C8737-0B09-4363-8E3A-372AA5E681CB}"},
      {REP_APPID_CAVOMEDIA_REPAIRTOOL, "{8BAF2A4C-E64B-452C-B9B2-8514C183C5D2}"},
      {REP_APPID_CAVOMEDIA_CONNECTIONMANAGER, "{1DF48E92-9FED-49F8-9AF3-45E050358972}"},
      {REP_APPID_QUILLNET_INSTALLER, "{873BD530-C8AA-4642-ACDA-E01AA59DFAC6}"},
      {REP_APPID_QUILLNET_SETUPASSISTANT, "{3B0392EF-2DCE-4C3E-8C4B-39F352463498}"},
      {REP_APPID_QUILLNET_REPAIRTOOL, "{C062DA5F-0E91-4723-833D-C3E46EF783D1}"},
      {REP_APPID_QUILLNET_CONNECTIONMANAGER, "{5EA996A0-4762-4E12-8DCF-C75A39ADE18D}"},
  };
  std::set<std::string_view> ids;
  for (const auto& row : rows) {
    EXPECT_EQ(row.id, row.text);
    EXPECT_TRUE(ids.insert(row.id.view()).second) << row.text << " twice";
  }
}

}  // namespace
