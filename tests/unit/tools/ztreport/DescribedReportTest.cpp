#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "tests/support/ScopedEnvironment.h"
#include "tests/unit/tools/common/ReportText.h"
#include "tools/common/ReportReader.h"
#include "tools/ztreport/description/DescribedReport.h"

namespace {

using nlohmann::ordered_json;
using zt::Json;
using zt::reader::ReadError;
using zt::reader::readReport;
using zt::test::plainField;
using zt::test::plainLines;
using zt::test::plainPool;
using zt::tools::describedReport;

/// Dates are those of Greenwich, whatever the machine is set to.
class DescribedReportTest : public testing::Test {
 protected:
  static Json described(const std::string& pools) {
    return describedReport(readReport(plainLines(pools)));
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
  static void expectFields(const std::string& fields, const std::string& json) {
    expectPool(plainPool(fields), R"({"kind": "generic", "poolType": "CUSTOM",
        "timeStamp": "2026-11-21T12:00:00.000Z", "fields": [)" +
                                      json + "]}");
  }

 private:
  zt::test::ScopedEnvironment _zone{"TZ", "UTC"};
  zt::test::ScopedEnvironment _locale{"LC_ALL", "C"};
};

/// A pool of a type, without a date.
std::string pool(const std::string& type, const std::string& fields) {
  return "    <Data Pool=\"" + type + "\">\n      <Date>(null)</Date>\n      <Fields>\n" + fields +
         "      </Fields>\n    </Data>\n";
}

std::string emptyPool(const std::string& type) {
  return "    <Data Pool=\"" + type +
         "\">\n      <Date>(null)</Date>\n      <Fields/>\n    </Data>\n";
}

std::string run(const std::string& startTime = "(null)") {
  return plainField("START_TIME", startTime) + plainField("END_TIME", "(null)") +
         plainField("END_RESULTSTRING", "") + plainField("END_RESULTCODE", "0") +
         plainField("END_ERRORMESSAGESTRING", "(null)") + plainField("END_ERRORMESSAGECODE", "") +
         plainField("SUCCESSFULL", "TRUE", "boolean");
}

/// An array of records in a plain report; `field` is one of a record, indented like one of a pool.
std::string records(const std::string& name, const std::string& record) {
  std::string indented;
  for (std::size_t at = 0; at < record.size();) {
    const std::size_t end = record.find('\n', at) + 1;
    indented.append("    ").append(record, at, end - at);
    at = end;
  }
  return "        <Field FieldType=\"array\">\n          <Name>" + name +
         "</Name>\n          <Fields>\n" + indented + "          </Fields>\n        </Field>\n";
}

std::string diagnoseStep(const std::string& type = "RIS") {
  return plainField("DIAGNOSE_STEPNAME", "Ping") + plainField("DIAGNOSE_DIAGNOSETYPE", type) +
         plainField("DIAGNOSE_MESSAGESTRING", "") + plainField("DIAGNOSE_MESSAGECODE", "") +
         plainField("DIAGNOSE_SUCCESSFULLREPAIR", "TRUE", "boolean") +
         plainField("DIAGNOSE_CANCELLEDREPAIR", "FALSE", "boolean") +
         plainField("DIAGNOSE_OPTIONALSTRING", "(null)") +
         plainField("DIAGNOSE_OPTIONALBOOLEAN", "FALSE", "boolean");
}

std::string computer(const std::string& firewall = "FALSE") {
  return plainField("OS_NAME", "") + plainField("OS_VERSION", "(null)") +
         plainField("OS_SERVICEPACK", "0", "integer") + plainField("OS_LANGUAGE", "GERMAN") +
         plainField("USER_LANGUAGE", "") + plainField("USER_ISADMIN", "FALSE", "boolean") +
         records("BROWSERS", plainField("BROWSER_NAME", "W") + plainField("BROWSER_VERSION", "1") +
                                 plainField("IS_STANDARD", "TRUE", "boolean")) +
         plainField("WINDOWS_FIREWALL_ENABLED", firewall, "boolean");
}

TEST_F(DescribedReportTest, HasTheIdentifiersThatADescriptionHas) {
  EXPECT_EQ(described(emptyPool("A")).text(2), R"({
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
  EXPECT_EQ(describedReport(readReport("")).text(), R"({"pools":[]})");
}

TEST_F(DescribedReportTest, HasFieldsOfEveryType) {
  expectFields(plainField("A", "x & </Value> y") + plainField("(null)", "(null)") +
                   plainField("B", "-2147483648", "integer") + plainField("C", "1.10", "float") +
                   plainField("D", "-0.00", "float") + plainField("E", "TRUE", "boolean") +
                   plainField("F", "FALSE", "boolean") +
                   "        <Field type=\"none\">\n          <Name type=\"none\">G</Name>\n"
                   "        </Field>\n",
               R"({"name": "A", "type": "string", "value": "x & </Value> y"},
                  {"name": null, "type": "string", "value": null},
                  {"name": "B", "type": "integer", "value": -2147483648},
                  {"name": "C", "type": "float", "value": 1.1},
                  {"name": "D", "type": "float", "value": -0.0},
                  {"name": "E", "type": "boolean", "value": true},
                  {"name": "F", "type": "boolean", "value": false},
                  {"name": "G", "type": "none"})");
  expectFields(R"(        <Field FieldType="array">
          <Name>OUTER</Date>
          <Fields>
            <Field FieldType="array">
              <Name>INNER</Date>
              <Fields/>
            </Data>
          </Fields>
        </Data>
)",
               R"({"name": "OUTER", "type": "array", "fields": [
                    {"name": "INNER", "type": "array", "fields": []}]})");
}

