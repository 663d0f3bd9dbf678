// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "tests/support/JsonFault.h"
#include "ztportal/portal/ZtReportDescription.h"

namespace {

using zt::test::faultOf;
using Description = ZtReportDescription;

std::string faultIn(const std::string& text) {
  return faultOf([&] { const Description description(text); });
}

struct FaultRow {
  std::string json;
  std::string fault;
};

std::string poolsWith(const std::string& members) { return R"({"pools": [)" + members + "]}"; }
std::string ofKind(const std::string& kind, const std::string& members) {
  return poolsWith(R"({"kind": ")" + kind + "\", " + members + "}");
}
std::string generic(const std::string& members) { return ofKind("generic", members); }
std::string execution(const std::string& members) { return ofKind("execution", members); }
/// The second of two fields.
std::string field(const std::string& members) {
  return generic(R"("fields": [{"type": "none"}, {)" + members + "}]");
}
/// The second of two steps.
std::string step(const std::string& members) {
  return execution(R"("steps": [{}, {)" + members + "}]");
}

const std::string kDate = "expected a date such as \"2026-11-21T12:00:00.123Z\" or null, found ";
const std::string kTypes = "string, integer, float, boolean, array, none";

void expectFaults(const std::vector<FaultRow>& rows) {
  for (const FaultRow& row : rows) EXPECT_EQ(faultIn(row.json), row.fault) << row.json;
}

TEST(DescriptionFaultTest, NamesTheFaultsOfTheWhole) {
  expectFaults({
      {"[]", "expected an object, found []"},
      {"\"x\"", "expected an object, found \"x\""},
      {R"({"customerId": 1})", "/customerId: expected a string or null, found 1"},
      {R"({"applicationId": true})", "/applicationId: expected a string or null, found true"},
      {R"({"applicationVersion": 2.1})",
       "/applicationVersion: expected a string or null, found 2.1"},
      {R"({"configurationUrl": null})", "/configurationUrl: expected a string, found null"},
      {R"({"cacheConfiguration": null})",
       "/cacheConfiguration: expected true or false, found null"},
      {R"({"cacheConfiguration": 1})", "/cacheConfiguration: expected true or false, found 1"},
      {R"({"pools": null})", "/pools: expected a list, found null"},
      {R"({"reportId": "{A}"})", "/reportId: unknown key"},
      {R"({"CustomerId": "Kelvane"})", "/CustomerId: unknown key"},
      {R"({"": 1})", "/: unknown key"},
      {R"({"a/b~c": 1})", "/a~1b~0c: unknown key"},
      {R"({"pools": [], "pools": []})", "/pools: stands twice in its object"},
      {R"({"customerId": 1e400})", "/customerId: 1e400 is out of range"},
      {"{\"customerId\": Kelvane}",
       "line 1, column 16: no JSON (invalid literal; last read: '\"customerId\": K')"},
  });
}

const std::string kKinds =
    "generic, execution, deinstallation, initialization, diagnose, connectionManager, "
    "computerSystem";

TEST(DescriptionFaultTest, NamesTheFaultsOfAPool) {
  expectFaults({
      {poolsWith("null"), "/pools/0: expected an object, found null"},
      {poolsWith("{}"), "/pools/0: \"kind\" is absent; it is one of " + kKinds},
      {poolsWith(R"({"kind": "generic"}, {"timeStamp": null})"),
       "/pools/1: \"kind\" is absent; it is one of " + kKinds},
      {poolsWith(R"({"kind": null})"), "/pools/0/kind: expected a string, found null"},
      {poolsWith(R"({"kind": "EXECUTION"})"),
       "/pools/0/kind: no such kind; it is one of " + kKinds},
      {poolsWith(R"({"kind": ""})"), "/pools/0/kind: no such kind; it is one of " + kKinds},
      {generic(R"("poolType": 1)"), "/pools/0/poolType: expected a string or null, found 1"},
      {generic(R"("timeStamp": 0)"), "/pools/0/timeStamp: " + kDate + "0"},
      {generic(R"("fields": null)"), "/pools/0/fields: expected a list, found null"},
      {generic(R"("startPoint": "setup")"), "/pools/0/startPoint: unknown key"},
      {generic(R"("steps": [])"), "/pools/0/steps: unknown key"},
      {execution(R"("poolType": "EXECUTION")"), "/pools/0/poolType: unknown key"},
      {execution(R"("successful": true)"), "/pools/0/successful: unknown key"},
      {poolsWith(R"({"kind": "generic"}, {"kind": "generic", "x": 1})"), "/pools/1/x: unknown key"},
  });
}

TEST(DescriptionFaultTest, NamesTheFaultsOfAnExecution) {
  expectFaults({
      {execution(R"("startPoint": 0)"), "/pools/0/startPoint: expected a string or null, found 0"},
      {execution(R"("endTime": 12)"), "/pools/0/endTime: " + kDate + "12"},
      {execution(R"("cancelled": 256)"), "/pools/0/cancelled: 256 is out of range (-128 to 255)"},
  });
}

