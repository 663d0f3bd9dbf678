// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/unit/portal/PortalTest.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"
#include "ztportal/report/ZtReport.h"

namespace zt::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class PrivacyTest : public PortalTest {
 protected:
  ~PrivacyTest() override {
    ZtHost::setConsent(ZtConsent::Unset);
    ZtHost::setBroadcastEnabled(true);
    ZtHost::setValueFilter(nullptr);
    ZtHost::setRequestHook(nullptr);
  }

  void saveOneReport() {
    makeDocumentWithPool()->saveReport();
    ASSERT_EQ(namesInStore().size(), 1U);
  }
};

// Consent.

class ConsentInReportsTest : public PrivacyTest {};

TEST_F(ConsentInReportsTest, NothingHappensOnceItIsRevoked) {
  saveOneReport();
  const auto earlier = makeDocumentWithPool();
  ASSERT_TRUE(ZtHost::setConsent(ZtConsent::Revoked));
  platform.gestalt_.asked.clear();
  const auto later = makeDocumentWithPool();
  const auto computer = later->addPoolComputerSystemWithAutoCheck(ZtDate(), true);
  ASSERT_NE(computer, nullptr);
  EXPECT_EQ(computer->osName(),
            ZtPortalPoolComputerSystem::initWithValues(ZtDate(), false)->osName());
  EXPECT_EQ(later->machineId(), "{(null)}");
  EXPECT_THAT(platform.gestalt_.asked, IsEmpty());

  for (const auto& document : {earlier, later}) {
    forget();
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"reportToServer", [&] { EXPECT_FALSE(document->reportToServer()); }},
        {"saveReport", [&] { document->saveReport(); }},
        {"sendSavedReports", [&] { EXPECT_FALSE(document->sendSavedReports()); }},
        {"sendSavedReport",
         [&] { EXPECT_FALSE(document->sendSavedReport(inStore(namesInStore().front()))); }},
    };
    for (const auto& [name, call] : rows) {
      call();
      EXPECT_EQ(document->lastDelivery().outcome, ZtDeliveryOutcome::NoConsent) << name;
      EXPECT_EQ(document->lastDelivery().message, "The user has revoked the consent to reports.");
    }
    EXPECT_FALSE(document->reportToFile("/report.xml"));
    EXPECT_FALSE(platform.files_.exists("/report.xml"));
    EXPECT_THAT(steps, IsEmpty());
  }
  EXPECT_EQ(namesInStore().size(), 1U);
}

TEST_F(ConsentInReportsTest, EverythingHappensAgainOnceItIsGiven) {
  saveOneReport();
  ASSERT_TRUE(ZtHost::setConsent(ZtConsent::Revoked));
  const auto document = makeDocumentWithPool();
  EXPECT_FALSE(document->gotConfiguration());
  ASSERT_TRUE(ZtHost::setConsent(ZtConsent::Given));
  document->sendSavedReports();
  EXPECT_THAT(steps, ElementsAre(kGet, kVersion, kBroadcast, kReport));
  EXPECT_THAT(namesInStore(), IsEmpty());
  EXPECT_TRUE(document->reportToServer());
}

TEST_F(ConsentInReportsTest, AReportThatFailsIsNotSavedIfItIsRevokedMeanwhile) {
  const auto document = makeDocumentWithPool();
  report = {};
  platform.broadcast_.onPost = [] { ZtHost::setConsent(ZtConsent::Revoked); };
  EXPECT_FALSE(document->reportToServer());
  EXPECT_EQ(document->lastDelivery().outcome, ZtDeliveryOutcome::NoConsent);
  EXPECT_THAT(steps, IsEmpty());
  EXPECT_THAT(namesInStore(), IsEmpty());
}

TEST_F(ConsentInReportsTest, AWholeRunIsNotReported) {
  ASSERT_TRUE(ZtHost::setConsent(ZtConsent::Revoked));
  const auto run = ZtReport::initWithCustomerAndGuid(REP_CUSTOMERID_ZT, nullptr);
  ASSERT_NE(run, nullptr);
  run->startReport("setup");
  run->stopReport("finish");
  EXPECT_FALSE(run->sendReport(true));
  EXPECT_THAT(steps, IsEmpty());
  EXPECT_THAT(namesInStore(), IsEmpty());
}

// Broadcasts.

TEST_F(PrivacyTest, BroadcastsCanBeSwitchedOff) {
  const auto document = makeDocumentWithPool();
  ZtHost::setBroadcastEnabled(false);
  EXPECT_TRUE(document->reportToServer());
  EXPECT_THAT(steps, ElementsAre(kReport));
  ZtHost::setBroadcastEnabled(true);
  EXPECT_TRUE(document->reportToServer());
  EXPECT_THAT(steps, ElementsAre(kReport, kBroadcast, kReport));
}

