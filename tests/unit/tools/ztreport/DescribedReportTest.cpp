// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "tests/support/ScopedEnvironment.h"
#include "tests/unit/tools/common/ReportText.h"
#include "tools/common/ReportReader.h"
#include "tools/ztreport/description/DescribedReport.h"

namespace zt::test {
namespace {

using nlohmann::ordered_json;
using zt::reader::ReadError;
using zt::reader::readReport;

/// Dates are those of Greenwich, whatever the machine is set to.
class DescribedReportTest : public testing::Test {
 protected:
  static Json described(const std::string& pools) {
    return tools::describedReport(readReport(plainLines(pools)));
  }
  static std::string faultOf(const std::string& pools) {
    try {
      return described(pools).text();
    } catch (const ReadError& error) {
      return error.what();
    }
  }
  static void expectPool(const std::string& pool, const std::string& json) {
    EXPECT_EQ(described(pool).find("pools")->text(2),
              ordered_json::parse("[" + json + "]").dump(2));
  }
  static void expectFields(const std::string& outline, const std::string& json) {
    expectPool(plainPool(fieldLines(outline, 8)),
               R"({"kind": "generic", "poolType": "CUSTOM",
        "timeStamp": "2026-11-21T12:00:00.000Z", "fields": [)" +
                   json + "]}");
  }

 private:
  ScopedEnvironment _zone{"TZ", "UTC"};
  ScopedEnvironment _locale{"LC_ALL", "C"};
};

/// A pool without a date, with the fields of an outline.
std::string pool(const std::string& type, const std::string& outline) {
  return poolLines(type, "(null)", outline, false, 4);
}

std::string openPool(const std::string& type) {
  return "    <Data Pool=\"" + type +
         "\">\n      <Date>(null)</Date>\n      <Fields>\n      </Fields>\n    </Data>\n";
}

const std::string kRunFields = R"(
string END_TIME = (null) | string END_RESULTSTRING = | string END_RESULTCODE = 0
string END_ERRORMESSAGESTRING = (null) | string END_ERRORMESSAGECODE =
boolean SUCCESSFULL = TRUE
)";

std::string diagnosis(const std::string& type = "RIS", const std::string& more = "") {
  return "records DIAGNOSESTEPS\n  - string DIAGNOSE_STEPNAME = Ping\n" +
         ("    string DIAGNOSE_DIAGNOSETYPE = " + type) + R"(
    string DIAGNOSE_MESSAGESTRING = | string DIAGNOSE_MESSAGECODE =
    boolean DIAGNOSE_SUCCESSFULLREPAIR = TRUE | boolean DIAGNOSE_CANCELLEDREPAIR = FALSE
    string DIAGNOSE_OPTIONALSTRING = (null) | boolean DIAGNOSE_OPTIONALBOOLEAN = FALSE
)" + more;
}

std::string computer(const std::string& firewall = "FALSE") {
  return R"(
string OS_NAME = | string OS_VERSION = (null) | integer OS_SERVICEPACK = 0
string OS_LANGUAGE = GERMAN | string USER_LANGUAGE = | boolean USER_ISADMIN = FALSE
records BROWSERS
  - string BROWSER_NAME = W | string BROWSER_VERSION = 1 | boolean IS_STANDARD = TRUE
boolean WINDOWS_FIREWALL_ENABLED = )" +
         firewall + "\n";
}

TEST_F(DescribedReportTest, HasTheIdentifiersThatADescriptionHas) {
  EXPECT_EQ(described(pool("A", "")).text(2), R"({
  "customerId": "Kelvane",
  "applicationId": "{A}",
  "applicationVersion": "2.1.77",
  "pools": [
    {
      "kind": "generic",
      "poolType": "A",
      "timeStamp": null,
      "fields": []
    }
  ]
})");
  EXPECT_EQ(tools::describedReport(readReport("")).text(), R"({"pools":[]})");
}

TEST_F(DescribedReportTest, HasFieldsOfEveryType) {
  expectFields(R"(
string A = x & </Value> y | string (null) = (null)
integer B = -2147483648 | float C = 1.10 | float D = -0.00
boolean E = TRUE | boolean F = FALSE | none G
array OUTER
  array INNER
)",
               R"({"name": "A", "type": "string", "value": "x & </Value> y"},
                  {"name": null, "type": "string", "value": null},
                  {"name": "B", "type": "integer", "value": -2147483648},
                  {"name": "C", "type": "float", "value": 1.1},
                  {"name": "D", "type": "float", "value": -0.0},
                  {"name": "E", "type": "boolean", "value": true},
                  {"name": "F", "type": "boolean", "value": false},
                  {"name": "G", "type": "none"},
                  {"name": "OUTER", "type": "array", "fields": [
                    {"name": "INNER", "type": "array", "fields": []}]})");
}