TEST_F(DescribedReportTest, APoolWithTheFieldsOfItsTypeIsOfThatKind) {
  expectPool(pool("DEINSTALLATION", run("2026-11-21T12:00:00.000UTC") + plainField("A", "x")),
             R"({"kind": "deinstallation", "timeStamp": null,
                 "startTime": "2026-11-21T12:00:00.000Z", "endTime": null, "endResultString": "",
                 "endResultCode": "0", "endErrorMessageString": null, "endErrorMessageCode": "",
                 "successfull": true, "fields": [{"name": "A", "type": "string", "value": "x"}]})");
  expectPool(pool("DIAGNOSE", records("DIAGNOSESTEPS", diagnoseStep())),
             R"({"kind": "diagnose", "timeStamp": null, "steps": [
                 {"stepName": "Ping", "diagnoseType": "RIS", "stepMessageString": "",
                  "stepMessageCode": "", "successfullRepair": true, "cancelledRepair": false,
                  "optionalString": null, "optionalBoolean": false}]})");
  expectPool(pool("DIAGNOSE", ""), R"({"kind": "diagnose", "timeStamp": null})");
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
  expectPool(emptyPool("DIAGNOSE"), generic("DIAGNOSE", ""));
  expectPool(pool("EXECUTION", plainField("A", "x")),
             generic("EXECUTION", R"({"name": "A", "type": "string", "value": "x"})"));
  // A text that no start time is written as, and a field too few.
  const std::string values = R"({"name": "END_TIME", "type": "string", "value": null},
      {"name": "END_RESULTSTRING", "type": "string", "value": ""},
      {"name": "END_RESULTCODE", "type": "string", "value": "0"},
      {"name": "END_ERRORMESSAGESTRING", "type": "string", "value": null},
      {"name": "END_ERRORMESSAGECODE", "type": "string", "value": ""},
      {"name": "SUCCESSFULL", "type": "boolean", "value": true})";
  expectPool(
      pool("INITIALIZATION", run("yesterday")),
      generic("INITIALIZATION",
              R"({"name": "START_TIME", "type": "string", "value": "yesterday"}, )" + values));
  const std::string whole = run();
  expectPool(pool("INITIALIZATION", whole.substr(plainField("START_TIME", "(null)").size())),
             generic("INITIALIZATION", values));
}