// The filter.

class ValueFilterTest : public PrivacyTest {
 protected:
  static std::shared_ptr<ZtPortalData> makeFull() {
    auto document =
        ZtPortalData::initWithValues(kConfigurationUrl, false, "Kelvane", kApplicationId, "2.1.77");
    const auto pool = document->addPool("CUSTOM", ZtDate());
    pool->addString("NAME", "Ada");
    pool->addInteger("COUNT", 7);
    pool->addArray("LIST")->addBOOL("FLAG", 1);
    const auto execution = document->addPoolExecution(ZtDate());
    execution->setStartPoint("setup");
    for (const char* name : {"Copy", "Register"}) {
      execution->addStep(ZtDate::fromMilliseconds(1795262400123), name, ZtPortalStepEnter);
    }
    return document;
  }
};

TEST_F(ValueFilterTest, SeesEveryValueWithItsPoolAndName) {
  std::vector<std::string> seen;
  ZtHost::setValueFilter(
      [&seen](std::string_view pool, std::string_view name, std::string_view value) {
        seen.push_back(std::string(pool) + "/" + std::string(name) + "=" + std::string(value));
        return ZtDecision::keep();
      });
  const auto document = makeFull();
  const std::string text = document->generateXml(nullptr, true);
  const std::string id(document->reportId().view());
  const std::vector<std::string> beginning{
      "/ReportID=" + id,
      "/MachineID=" + std::string(document->machineId().view()),
      "/CustomerID=Kelvane",
      "/ApplicationID=" + std::string(kApplicationId),
      "/ApplicationVersion=2.1.77",
      "CUSTOM/NAME=Ada",
      "CUSTOM/COUNT=7",
      "CUSTOM/FLAG=TRUE",
      "EXECUTION/INSTALLATION_TYPE=Standard"};
  ASSERT_GT(seen.size(), beginning.size());
  EXPECT_TRUE(std::equal(beginning.begin(), beginning.end(), seen.begin()))
      << testing::PrintToString(seen);
  EXPECT_THAT(
      seen, testing::IsSupersetOf({"EXECUTION/START_POINT=setup", "EXECUTION/STEP_NAME=Copy",
                                   "EXECUTION/STEP_TIMESTAMP=2026-11-21T12:00:00.123UTC",
                                   "EXECUTION/STEP_NAME=Register", "EXECUTION/SUCCESSFULL=TRUE"}));
  // What the filter keeps is written byte for byte as without it.
  ZtHost::setValueFilter(nullptr);
  EXPECT_EQ(text, document->generateXml(nullptr, true));
}

TEST_F(ValueFilterTest, ReplacesAndDrops) {
  ZtHost::setValueFilter([](std::string_view, std::string_view name, std::string_view value) {
    if (value == "Ada" || value == "Copy") return ZtDecision::replace("somebody");
    const bool isDropped = name == "COUNT" || name == "FLAG" || name == "STEP_TIMESTAMP" ||
                           name == "START_TIME" || name == "MachineID";
    return isDropped ? ZtDecision::drop() : ZtDecision::keep();
  });
  const auto document = makeFull();
  const std::string text = document->generateXml(nullptr, false);
  EXPECT_THAT(text, HasSubstr("<MachineID></MachineID>"));
  EXPECT_THAT(text, HasSubstr("<CustomerID>Kelvane</CustomerID>"));
  const std::string fields =
      "        <Field FieldType=\"string\">\r\n          <Name>NAME</Name>\r\n"
      "          <Value>somebody</Value>\r\n        </Field>\r\n"
      "        <Field FieldType=\"array\">\r\n          <Name>LIST</Date>\r\n"
      "          <Fields>\r\n          </Fields>\r\n        </Data>\r\n";
  EXPECT_THAT(text, HasSubstr(fields));
  const std::string record =
      "          <Fields>\r\n"
      "            <Field FieldType=\"string\">\r\n              <Name>STEP_NAME</Name>\r\n"
      "              <Value>somebody</Value>\r\n            </Field>\r\n"
      "            <Field FieldType=\"string\">\r\n              <Name>STEP_TYPE</Name>\r\n";
  EXPECT_THAT(text, HasSubstr(record));
  for (const char* dropped : {"COUNT", "FLAG", "STEP_TIMESTAMP", "START_TIME", "Ada", "Copy"}) {
    EXPECT_THAT(text, Not(HasSubstr(dropped)));
  }
}