TEST_F(DescribedReportTest, APoolWithTheFieldsOfItsTypeIsOfThatKind) {
  expectPool(pool("DEINSTALLATION",
                  "string START_TIME = 2026-11-21T12:00:00.000UTC\n" + kRunFields + "string A = x"),
             R"({"kind": "deinstallation", "timeStamp": null,
                 "startTime": "2026-11-21T12:00:00.000Z", "endTime": null, "endResultString": "",
                 "endResultCode": "0", "endErrorMessageString": null, "endErrorMessageCode": "",
                 "successfull": true, "fields": [{"name": "A", "type": "string", "value": "x"}]})");
  expectPool(pool("DIAGNOSE", diagnosis()),
             R"({"kind": "diagnose", "timeStamp": null, "steps": [
                 {"stepName": "Ping", "diagnoseType": "RIS", "stepMessageString": "",
                  "stepMessageCode": "", "successfullRepair": true, "cancelledRepair": false,
                  "optionalString": null, "optionalBoolean": false}]})");
  expectPool(openPool("DIAGNOSE"), R"({"kind": "diagnose", "timeStamp": null})");
  expectPool(pool("COMPUTER_SYSTEM", computer()),
             R"({"kind": "computerSystem", "timeStamp": null, "osName": "", "osVersion": null,
                 "servicePack": 0, "osLanguage": "GERMAN", "userLanguage": 35, "isAdmin": false,
                 "browsers": [{"appName": "W", "appVersion": "1", "isStandard": true}]})");
}

TEST_F(DescribedReportTest, APoolWithOtherFieldsIsGeneric) {
  const auto generic = [](const std::string& type, const std::string& fields) {
    return R"({"kind": "generic", "poolType": ")" + type + R"(", "timeStamp": null, "fields": [)" +
           fields + "]}";
  };
  expectPool(pool("DIAGNOSE", ""), generic("DIAGNOSE", ""));
  expectPool(pool("EXECUTION", "string A = x"),
             generic("EXECUTION", R"({"name": "A", "type": "string", "value": "x"})"));
  // A text that no start time is written as, and a field too few.
  const std::string values = R"({"name": "END_TIME", "type": "string", "value": null},
      {"name": "END_RESULTSTRING", "type": "string", "value": ""},
      {"name": "END_RESULTCODE", "type": "string", "value": "0"},
      {"name": "END_ERRORMESSAGESTRING", "type": "string", "value": null},
      {"name": "END_ERRORMESSAGECODE", "type": "string", "value": ""},
      {"name": "SUCCESSFULL", "type": "boolean", "value": true})";
  expectPool(
      pool("INITIALIZATION", "string START_TIME = yesterday\n" + kRunFields),
      generic("INITIALIZATION",
              R"({"name": "START_TIME", "type": "string", "value": "yesterday"}, )" + values));
  expectPool(pool("INITIALIZATION", kRunFields), generic("INITIALIZATION", values));
}

TEST_F(DescribedReportTest, TellsThePlaceOfWhatNoDescriptionHas) {
  const std::string custom = "    <Data Pool=\"CUSTOM\">\n      <Date>";
  const struct {
    std::string pools;
    const char* fault;
  } rows[] = {
      {custom + "2026-11-21T13:00:00.000GMT+1</Date>\n      <Fields/>\n    </Data>\n",
       "line 10, column 13: expected a date as this time zone and language write it"},
      {openPool("CUSTOM"), "line 9, column 17: expected a pool with fields"},
      {plainPool(plainField("A", "07", "integer")),
       "line 14, column 18: expected a 32-bit integer"},
      {plainPool(plainField("A", "2147483648", "integer")),
       "line 14, column 18: expected a 32-bit integer"},
      {plainPool(plainField("A", "1.1", "float")),
       "line 14, column 18: expected a 32-bit float with two digits after the point"},
      {plainPool(plainField("A", "inf", "float")),
       "line 14, column 18: expected a 32-bit float with two digits after the point"},
      {plainPool(plainField("A", "16777217.00", "float")),
       "line 14, column 18: expected a 32-bit float with two digits after the point"},
      {plainPool(plainField("A", "true", "boolean")), "line 14, column 18: expected TRUE or FALSE"},
      {plainPool(plainField("A", "ab\xff", "string")), "line 14, column 20: expected UTF-8"},
      {plainPool(plainField("\xc3(", "x")), "line 13, column 17: expected UTF-8"},
      {plainPool("        <Field FieldType=\"array\">\n          <Name>A</Date>\n"
                 "          <Fields>\n          </Fields>\n        </Data>\n"),
       "line 13, column 17: expected an array with fields"},
      {plainPool(fieldLines("records BROWSERS\n  - string A = x", 8)),
       "line 13, column 17: expected an array that a generic field can be (its name ends with "
       "</Date>)"},
      {pool("DIAGNOSE", diagnosis("X")),
       "line 21, column 22: expected a name that reports have, or none"},
      {pool("DIAGNOSE", diagnosis("RIS", "    string A = x")),
       "line 48, column 21: expected no more fields in this record"},
      {pool("DIAGNOSE", "records DIAGNOSESTEPS\n  - string DIAGNOSE_STEPNAME = Ping"),
       "line 14, column 1: expected the field DIAGNOSE_DIAGNOSETYPE"},
      {pool("DIAGNOSE", "records DIAGNOSESTEPS"),
       "line 13, column 17: expected a list with records"},
      {pool("COMPUTER_SYSTEM", computer("TRUE")), "line 55, column 18: expected FALSE"},
      {pool("COMPUTER_SYSTEM", computer() + "records BROWSERS\n  - string BROWSER_NAME = W"),
       "line 58, column 17: expected an array that a generic field can be (its name ends with "
       "</Date>)"},
  };
  for (const auto& row : rows) EXPECT_EQ(faultOf(row.pools), row.fault) << row.pools;
}

}  // namespace
}  // namespace zt::test
