// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/portal/ZtReportDescription.h"

// What a description makes: the same as the corresponding calls. How that is written is a
// matter of the pools' own tests; that each key has its field, of ReferencePageTest.

namespace zt::test {
namespace {

using Description = ZtReportDescription;

class DescriptionTest : public PoolsFixture {
 protected:
  static std::shared_ptr<ZtPortalData> documentOf(const std::string& pools) {
    return Description(R"({"pools": [)" + pools + "]}").makeOffline();
  }
  /// The one pool of a document; `json` is what its description says besides the kind.
  template <class Pool>
  static std::shared_ptr<Pool> described(const std::string& kind, const std::string& json) {
    const auto pools =
        documentOf(R"({"kind": ")" + kind + "\"" + (json.empty() ? "" : ", ") + json + "}")
            ->pools();
    return std::dynamic_pointer_cast<Pool>(pools.at(0));
  }

  /// Compares the text of a described pool of `kNoon`, or without a date, with that of `expected`.
  template <class Pool>
  static void expectPool(const std::string& kind, const std::string& json, const Pool& expected) {
    const std::string time =
        expected.timeStamp().isNull() ? "null" : R"("2026-11-21T12:00:00.123Z")";
    const auto pool =
        described<Pool>(kind, R"("timeStamp": )" + time + (json.empty() ? "" : ", ") + json);
    ASSERT_NE(pool, nullptr);
    EXPECT_EQ(written(*pool, "", false), written(expected, "", false)) << json;
  }
  static void expectFields(const std::string& json, const std::string& outline) {
    const auto pool = described<ZtPortalPool>(
        "generic", R"("poolType": "CUSTOM", "timeStamp": null, "fields": [)" + json + "]");
    EXPECT_EQ(written(*pool, "", false), crlf(poolLines("CUSTOM", "(null)", outline))) << json;
  }
};

TEST_F(DescriptionTest, OfNothingIsADocumentWithoutText) {
  for (const char* text : {"{}", R"({"pools": []})", R"({"customerId": "Kelvane"})"}) {
    const Description description(text);
    EXPECT_FALSE(description.hasPools()) << text;
    EXPECT_EQ(description.configurationUrl(), nullptr) << text;
    EXPECT_EQ(description.makeOffline()->generateXml(nullptr, false), "") << text;
  }
}

TEST_F(DescriptionTest, TakesTheIdentifiers) {
  const Description description(R"({
      "customerId": "Kelvane", "applicationId": "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}",
      "applicationVersion": "2.1.77", "configurationUrl": "http://127.0.0.1:1/k.xml",
      "cacheConfiguration": true, "pools": [{"kind": "generic"}]})");
  EXPECT_TRUE(description.hasPools());
  EXPECT_EQ(description.configurationUrl(), "http://127.0.0.1:1/k.xml");
  const auto document = description.makeOffline();
  EXPECT_EQ(document->configurationUrl(), nullptr);
  EXPECT_EQ(document->customerId(), "Kelvane");
  EXPECT_EQ(document->applicationId(), "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}");
  EXPECT_EQ(document->applicationVersion(), "2.1.77");
  EXPECT_NE(document->reportId(), description.makeOffline()->reportId());
}

TEST_F(DescriptionTest, TakesNullAndEmptyIdentifiersApart) {
  const auto document =
      Description(R"({"customerId": null, "applicationId": "", "applicationVersion": "<&>"})")
          .makeOffline();
  EXPECT_TRUE(document->customerId().isNull());
  EXPECT_EQ(document->applicationId(), "");
  EXPECT_EQ(document->applicationVersion(), "<&>");
}