TEST_F(DescribedReportTest, TellsThePlaceOfWhatNoDescriptionHas) {
  const std::string custom = "    <Data Pool=\"CUSTOM\">\n      <Date>";
  const struct {
    std::string pools;
    const char* fault;
  } rows[] = {
      {custom + "2026-11-21T13:00:00.000GMT+1</Date>\n      <Fields/>\n    </Data>\n",
       "line 10, column 13: expected a date as this time zone and language write it"},
      {pool("CUSTOM", ""), "line 9, column 17: expected a pool with fields"},
      {plainPool(plainField("A", "7.0", "integer")),
       "line 14, column 18: expected a 32-bit integer"},
      {plainPool(plainField("A", "07", "integer")),
       "line 14, column 18: expected a 32-bit integer"},
      {plainPool(plainField("A", "-0", "integer")),
       "line 14, column 18: expected a 32-bit integer"},
      {plainPool(plainField("A", "2147483648", "integer")),
       "line 14, column 18: expected a 32-bit integer"},
      {plainPool(plainField("A", "", "integer")), "line 14, column 18: expected a 32-bit integer"},
      {plainPool(plainField("A", "1.1", "float")),
       "line 14, column 18: expected a 32-bit float with two digits after the point"},
      {plainPool(plainField("A", "inf", "float")),
       "line 14, column 18: expected a 32-bit float with two digits after the point"},
      {plainPool(plainField("A", "nan", "float")),
       "line 14, column 18: expected a 32-bit float with two digits after the point"},
      {plainPool(plainField("A", "16777217.00", "float")),
       "line 14, column 18: expected a 32-bit float with two digits after the point"},
      {plainPool(plainField("A", "true", "boolean")), "line 14, column 18: expected TRUE or FALSE"},
      {plainPool(plainField("A", "ab\xff", "string")), "line 14, column 20: expected UTF-8"},
      {plainPool(plainField("\xc3(", "x")), "line 13, column 17: expected UTF-8"},
      {plainPool("        <Field FieldType=\"array\">\n          <Name>A</Date>\n"
                 "          <Fields>\n          </Fields>\n        </Data>\n"),
       "line 13, column 17: expected an array with fields"},
      {plainPool(records("BROWSERS", plainField("A", "x"))),
       "line 13, column 17: expected an array that a generic field can be (its name ends with "
       "</Date>)"},
      {pool("DIAGNOSE", records("DIAGNOSESTEPS", diagnoseStep("X"))),
       "line 21, column 22: expected a name that reports have, or none"},
      {pool("DIAGNOSE", records("DIAGNOSESTEPS", diagnoseStep() + plainField("A", "x"))),
       "line 48, column 21: expected no more fields in this record"},
      {pool("DIAGNOSE", records("DIAGNOSESTEPS", plainField("DIAGNOSE_STEPNAME", "Ping"))),
       "line 14, column 1: expected the field DIAGNOSE_DIAGNOSETYPE"},
      {pool("DIAGNOSE",
            "        <Field FieldType=\"array\">\n          <Name>DIAGNOSESTEPS</Name>\n"
            "        </Field>\n"),
       "line 13, column 17: expected a list with records"},
      {pool("COMPUTER_SYSTEM", computer("TRUE")), "line 55, column 18: expected FALSE"},
      {pool("COMPUTER_SYSTEM", computer() + records("BROWSERS", plainField("BROWSER_NAME", "W"))),
       "line 58, column 17: expected an array that a generic field can be (its name ends with "
       "</Date>)"},
  };
  for (const auto& row : rows) EXPECT_EQ(faultOf(row.pools), row.fault) << row.pools;
}

}  // namespace