TEST_F(ValueFilterTest, AValueIsDroppedWhenTheFilterThrows) {
  ZtHost::setValueFilter(
      [](std::string_view, std::string_view name, std::string_view) -> ZtDecision {
        if (name == "NAME") throw std::runtime_error("of a test");
        if (name == "COUNT") throw 7;
        return ZtDecision::keep();
      });
  const std::string text = makeFull()->generateXml(nullptr, false);
  EXPECT_THAT(text, Not(HasSubstr("Ada")));
  EXPECT_THAT(text, Not(HasSubstr("COUNT")));
  EXPECT_THAT(text, HasSubstr("FLAG"));
}

TEST_F(ValueFilterTest, TheReplacementIsEscaped) {
  ZtHost::setValueEscaping(true);
  ZtHost::setValueFilter([](std::string_view, std::string_view, std::string_view value) {
    return value == "Ada" ? ZtDecision::replace("<&>") : ZtDecision::keep();
  });
  EXPECT_THAT(makeFull()->generateXml(nullptr, false), HasSubstr("<Value>&lt;&amp;&gt;</Value>"));
  ZtHost::setValueEscaping(false);
}

// The hook.

class RequestHookTest : public PrivacyTest {};

TEST_F(RequestHookTest, SeesAndReplacesWhatIsBroadcastAndSent) {
  const auto document = makeDocumentWithPool();
  std::string seen;
  ZtHost::setRequestHook([&seen](std::string_view request) {
    seen = request;
    return ZtDecision::replace("<mine/>");
  });
  EXPECT_TRUE(document->reportToServer());
  EXPECT_EQ(seen, requestOf(*document));
  ASSERT_EQ(platform.http_.asked.size(), 1U);
  EXPECT_EQ(platform.http_.asked.front().body, "<mine/>");
  ASSERT_EQ(platform.broadcast_.posted.size(), 1U);
  EXPECT_EQ(platform.broadcast_.posted.front().userInfo.at("request"), "<mine/>");

  report = {};
  EXPECT_FALSE(document->reportToServer());
  ASSERT_EQ(namesInStore().size(), 1U);
  const std::string file = inStore(namesInStore().front());
  EXPECT_EQ(platform.files_.read(file, 64), "<mine/>");
  EXPECT_FALSE(document->reportToFile("/report.xml"));
  EXPECT_EQ(platform.files_.read("/report.xml", 64), "<mine/>");

  report = {200, kAccepted};
  EXPECT_TRUE(document->sendSavedReport(file));
  EXPECT_EQ(seen, "<mine/>");
}

TEST_F(RequestHookTest, WhatItDropsIsNeitherBroadcastNorSentNorSaved) {
  saveOneReport();
  const std::string file = inStore(namesInStore().front());
  const auto document = makeDocumentWithPool();
  const std::vector<ZtRequestHook> hooks{
      [](std::string_view) { return ZtDecision::drop(); },
      [](std::string_view) -> ZtDecision { throw std::runtime_error("of a test"); }};
  for (const ZtRequestHook& hook : hooks) {
    ZtHost::setRequestHook(hook);
    EXPECT_FALSE(document->reportToServer());
    EXPECT_EQ(document->lastDelivery().outcome, ZtDeliveryOutcome::Dropped);
    EXPECT_EQ(document->lastDelivery().message, "The host's request hook has dropped the report.");
    document->saveReport();
    EXPECT_EQ(document->lastDelivery().outcome, ZtDeliveryOutcome::Dropped);
    EXPECT_EQ(document->lastDelivery().savedTo, "");
    EXPECT_FALSE(document->sendSavedReport(file));
    EXPECT_EQ(document->lastDelivery().outcome, ZtDeliveryOutcome::Dropped);
    EXPECT_EQ(document->lastDelivery().savedTo, file);
    EXPECT_FALSE(document->reportToFile("/report.xml"));
  }
  EXPECT_THAT(steps, IsEmpty());
  EXPECT_EQ(namesInStore().size(), 1U);
  EXPECT_FALSE(platform.files_.exists("/report.xml"));
}

TEST_F(RequestHookTest, WhatItKeepsStays) {
  const auto document = makeDocumentWithPool();
  ZtHost::setRequestHook([](std::string_view) { return ZtDecision::keep(); });
  EXPECT_TRUE(document->reportToServer());
  EXPECT_EQ(platform.http_.asked.front().body, requestOf(*document));
}

}  // namespace
}  // namespace zt::test