TEST_F(DescriptionTest, KeepsTheOrderOfThePools) {
  const auto document = documentOf(R"(
      {"kind": "generic", "poolType": "B", "timeStamp": "2026-11-21T12:00:00.123Z"},
      {"kind": "execution", "timeStamp": "2026-11-21T12:00:00.123Z"},
      {"kind": "generic", "poolType": "A", "timeStamp": "2026-11-21T14:00:01.2509+02:00"},
      {"kind": "generic", "poolType": null, "timeStamp": null},
      {"kind": "generic", "poolType": "B", "timeStamp": "1970-01-01T00:00:00Z"})");
  const struct {
    ZtString type;
    ZtDate timeStamp;
  } rows[] = {
      {"B", kNoon}, {"EXECUTION", kNoon}, {"A", kLater}, {nullptr, ZtDate()}, {"B", kEpoch}};
  std::size_t at = 0;
  ASSERT_EQ(document->pools().size(), std::size(rows));
  for (const auto& row : rows) {
    EXPECT_EQ(document->pools()[at]->poolType(), row.type) << at;
    EXPECT_EQ(document->pools()[at]->timeStamp(), row.timeStamp) << at;
    ++at;
  }
}

TEST_F(DescriptionTest, TakesFieldsOfEveryType) {
  expectFields(R"({"name": "EDITION", "type": "string", "value": "Home"},
                  {"name": "EMPTY", "type": "string", "value": ""},
                  {"name": "MISSING", "type": "string", "value": null},
                  {"name": "ABSENT", "type": "string"},
                  {"name": null, "type": "string", "value": "<a&\u00e4>"},
                  {"type": "string", "value": "x"})",
               R"(
string EDITION = Home
string EMPTY =
string MISSING = (null)
string ABSENT = (null)
string (null) = <a&ä>
string (null) = x
)");
  expectFields(R"({"name": "A", "type": "integer", "value": -2147483648},
                  {"name": "B", "type": "integer", "value": 2147483647},
                  {"name": "C", "type": "integer"})",
               R"(
integer A = -2147483648
integer B = 2147483647
integer C = 0
)");
  expectFields(R"({"name": "A", "type": "float", "value": 2.5},
                  {"name": "B", "type": "float", "value": 7},
                  {"name": "C", "type": "float", "value": 1e-50},
                  {"name": "D", "type": "float", "value": 1e-400},
                  {"name": "E", "type": "float"},
                  {"name": "F", "type": "float", "value": 16777217})",
               R"(
float A = 2.50
float B = 7.00
float C = 0.00
float D = 0.00
float E = 0.00
float F = 16777216.00
)");
  expectFields(R"({"name": "BARE", "type": "none"}, {"type": "none"},
                  {"name": null, "type": "none"})",
               "none BARE\nnone (null)\nnone (null)");
}

TEST_F(DescriptionTest, TakesBooleansAsBytes) {
  const auto pool = described<ZtPortalPool>("generic", R"("fields": [
      {"name": "A", "type": "boolean", "value": true},
      {"name": "B", "type": "boolean", "value": 255}, {"name": "C", "type": "boolean"}])");
  std::vector<int> bytes;
  for (const auto& field : pool->fields()->fields()) {
    bytes.push_back(std::dynamic_pointer_cast<ZtPortalPoolBOOL>(field)->data());
  }
  EXPECT_EQ(bytes, (std::vector<int>{1, -1, 0}));
}

TEST_F(DescriptionTest, TakesArraysInArrays) {
  expectFields(R"({"name": "OUTER", "type": "array", "fields": [
                    {"name": "INNER", "type": "array", "fields": [
                      {"name": "COUNT", "type": "integer", "value": 7}]},
                    {"name": "EMPTY", "type": "array", "fields": []},
                    {"name": "A", "type": "string", "value": "x"}]},
                  {"type": "array"})",
               R"(
array OUTER
  array INNER
    integer COUNT = 7
  array EMPTY
  string A = x
array (null)
)");
}

TEST_F(DescriptionTest, LeavesWhatTheCreationOfAPoolSets) {
  const auto execution = ZtPortalPoolExecution::initWithValues(kNoon);
  expectPool("execution", "", *execution);
  expectPool("execution", R"("steps": [], "fields": [])", *execution);
  expectPool("initialization", "", *ZtPortalPoolInitialization::initWithValues(kNoon));
}

TEST_F(DescriptionTest, TakesNullTimeStampsAsMissingThroughout) {
  const auto pool = ZtPortalPoolExecution::initWithValues(ZtDate());
  pool->addStep(ZtDate(), nullptr, 0);
  expectPool("execution", R"("steps": [{"timeStamp": null, "stepName": null}])", *pool);
}