TEST(DescriptionFaultTest, NamesTheFaultsOfAStep) {
  const std::string place = "/pools/0/steps/1/";
  expectFaults({
      {execution(R"("steps": null)"), "/pools/0/steps: expected a list, found null"},
      {execution(R"("steps": ["Copy"])"), "/pools/0/steps/0: expected an object, found \"Copy\""},
      {step(R"("timeStamp": 1)"), place + "timeStamp: " + kDate + "1"},
      {step(R"("stepName": 1)"), place + "stepName: expected a string or null, found 1"},
      {step(R"("stepMessageString": [])"),
       place + "stepMessageString: expected a string or null, found []"},
      {step(R"("stepMessageCode": 0)"),
       place + "stepMessageCode: expected a string or null, found 0"},
      {step(R"("stepType": "BEGIN")"),
       place + "stepType: expected one of ENTER, LEAVE, EXIT, INFO, ERROR or a number, found "
               "\"BEGIN\""},
      {step(R"("stepType": true)"),
       place + "stepType: expected a name or an integer without a sign, found true"},
      {step(R"("successfullRepair": true)"), place + "successfullRepair: unknown key"},
  });
}

TEST(DescriptionFaultTest, NamesTheFaultsOfAField) {
  const std::string place = "/pools/0/fields/1";
  const std::string noSuchType = place + "/type: no such type; it is one of " + kTypes;
  const std::string noByte =
      place + "/value: expected true, false or a number from -128 to 255, found ";
  expectFaults({
      {generic(R"("fields": [1])"), "/pools/0/fields/0: expected an object, found 1"},
      {field(R"("name": "A")"), place + ": \"type\" is absent; it is one of " + kTypes},
      {field(R"("type": null)"), place + "/type: expected a string, found null"},
      {field(R"("type": "String")"), noSuchType},
      {field(R"("type": "bool")"), noSuchType},
      {field(R"("type": "")"), noSuchType},
      {field(R"("type": "string", "value": 1)"),
       place + "/value: expected a string or null, found 1"},
      {field(R"("type": "integer", "value": 2147483648)"),
       place + "/value: 2147483648 is out of range (-2147483648 to 2147483647)"},
      {field(R"("type": "float", "value": "1")"), place + "/value: expected a number, found \"1\""},
      {field(R"("type": "boolean", "value": null)"), noByte + "null"},
      {field(R"("type": "array", "fields": null)"), place + "/fields: expected a list, found null"},
      {field(R"("type": "array", "value": [])"), place + "/value: unknown key"},
      {field(R"("type": "array", "fields": [{"type": "array", "fields": [{"type": "x"}]}])"),
       place + "/fields/0/fields/0/type: no such type; it is one of " + kTypes},
      {field(R"("type": "string", "fields": [])"), place + "/fields: unknown key"},
      {field(R"("type": "none", "value": null)"), place + "/value: unknown key"},
      {field(R"("type": "none", "fields": [])"), place + "/fields: unknown key"},
      {field(R"("type": "string", "Name": "A")"), place + "/Name: unknown key"},
      {execution(R"("fields": [{"type": "integer", "value": 2147483648}])"),
       "/pools/0/fields/0/value: 2147483648 is out of range (-2147483648 to 2147483647)"},
  });
  for (const char* type : {"string", "integer", "float", "boolean", "array", "none"}) {
    EXPECT_EQ(faultIn(field(R"("name": 1, "type": ")" + std::string(type) + '"')),
              place + "/name: expected a string or null, found 1");
    // The bare field, which has no value's key, once took a key without a letter.
    EXPECT_EQ(faultIn(field(R"("": 1, "type": ")" + std::string(type) + '"')),
              place + "/: unknown key");
  }
}

TEST(DescriptionFaultTest, NamesTheFaultsOfOtherPools) {
  const struct {
    const char* kind;
    const char* json;
    const char* fault;
  } rows[] = {
      {"deinstallation", R"("startPoint": "x")", "/pools/0/startPoint: unknown key"},
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
  };
  for (const auto& row : rows)
    EXPECT_EQ(faultIn(ofKind(row.kind, row.json)), row.fault) << row.json;
}

TEST(DescriptionFaultTest, AnUnknownLanguageNamesThoseThatThereAre) {
  const std::string fault = faultIn(ofKind("computerSystem", R"("osLanguage": "KLINGON")"));
  EXPECT_TRUE(fault.starts_with("/pools/0/osLanguage: expected one of NEUTRAL, AFRIKAANS, "))
      << fault;
  EXPECT_TRUE(fault.ends_with(", UKRAINIAN, VIETNAMESE or a number, found \"KLINGON\"")) << fault;
}

}  // namespace
