#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/unit/pools/ExpectedText.h"
#include "tests/unit/pools/PoolsFixture.h"
#include "tests/unit/tools/ztreport/JsonFault.h"
#include "tools/ztreport/description/Description.h"

// Descriptions of the typed pools: every key of every kind.

namespace {

using zt::test::ExpectedText;
using zt::test::kLaterText;
using zt::test::kNoonText;
using zt::test::written;
using zt::tools::Description;

class PoolDescriptionTest : public zt::test::PoolsFixture {
 protected:
  /// The one pool of a document; `json` is what its description says besides the kind.
  static std::shared_ptr<ZtPortalPool> described(const std::string& kind, const std::string& json) {
    const Description description(R"({"pools": [{"kind": ")" + kind + "\"" +
                                  (json.empty() ? "" : ", ") + json + "}]}");
    return description.makeOffline()->pools().at(0);
  }
  template <class Pool>
  static std::shared_ptr<Pool> describedAs(const std::string& kind, const std::string& json) {
    return std::dynamic_pointer_cast<Pool>(described(kind, json));
  }
  static std::string textOf(const std::string& kind, const std::string& json) {
    return written(*described(kind, R"("timeStamp": "2026-11-21T12:00:00.123Z")" +
                                        (json.empty() ? "" : ", " + json)),
                   "", false);
  }
  static std::string faultIn(const std::string& kind, const std::string& json) {
    return zt::test::faultOf([&] { described(kind, json); });
  }
};

TEST_F(PoolDescriptionTest, ADeinstallationTakesEveryValueOfARun) {
  EXPECT_EQ(textOf("deinstallation", R"("startTime": "2026-11-21T12:00:01.250Z", "endTime": null,
      "endResultString": "gone", "endResultCode": "3", "endErrorMessageString": null,
      "endErrorMessageCode": "17", "successfull": false,
      "fields": [{"name": "FILES", "type": "integer", "value": 12}])"),
            ExpectedText(false)
                .beginPool("DEINSTALLATION", kNoonText)
                .field("string", "START_TIME", kLaterText)
                .field("string", "END_TIME", "(null)")
                .field("string", "END_RESULTSTRING", "gone")
                .field("string", "END_RESULTCODE", "3")
                .field("string", "END_ERRORMESSAGESTRING", "(null)")
                .field("string", "END_ERRORMESSAGECODE", "17")
                .field("boolean", "SUCCESSFULL", "FALSE")
                .field("integer", "FILES", "12")
                .endPool());
}

TEST_F(PoolDescriptionTest, AnInitializationIsAsItIsMadeUnlessItSaysOtherwise) {
  EXPECT_EQ(textOf("initialization", ""), ExpectedText(false)
                                              .beginPool("INITIALIZATION", kNoonText)
                                              .field("string", "START_TIME", kNoonText)
                                              .field("string", "END_TIME", kNoonText)
                                              .field("string", "END_RESULTSTRING", "")
                                              .field("string", "END_RESULTCODE", "")
                                              .field("string", "END_ERRORMESSAGESTRING", "")
                                              .field("string", "END_ERRORMESSAGECODE", "")
                                              .field("boolean", "SUCCESSFULL", "TRUE")
                                              .endPool());
}

TEST_F(PoolDescriptionTest, ADiagnoseTakesItsSteps) {
  const auto pool = describedAs<ZtPortalPoolDiagnose>("diagnose", R"("steps": [
      {"timeStamp": "2026-11-21T12:00:00.123Z", "stepName": "DNS", "diagnoseType": "RIS",
       "stepMessageString": "no answer", "stepMessageCode": "17", "successfullRepair": false,
       "cancelledRepair": true, "optionalString": "free", "optionalBoolean": 255},
      {"diagnoseType": 7}])");
  ASSERT_NE(pool, nullptr);
  ASSERT_EQ(pool->diagnoseSteps()->size(), 2U);
  const auto first = pool->diagnoseStep(0);
  EXPECT_EQ(first->timeStamp(), zt::test::kNoon);
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

struct CounterRow {
  std::string_view key;
  std::string_view field;
};
constexpr CounterRow kCounters[] = {
    {"mobileConnections", "HOME_CONNECTIONS"},
    {"mobileConnectionsFailed", "HOME_CONNECTIONS_FAILED"},
    {"mobileRoamingConnections", "ROAMING_CONNECTIONS"},
    {"mobileRoamingConnectionsFailed", "ROAMING_CONNECTIONS_FAILED"},
    {"recognizedAltConnections", "ALTERNATE_CONNECTIONS_RECOGNIZED"},
    {"autoSwitchesToAltConnection", "AUTOMATIC_SWITCHES"},
    {"manualSwitchesToAltConnection", "MANUAL_SWITCHES"},
    {"sentSMS", "SMS_SENT"},
    {"sentSMSWithReport", "SMS_SENTWITHREPORT"},
    {"sentSMSFlash", "SMS_FLASH_SENT"},
    {"smsSendErrorCount", "SMS_SENDERRORS"},
    {"receivedSMS", "SMS_RECEIVED"},
    {"receivedSMSReports", "SMS_REPORTS_RECEIVED"},
    {"manualRegistrationsFailed", "MANUAL_REGISTERS_FAILED"},
    {"wifiConnectionsEstablished", "WIFI_CONNECTIONS_ESTABLISHED"},
    {"profileEdits", "PROFILE_EDITS"},
    {"profileCreations", "PROFILE_CREATIONS"},
    {"profileDeletions", "PROFILE_DELETIONS"},
};