TEST_F(DescriptionTest, TakesEveryValueOfAnExecution) {
  const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
  pool->setStartPoint("setup");
  pool->setEndPoint("finish");
  pool->setStartTime(kLater);
  pool->setEndTime(kEpoch);
  pool->setEndResultString("OK");
  pool->setEndResultCode("0");
  pool->setEndErrorMessageString("none");
  pool->setEndErrorMessageCode(nullptr);
  pool->setSuccessfull(0);
  pool->setCancelled(1);
  pool->setExecutionType("Silent");
  pool->addString("EDITION", "Home");
  expectPool("execution", R"("startPoint": "setup",
      "endPoint": "finish", "startTime": "2026-11-21T12:00:01.250Z",
      "endTime": "1970-01-01T00:00:00Z", "endResultString": "OK", "endResultCode": "0",
      "endErrorMessageString": "none", "endErrorMessageCode": null, "successfull": false,
      "cancelled": true, "executionType": "Silent",
      "fields": [{"name": "EDITION", "type": "string", "value": "Home"}])",
             *pool);
}

TEST_F(DescriptionTest, TakesStepsInOrder) {
  const auto expected = ZtPortalPoolExecution::initWithValues(kNoon);
  const auto first = expected->addStep(kLater, "Copy", ZtPortalStepLeave);
  first->setStepMessageString("done");
  first->setStepMessageCode("0");
  const auto second = expected->addStep(ZtDate(), "", ZtPortalStepEnter);
  second->setStepMessageString(nullptr);
  second->setStepMessageCode(nullptr);
  expected->addStep(kNoon, nullptr, 5);
  expectPool("execution", R"("steps": [{"timeStamp": "2026-11-21T12:00:01.250Z",
      "stepName": "Copy", "stepType": "LEAVE", "stepMessageString": "done", "stepMessageCode": "0"},
      {"timeStamp": null, "stepName": "", "stepMessageString": null, "stepMessageCode": null},
      {"timeStamp": "2026-11-21T12:00:00.123Z", "stepType": 5}])",
             *expected);
}

TEST_F(DescriptionTest, TakesTheTimeNowForAnAbsentTimeStamp) {
  const Description description(
      R"({"pools": [{"kind": "execution", "steps": [{}]}, {"kind": "generic"}]})");
  const auto before = ZtDate::now().milliseconds();
  const auto document = description.makeOffline();
  const auto after = ZtDate::now().milliseconds();

  const auto execution =
      std::dynamic_pointer_cast<ZtPortalPoolExecution>(document->pools().front());
  ASSERT_NE(execution, nullptr);
  for (const ZtDate& date : {execution->timeStamp(), execution->executionStep(0)->timeStamp(),
                             document->pools().back()->timeStamp()}) {
    ASSERT_FALSE(date.isNull());
    EXPECT_LE(before, date.milliseconds());
    EXPECT_GE(after, date.milliseconds());
  }
  EXPECT_EQ(execution->startTime(), execution->timeStamp());
  EXPECT_EQ(execution->endTime(), execution->timeStamp());
}

TEST_F(DescriptionTest, ADiagnoseTakesItsSteps) {
  const auto pool = described<ZtPortalPoolDiagnose>("diagnose", R"("steps": [
      {"timeStamp": "2026-11-21T12:00:00.123Z", "stepName": "DNS", "diagnoseType": "RIS",
       "stepMessageString": "no answer", "stepMessageCode": "17", "successfullRepair": false,
       "cancelledRepair": true, "optionalString": "free", "optionalBoolean": 255},
      {"diagnoseType": 7}])");
  ASSERT_NE(pool, nullptr);
  ASSERT_EQ(pool->diagnoseSteps()->size(), 2U);
  const auto first = pool->diagnoseStep(0);
  EXPECT_EQ(first->timeStamp(), kNoon);
  EXPECT_EQ(first->stepName(), "DNS");
  EXPECT_EQ(first->diagnoseType(), ZtPortalDiagnoseRIS);
  EXPECT_EQ(first->stepMessageString(), "no answer");
  EXPECT_EQ(first->stepMessageCode(), "17");
  EXPECT_EQ(first->successfullRepair(), 0);
  EXPECT_EQ(first->cancelledRepair(), 1);
  EXPECT_EQ(first->optionalString(), "free");
  EXPECT_EQ(first->optionalBoolean(), -1);
  const auto second = pool->diagnoseStep(1);
  EXPECT_FALSE(second->timeStamp().isNull());
  EXPECT_TRUE(second->stepName().isNull());
  EXPECT_EQ(second->diagnoseType(), 7U);
  EXPECT_EQ(second->successfullRepair(), 1);
}

