#include <gtest/gtest.h>

#include <string>

#include "tests/unit/tools/ztreport/JsonFault.h"
#include "tools/ztreport/description/Description.h"

namespace {

using zt::test::faultOf;
using zt::tools::Description;

std::string faultIn(const std::string& text) {
  return faultOf([&] { const Description description(text); });
}

struct Row {
  std::string json;
  std::string fault;
};

std::string pool(const std::string& members) { return R"({"pools": [)" + members + "]}"; }
std::string generic(const std::string& members) {
  return pool(R"({"kind": "generic", )" + members + "}");
}
std::string execution(const std::string& members) {
  return pool(R"({"kind": "execution", )" + members + "}");
}
/// The second of two fields.
std::string field(const std::string& members) {
  return generic(R"("fields": [{"type": "none"}, {)" + members + "}]");
}
/// The second of two steps.
std::string step(const std::string& members) {
  return execution(R"("steps": [{}, {)" + members + "}]");
}

constexpr const char* kDate =
    "expected a date such as \"2026-11-21T12:00:00.123Z\" or null, found ";
constexpr const char* kTypes = "string, integer, float, boolean, array, none";

void expectFaults(const std::vector<Row>& rows) {
  for (const Row& row : rows) EXPECT_EQ(faultIn(row.json), row.fault) << row.json;
}

TEST(DescriptionFaultTest, NamesTheFaultsOfTheWhole) {
  expectFaults({
      {"[]", "expected an object, found []"},
      {"null", "expected an object, found null"},
      {"\"x\"", "expected an object, found \"x\""},
      {R"({"customerId": 1})", "/customerId: expected a string or null, found 1"},
      {R"({"customerId": ["Kelvane"]})",
       "/customerId: expected a string or null, found [\"Kelvane\"]"},
      {R"({"applicationId": true})", "/applicationId: expected a string or null, found true"},
      {R"({"applicationVersion": 2.1})",
       "/applicationVersion: expected a string or null, found 2.1"},
      {R"({"configurationUrl": null})", "/configurationUrl: expected a string, found null"},
      {R"({"configurationUrl": 80})", "/configurationUrl: expected a string, found 80"},
      {R"({"cacheConfiguration": null})",
       "/cacheConfiguration: expected true or false, found null"},
      {R"({"cacheConfiguration": 1})", "/cacheConfiguration: expected true or false, found 1"},
      {R"({"cacheConfiguration": "yes"})",
       "/cacheConfiguration: expected true or false, found \"yes\""},
      {R"({"pools": null})", "/pools: expected a list, found null"},
      {R"({"pools": {}})", "/pools: expected a list, found {}"},
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
      {pool("null"), "/pools/0: expected an object, found null"},
      {pool("[]"), "/pools/0: expected an object, found []"},
      {pool("{}"),
       "/pools/0: \"kind\" is absent; it is one of generic, execution, deinstallation, "
       "initialization, diagnose, connectionManager, computerSystem"},
      {pool(R"({"kind": "generic"}, {"timeStamp": null})"),
       "/pools/1: \"kind\" is absent; it is one of generic, execution, deinstallation, "
       "initialization, diagnose, connectionManager, computerSystem"},
      {pool(R"({"kind": null})"), "/pools/0/kind: expected a string, found null"},
      {pool(R"({"kind": 0})"), "/pools/0/kind: expected a string, found 0"},
      {pool(R"({"kind": "EXECUTION"})"), "/pools/0/kind: no such kind; it is one of " + kKinds},
      {pool(R"({"kind": ""})"), "/pools/0/kind: no such kind; it is one of " + kKinds},
      {generic(R"("poolType": 1)"), "/pools/0/poolType: expected a string or null, found 1"},
      {generic(R"("timeStamp": 0)"), std::string("/pools/0/timeStamp: ") + kDate + "0"},
      {generic(R"("timeStamp": "now")"), std::string("/pools/0/timeStamp: ") + kDate + "\"now\""},
      {generic(R"("timeStamp": "")"), std::string("/pools/0/timeStamp: ") + kDate + "\"\""},
      {generic(R"("timeStamp": "2023-02-29T00:00:00Z")"),
       std::string("/pools/0/timeStamp: ") + kDate + "\"2023-02-29T00:00:00Z\""},
      {generic(R"("fields": null)"), "/pools/0/fields: expected a list, found null"},
      {generic(R"("fields": {"name": 1})"), "/pools/0/fields: expected a list, found {\"name\":1}"},
      {generic(R"("startPoint": "setup")"), "/pools/0/startPoint: unknown key"},
      {generic(R"("steps": [])"), "/pools/0/steps: unknown key"},
      {execution(R"("poolType": "EXECUTION")"), "/pools/0/poolType: unknown key"},
      {execution(R"("successful": true)"), "/pools/0/successful: unknown key"},
      {pool(R"({"kind": "generic"}, {"kind": "generic", "x": 1})"), "/pools/1/x: unknown key"},
  });
}

TEST(DescriptionFaultTest, NamesTheFaultsOfAnExecution) {
  for (const char* key : {"startPoint", "endPoint", "endResultString", "endResultCode",
                          "endErrorMessageString", "endErrorMessageCode", "executionType"}) {
    EXPECT_EQ(faultIn(execution('"' + std::string(key) + "\": 0")),
              "/pools/0/" + std::string(key) + ": expected a string or null, found 0");
  }
  for (const char* key : {"timeStamp", "startTime", "endTime"}) {
    EXPECT_EQ(faultIn(execution('"' + std::string(key) + "\": 12")),
              "/pools/0/" + std::string(key) + ": " + kDate + "12");
  }
  for (const char* key : {"successfull", "cancelled"}) {
    const std::string start = '"' + std::string(key) + "\": ";
    const std::string place = "/pools/0/" + std::string(key) + ": ";
    expectFaults({
        {execution(start + "null"),
         place + "expected true, false or a number from -128 to 255, found null"},
        {execution(start + "\"yes\""),
         place + "expected true, false or a number from -128 to 255, found \"yes\""},
        {execution(start + "0.5"), place + "expected an integer, found 0.5"},
        {execution(start + "256"), place + "256 is out of range (-128 to 255)"},
        {execution(start + "-129"), place + "-129 is out of range (-128 to 255)"},
    });
  }
}

TEST(DescriptionFaultTest, NamesTheFaultsOfAStep) {
  const std::string place = "/pools/0/steps/1/";
  expectFaults({
      {execution(R"("steps": null)"), "/pools/0/steps: expected a list, found null"},
      {execution(R"("steps": {})"), "/pools/0/steps: expected a list, found {}"},
      {execution(R"("steps": ["Copy"])"), "/pools/0/steps/0: expected an object, found \"Copy\""},
      {execution(R"("steps": [{}, null])"), "/pools/0/steps/1: expected an object, found null"},
      {step(R"("timeStamp": 1)"), place + "timeStamp: " + kDate + "1"},
      {step(R"("stepName": 1)"), place + "stepName: expected a string or null, found 1"},
      {step(R"("stepMessageString": [])"),
       place + "stepMessageString: expected a string or null, found []"},
      {step(R"("stepMessageCode": 0)"),
       place + "stepMessageCode: expected a string or null, found 0"},
      {step(R"("stepType": "BEGIN")"),
       place + "stepType: expected one of ENTER, LEAVE, EXIT, INFO, ERROR or a number, found "
               "\"BEGIN\""},
      {step(R"("stepType": -1)"),
       place + "stepType: expected a name or an integer without a sign, found -1"},
      {step(R"("stepType": 1.5)"),
       place + "stepType: expected a name or an integer without a sign, found 1.5"},
      {step(R"("stepType": null)"),
       place + "stepType: expected a name or an integer without a sign, found null"},
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
      {field(R"("type": 1)"), place + "/type: expected a string, found 1"},
      {field(R"("type": "String")"), noSuchType},
      {field(R"("type": "bool")"), noSuchType},
      {field(R"("type": "")"), noSuchType},
      {field(R"("type": "string", "value": 1)"),
       place + "/value: expected a string or null, found 1"},
      {field(R"("type": "string", "value": {"a": [true]})"),
       place + "/value: expected a string or null, found {\"a\":[true]}"},
      {field(R"("type": "integer", "value": null)"),
       place + "/value: expected an integer, found null"},
      {field(R"("type": "integer", "value": "7")"),
       place + "/value: expected an integer, found \"7\""},
      {field(R"("type": "integer", "value": 3.5)"),
       place + "/value: expected an integer, found 3.5"},
      {field(R"("type": "integer", "value": -2147483649)"),
       place + "/value: -2147483649 is out of range (-2147483648 to 2147483647)"},
      {field(R"("type": "integer", "value": 2147483648)"),
       place + "/value: 2147483648 is out of range (-2147483648 to 2147483647)"},
      {field(R"("type": "float", "value": null)"), place + "/value: expected a number, found null"},
      {field(R"("type": "float", "value": "1")"), place + "/value: expected a number, found \"1\""},
      {field(R"("type": "float", "value": 1e39)"),
       place + "/value: 1e+39 is out of the range of a 32-bit float"},
      {field(R"("type": "float", "value": -1e39)"),
       place + "/value: -1e+39 is out of the range of a 32-bit float"},
      {field(R"("type": "float", "value": 1e400)"), place + "/value: 1e400 is out of range"},
      {field(R"("type": "boolean", "value": null)"), noByte + "null"},
      {field(R"("type": "boolean", "value": "true")"), noByte + "\"true\""},
      {field(R"("type": "boolean", "value": 256)"),
       place + "/value: 256 is out of range (-128 to 255)"},
      {field(R"("type": "boolean", "value": -129)"),
       place + "/value: -129 is out of range (-128 to 255)"},
      {field(R"("type": "boolean", "value": 1.0)"),
       place + "/value: expected an integer, found 1.0"},
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

}  // namespace