TEST_F(PoolDescriptionTest, AConnectionManagerTakesEveryTextAndCounter) {
  std::string json = R"("deviceModel": "M", "deviceManufacturer": "F", "deviceIMEI": "I",
      "interfaceType": "U", "simOperator": "O", "simIMSI": null)";
  ExpectedText text(false);
  text.beginPool("CONNECTIONMANAGER", kNoonText)
      .field("string", "DEVICE_MODEL", "M")
      .field("string", "DEVICE_MANUFACTURER", "F")
      .field("string", "DEVICE_IMEI", "I")
      .field("string", "DEVICE_INTERFACE", "U")
      .field("string", "SIM_OPERATOR", "O")
      .field("string", "SIM_IMSI", "(null)");
  int number = -5;
  for (const CounterRow& row : kCounters) {
    const std::string value = std::to_string(number++);
    json.append(", \"").append(row.key).append("\": ").append(value);
    text.field("integer", row.field, value);
  }
  EXPECT_EQ(textOf("connectionManager", json), text.endPool());
}

TEST_F(PoolDescriptionTest, AConnectionManagerTakesWhatIsNotWritten) {
  const auto pool = describedAs<ZtPortalPoolConnectionManager>(
      "connectionManager", R"("mobileVolumeHome": 9223372036854775807,
      "mobileVolumeRoaming": -9223372036854775808, "registeredRoamNetworks": ["A", "B"])");
  ASSERT_NE(pool, nullptr);
  EXPECT_EQ(pool->mobileVolumeHome(), INT64_MAX);
  EXPECT_EQ(pool->mobileVolumeRoaming(), INT64_MIN);
  ASSERT_NE(pool->registeredRoamNetworks(), nullptr);
  EXPECT_EQ(*pool->registeredRoamNetworks(), (std::vector<ZtString>{"A", "B"}));
}

TEST_F(PoolDescriptionTest, AComputerSystemTakesEverything) {
  EXPECT_EQ(textOf("computerSystem", R"("osName": "MACOS", "osVersion": "MACOS 10.6",
      "servicePack": 8, "osBuildString": "10K549", "osLanguage": "GERMAN", "userLanguage": 35,
      "isAdmin": true, "firewallEnabled": true,
      "antivirusApps": [{"appName": "AV", "appVersion": "4", "appCompany": null,
                         "isEnabled": true, "isUpToDate": true}],
      "firewallApps": [{"appName": "Wall", "appVersion": "3", "appCompany": "Co",
                        "isEnabled": true}, {}],
      "emailClients": [{"appName": "Mail", "appVersion": null, "isStandard": true}],
      "browsers": [{"appName": "A", "appVersion": "1"}, {"appName": "B", "appVersion": "2",
                    "isStandard": 1}])"),
            ExpectedText(false)
                .beginPool("COMPUTER_SYSTEM", kNoonText)
                .field("string", "OS_NAME", "MACOS")
                .field("string", "OS_VERSION", "MACOS 10.6")
                .field("integer", "OS_SERVICEPACK", "8")
                .field("string", "OS_LANGUAGE", "GERMAN")
                .field("string", "USER_LANGUAGE", "")
                .field("boolean", "USER_ISADMIN", "TRUE")
                .beginArray("BROWSERS")
                .beginRecord()
                .recordField("string", "BROWSER_NAME", "A")
                .recordField("string", "BROWSER_VERSION", "1")
                .recordField("boolean", "IS_STANDARD", "FALSE")
                .endRecord()
                .beginRecord()
                .recordField("string", "BROWSER_NAME", "B")
                .recordField("string", "BROWSER_VERSION", "2")
                .recordField("boolean", "IS_STANDARD", "TRUE")
                .endRecord()
                .endArray()
                .beginArray("EMAILCLIENTS")
                .beginRecord()
                .recordField("string", "EMAILCLIENT_NAME", "Mail")
                .recordField("string", "EMAILCLIENT_VERSION", "(null)")
                .recordField("boolean", "IS_STANDARD", "TRUE")
                .endRecord()
                .endArray()
                .field("boolean", "WINDOWS_FIREWALL_ENABLED", "FALSE")
                .beginArray("FIREWALLAPPS")
                .beginRecord()
                .recordField("string", "FIREWALLAPP_NAME", "Wall")
                .recordField("string", "FIREWALLAPP_VERSION", "3")
                .recordField("string", "FIREWALLAPP_COMPANY", "Co")
                .recordField("boolean", "IS_ENABLED", "TRUE")
                .endRecord()
                .beginRecord()
                .recordField("string", "FIREWALLAPP_NAME", "(null)")
                .recordField("string", "FIREWALLAPP_VERSION", "(null)")
                .recordField("string", "FIREWALLAPP_COMPANY", "")
                .recordField("boolean", "IS_ENABLED", "FALSE")
                .endRecord()
                .endArray()
                .beginArray("ANTIVIRUSAPP")
                .beginRecord()
                .recordField("string", "ANTIVIRUSAPP_NAME", "AV")
                .recordField("string", "ANTIVIRUSAPP_VERSION", "4")
                .recordField("string", "ANTIVIRUSAPP_COMPANY", "(null)")
                .recordField("boolean", "IS_ENABLED", "TRUE")
                .recordField("boolean", "IS_UPTODATE", "TRUE")
                .endRecord()
                .endArray()
                .endPool());
}