TEST_F(DescriptionTest, AConnectionManagerTakesWhatIsNotWritten) {
  const auto pool = described<ZtPortalPoolConnectionManager>(
      "connectionManager", R"("mobileVolumeHome": 9223372036854775807,
      "mobileVolumeRoaming": -9223372036854775808, "registeredRoamNetworks": ["A", "B"])");
  ASSERT_NE(pool, nullptr);
  EXPECT_EQ(pool->mobileVolumeHome(), INT64_MAX);
  EXPECT_EQ(pool->mobileVolumeRoaming(), INT64_MIN);
  ASSERT_NE(pool->registeredRoamNetworks(), nullptr);
  EXPECT_EQ(*pool->registeredRoamNetworks(), (std::vector<ZtString>{"A", "B"}));
}

TEST_F(DescriptionTest, AComputerSystemTakesEverything) {
  const std::string json = R"("osName": "MACOS", "osVersion": "MACOS 10.6",
      "servicePack": 8, "osBuildString": "10K549", "osLanguage": "GERMAN", "userLanguage": 35,
      "isAdmin": true, "firewallEnabled": true,
      "antivirusApps": [{"appName": "AV", "appVersion": "4", "appCompany": null,
                         "isEnabled": true, "isUpToDate": true}],
      "firewallApps": [{"appName": "Wall", "appVersion": "3", "appCompany": "Co",
                        "isEnabled": true}, {}],
      "emailClients": [{"appName": "Mail", "appVersion": null, "isStandard": true}],
      "browsers": [{"appName": "A", "appVersion": "1"}, {"appName": "B", "appVersion": "2",
                    "isStandard": 1}])";
  const auto expected = ZtPortalPoolComputerSystem::initWithValues(kNoon, false);
  expected->setOsName("MACOS");
  expected->setOsVersion("MACOS 10.6");
  expected->setServicePack(8);
  expected->setOsLanguage(ZtLanguageGerman);
  expected->setUserLanguage(ZtLanguageSerbian);
  expected->setIsAdmin(1);
  const auto antivirus = expected->addAntivirusApp("AV", "4");
  antivirus->setAppCompany(nullptr);
  antivirus->setIsEnabled(1);
  antivirus->setIsUpToDate(1);
  const auto firewall = expected->addFirewallApp("Wall", "3");
  firewall->setAppCompany("Co");
  firewall->setIsEnabled(1);
  expected->addFirewallApp(nullptr, nullptr);
  expected->addEMailClient("Mail", nullptr, 1);
  expected->addBrowser("A", "1", 0);
  expected->addBrowser("B", "2", 1);
  expectPool("computerSystem", json, *expected);
  const auto pool = described<ZtPortalPoolComputerSystem>("computerSystem", json);
  EXPECT_EQ(pool->osBuildString(), "10K549");
  EXPECT_EQ(pool->firewallEnabled(), 1);
}

TEST_F(DescriptionTest, AComputerSystemLooksAtTheMachineOnlyWhenItSaysSo) {
  const auto quiet = described<ZtPortalPoolComputerSystem>("computerSystem", "");
  EXPECT_EQ(quiet->osName(), "");
  const auto never =
      described<ZtPortalPoolComputerSystem>("computerSystem", R"("autoCheck": false)");
  EXPECT_EQ(never->osName(), "");
  const auto checked = described<ZtPortalPoolComputerSystem>(
      "computerSystem", R"("autoCheck": true, "servicePack": -1)");
  EXPECT_EQ(checked->osName(), "MACOS");
  EXPECT_EQ(checked->servicePack(), -1) << "what is said goes before what is found";
}

}  // namespace
}  // namespace zt::test