TEST_F(PoolDescriptionTest, AComputerSystemLooksAtTheMachineOnlyWhenItSaysSo) {
  const auto quiet = describedAs<ZtPortalPoolComputerSystem>("computerSystem", "");
  EXPECT_EQ(quiet->osName(), "");
  const auto never =
      describedAs<ZtPortalPoolComputerSystem>("computerSystem", R"("autoCheck": false)");
  EXPECT_EQ(never->osName(), "");
  const auto checked = describedAs<ZtPortalPoolComputerSystem>(
      "computerSystem", R"("autoCheck": true, "servicePack": -1)");
  EXPECT_EQ(checked->osName(), "MACOS");
  EXPECT_EQ(checked->servicePack(), -1) << "what is said goes before what is found";
}

TEST_F(PoolDescriptionTest, FaultsNameTheirPlace) {
  const struct {
    const char* kind;
    const char* json;
    const char* fault;
  } rows[] = {
      {"deinstallation", R"("startPoint": "x")", "/pools/0/startPoint: unknown key"},
      {"initialization", R"("cancelled": true)", "/pools/0/cancelled: unknown key"},
      {"deinstallation", R"("steps": [])", "/pools/0/steps: unknown key"},
      {"diagnose", R"("steps": [{"stepType": 0}])", "/pools/0/steps/0/stepType: unknown key"},
      {"diagnose", R"("steps": [{"diagnoseType": "ENTER"}])",
       "/pools/0/steps/0/diagnoseType: expected one of MANUAL, AUTOMATIC, RIS or a number, "
       "found \"ENTER\""},
      {"connectionManager", R"("sentSMS": 2147483648)",
       "/pools/0/sentSMS: 2147483648 is out of range (-2147483648 to 2147483647)"},
      {"connectionManager", R"("mobileVolumeHome": 9223372036854775808)",
       "/pools/0/mobileVolumeHome: 9223372036854775808 is out of range "
       "(-9223372036854775808 to 9223372036854775807)"},
      {"connectionManager", R"("registeredRoamNetworks": ["A", null])",
       "/pools/0/registeredRoamNetworks/1: expected a string, found null"},
      {"computerSystem", R"("autoCheck": 1)",
       "/pools/0/autoCheck: expected true or false, found 1"},
      {"computerSystem", R"("browsers": [{"timeStamp": null}])",
       "/pools/0/browsers/0/timeStamp: unknown key"},
      {"computerSystem", R"("emailClients": [{"appCompany": "x"}])",
       "/pools/0/emailClients/0/appCompany: unknown key"},
      {"computerSystem", R"("firewallApps": [{"isUpToDate": true}])",
       "/pools/0/firewallApps/0/isUpToDate: unknown key"},
      {"computerSystem", R"("antivirusApps": {})",
       "/pools/0/antivirusApps: expected a list, found {}"},
      {"inventory", "",
       "/pools/0/kind: no such kind; it is one of generic, execution, deinstallation, "
       "initialization, diagnose, connectionManager, computerSystem"},
  };
  for (const auto& row : rows) EXPECT_EQ(faultIn(row.kind, row.json), row.fault) << row.json;
}

TEST_F(PoolDescriptionTest, AnUnknownLanguageNamesThoseThatThereAre) {
  const std::string fault = faultIn("computerSystem", R"("osLanguage": "KLINGON")");
  EXPECT_TRUE(fault.starts_with("/pools/0/osLanguage: expected one of NEUTRAL, AFRIKAANS, "))
      << fault;
  EXPECT_TRUE(fault.ends_with(", UKRAINIAN, VIETNAMESE or a number, found \"KLINGON\"")) << fault;
}

}  // namespace
