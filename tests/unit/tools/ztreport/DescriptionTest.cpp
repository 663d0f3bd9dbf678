#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/Printing.h"
#include "tests/support/ScopedEnvironment.h"
#include "tools/ztreport/description/Description.h"

namespace {

using zt::tools::Description;

/// Texts of dates are those of Greenwich, whatever the machine is set to.
class DescriptionTest : public testing::Test {
 private:
  zt::test::ScopedEnvironment _zone{"TZ", "UTC"};
  zt::test::ScopedEnvironment _locale{"LC_ALL", "C"};
};

std::string crlf(std::string_view lines) {
  std::string text;
  for (const char byte : lines) {
    if (byte == '\n') text += '\r';
    text += byte;
  }
  return text;
}

/// The plain text of a document with these pools.
std::string report(const ZtPortalData& document, std::string_view pools,
                   std::string_view identifiers =
                       "  <CustomerID>(null)</CustomerID>\n"
                       "  <ApplicationID>(null)</ApplicationID>\n"
                       "  <ApplicationVersion>(null)"
                       "</ApplicationVersion>\n") {
  return crlf("<?xml version=\"1.0\"?>\n<reportData>\n  <ReportID>" +
              std::string(document.reportId().view()) + "</ReportID>\n  <MachineID>" +
              std::string(document.machineId().view()) + "</MachineID>\n" +
              std::string(identifiers) + "  <Datas>\n" + std::string(pools) +
              "  </Datas>\n</reportData>\n");
}

std::string field(const std::string& type, const std::string& name, const std::string& value) {
  return "        <Field FieldType=\"" + type + "\">\n          <Name>" + name +
         "</Name>\n          <Value>" + value + "</Value>\n        </Field>\n";
}

/// A generic pool without a date.
std::string customPool(const std::string& fields) {
  const std::string list =
      fields.empty() ? "      <Fields/>\n" : "      <Fields>\n" + fields + "      </Fields>\n";
  return "    <Data Pool=\"CUSTOM\">\n      <Date>(null)</Date>\n" + list + "    </Data>\n";
}

std::string customPoolOf(const std::string& fields) {
  return R"({"kind": "generic", "poolType": "CUSTOM", "timeStamp": null, "fields": [)" + fields +
         "]}";
}

void expectFields(const std::string& fields, const std::string& text) {
  const auto document = Description(R"({"pools": [)" + customPoolOf(fields) + "]}").makeOffline();
  EXPECT_EQ(document->generateXml(nullptr, false), report(*document, customPool(text))) << fields;
}

constexpr const char* kNoon = "2026-11-21T12:00:00.000UTC";

/// What an execution pool has when it was just created.
struct ExecutionText {
  std::string timeStamp = kNoon;
  std::string executionType = "Standard";
  std::string startPoint = {};
  std::string startTime = kNoon;
  std::string endPoint = {};
  std::string endTime = kNoon;
  std::string endResultString = {};
  std::string endResultCode = {};
  std::string endErrorMessageString = {};
  std::string endErrorMessageCode = {};
  std::string cancelled = "FALSE";
  std::string successfull = "TRUE";
  std::string steps = {};
  std::string fields = {};

  std::string stepList() const {
    if (steps.empty()) return "";
    return "        <Field FieldType=\"array\">\n          <Name>INSTALLATIONSTEPS</Name>\n" +
           steps + "        </Field>\n";
  }
  std::string text() const {
    return "    <Data Pool=\"EXECUTION\">\n      <Date>" + timeStamp + "</Date>\n      <Fields>\n" +
           field("string", "INSTALLATION_TYPE", executionType) +
           field("string", "START_POINT", startPoint) + field("string", "START_TIME", startTime) +
           field("string", "END_POINT", endPoint) + field("string", "END_TIME", endTime) +
           field("string", "END_RESULTSTRING", endResultString) +
           field("string", "END_RESULTCODE", endResultCode) +
           field("string", "END_ERRORMESSAGESTRING", endErrorMessageString) +
           field("string", "END_ERRORMESSAGECODE", endErrorMessageCode) +
           field("boolean", "CANCELLED", cancelled) + field("boolean", "SUCCESSFULL", successfull) +
           stepList() + fields + "      </Fields>\n    </Data>\n";
  }
};

std::string stepText(const std::string& name, const std::string& type, const std::string& time,
                     const std::string& message = "", const std::string& code = "") {
  const auto inner = [](const std::string& fieldName, const std::string& value) {
    return "            <Field FieldType=\"string\">\n              <Name>" + fieldName +
           "</Name>\n              <Value>" + value + "</Value>\n            </Field>\n";
  };
  return "          <Fields>\n" + inner("STEP_NAME", name) + inner("STEP_TYPE", type) +
         inner("STEP_TIMESTAMP", time) + inner("STEP_MESSAGESTRING", message) +
         inner("STEP_MESSAGECODE", code) + "          </Fields>\n";
}

void expectExecution(const std::string& members, const ExecutionText& expected) {
  const auto document =
      Description(R"({"pools": [{"kind": "execution")" + members + "}]}").makeOffline();
  EXPECT_EQ(document->generateXml(nullptr, false), report(*document, expected.text())) << members;
}

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
      "cacheConfiguration": true, "pools": [)" +
                                customPoolOf("") + "]}");
  EXPECT_TRUE(description.hasPools());
  EXPECT_EQ(description.configurationUrl(), "http://127.0.0.1:1/k.xml");
  const auto document = description.makeOffline();
  EXPECT_EQ(document->configurationUrl(), nullptr);
  EXPECT_EQ(document->generateXml(nullptr, false),
            report(*document, customPool(""),
                   "  <CustomerID>Kelvane</CustomerID>\n"
                   "  <ApplicationID>{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}</ApplicationID>\n"
                   "  <ApplicationVersion>2.1.77</ApplicationVersion>\n"));
}

TEST_F(DescriptionTest, TakesNullAndEmptyIdentifiersApart) {
  const auto document = Description(R"({"customerId": null, "applicationId": "",
      "applicationVersion": "<&>", "pools": [)" +
                                    customPoolOf("") + "]}")
                            .makeOffline();
  EXPECT_EQ(document->generateXml(nullptr, false),
            report(*document, customPool(""),
                   "  <CustomerID>(null)</CustomerID>\n"
                   "  <ApplicationID></ApplicationID>\n"
                   "  <ApplicationVersion><&></ApplicationVersion>\n"));
}

TEST_F(DescriptionTest, MakesADocumentOfItsOwnEachTime) {
  const Description description(R"({"pools": [)" + customPoolOf("") + "]}");
  EXPECT_NE(description.makeOffline()->reportId(), description.makeOffline()->reportId());
  EXPECT_EQ(description.makeOffline()->pools().size(), 1U);
}

TEST_F(DescriptionTest, KeepsTheOrderOfThePools) {
  const auto document = Description(R"({"pools": [
      {"kind": "generic", "poolType": "B", "timeStamp": "2026-11-21T12:00:00Z"},
      {"kind": "execution", "timeStamp": "2026-11-21T12:00:00Z"},
      {"kind": "generic", "poolType": "A", "timeStamp": "2026-11-21T14:00:00.9876+02:00"},
      {"kind": "generic", "poolType": null, "timeStamp": null},
      {"kind": "generic", "poolType": "B", "timeStamp": "1969-12-31T23:59:59.999Z"}]})")
                            .makeOffline();
  const auto empty = [](const std::string& type, const std::string& date) {
    return "    <Data Pool=\"" + type + "\">\n      <Date>" + date +
           "</Date>\n      <Fields/>\n    </Data>\n";
  };
  EXPECT_EQ(
      document->generateXml(nullptr, false),
      report(*document, empty("B", kNoon) + ExecutionText().text() +
                            empty("A", "2026-11-21T12:00:00.987UTC") + empty("(null)", "(null)") +
                            empty("B", "1969-12-31T23:59:59.999UTC")));
}

TEST_F(DescriptionTest, TakesFieldsOfEveryType) {
  expectFields(R"({"name": "EDITION", "type": "string", "value": "Home"},
                  {"name": "EMPTY", "type": "string", "value": ""},
                  {"name": "MISSING", "type": "string", "value": null},
                  {"name": "ABSENT", "type": "string"},
                  {"name": null, "type": "string", "value": "<a&\u00e4>"},
                  {"type": "string", "value": "x"})",
               field("string", "EDITION", "Home") + field("string", "EMPTY", "") +
                   field("string", "MISSING", "(null)") + field("string", "ABSENT", "(null)") +
                   field("string", "(null)", "<a&ä>") + field("string", "(null)", "x"));
  expectFields(R"({"name": "A", "type": "integer", "value": -2147483648},
                  {"name": "B", "type": "integer", "value": 2147483647},
                  {"name": "C", "type": "integer"})",
               field("integer", "A", "-2147483648") + field("integer", "B", "2147483647") +
                   field("integer", "C", "0"));
  expectFields(R"({"name": "A", "type": "float", "value": 2.5},
                  {"name": "B", "type": "float", "value": 7},
                  {"name": "C", "type": "float", "value": 1e-50},
                  {"name": "D", "type": "float", "value": 1e-400},
                  {"name": "E", "type": "float"},
                  {"name": "F", "type": "float", "value": 16777217})",
               field("float", "A", "2.50") + field("float", "B", "7.00") +
                   field("float", "C", "0.00") + field("float", "D", "0.00") +
                   field("float", "E", "0.00") + field("float", "F", "16777216.00"));
  expectFields(R"({"name": "BARE", "type": "none"}, {"type": "none"},
                  {"name": null, "type": "none"})",
               "        <Field type=\"none\">\n          <Name type=\"none\">BARE</Name>\n"
               "        </Field>\n"
               "        <Field type=\"none\">\n          <Name type=\"none\">(null)</Name>\n"
               "        </Field>\n"
               "        <Field type=\"none\">\n          <Name type=\"none\">(null)</Name>\n"
               "        </Field>\n");
}

TEST_F(DescriptionTest, TakesBooleansAsBytes) {
  const struct {
    const char* value;
    int byte;
    const char* text;
  } rows[] = {
      {"true", 1, "TRUE"}, {"false", 0, "FALSE"},   {"1", 1, "TRUE"},       {"0", 0, "FALSE"},
      {"2", 2, "FALSE"},   {"127", 127, "FALSE"},   {"128", -128, "FALSE"}, {"255", -1, "FALSE"},
      {"-1", -1, "FALSE"}, {"-128", -128, "FALSE"},
  };
  for (const auto& row : rows) {
    const std::string described =
        R"({"name": "FLAG", "type": "boolean", "value": )" + std::string(row.value) + "}";
    expectFields(described, field("boolean", "FLAG", row.text));
    const auto document =
        Description(R"({"pools": [)" + customPoolOf(described) + "]}").makeOffline();
    const auto flag =
        std::dynamic_pointer_cast<ZtPortalPoolBOOL>(document->pools().front()->field(0));
    ASSERT_NE(flag, nullptr);
    EXPECT_EQ(flag->data(), row.byte) << row.value;
  }
  expectFields(R"({"name": "FLAG", "type": "boolean"})", field("boolean", "FLAG", "FALSE"));
}

TEST_F(DescriptionTest, TakesArraysInArrays) {
  expectFields(R"({"name": "OUTER", "type": "array", "fields": [
                    {"name": "INNER", "type": "array", "fields": [
                      {"name": "COUNT", "type": "integer", "value": 7}]},
                    {"name": "EMPTY", "type": "array", "fields": []},
                    {"name": "A", "type": "string", "value": "x"}]},
                  {"type": "array"})",
               R"(        <Field FieldType="array">
          <Name>OUTER</Date>
          <Fields>
            <Field FieldType="array">
              <Name>INNER</Date>
              <Fields>
                <Field FieldType="integer">
                  <Name>COUNT</Name>
                  <Value>7</Value>
                </Field>
              </Fields>
            </Data>
            <Field FieldType="array">
              <Name>EMPTY</Date>
              <Fields/>
            </Data>
            <Field FieldType="string">
              <Name>A</Name>
              <Value>x</Value>
            </Field>
          </Fields>
        </Data>
        <Field FieldType="array">
          <Name>(null)</Date>
          <Fields/>
        </Data>
)");
}

TEST_F(DescriptionTest, LeavesWhatTheCreationOfAnExecutionSets) {
  expectExecution(R"(, "timeStamp": "2026-11-21T12:00:00Z")", {});
  expectExecution(R"(, "timeStamp": "2026-11-21T12:00:00Z", "steps": [], "fields": [])", {});
}

TEST_F(DescriptionTest, TakesNullTimeStampsAsMissingThroughout) {
  expectExecution(R"(, "timeStamp": null, "steps": [{"timeStamp": null, "stepName": null}])",
                  {.timeStamp = "(null)",
                   .startTime = "(null)",
                   .endTime = "(null)",
                   .steps = stepText("(null)", "ENTER", "(null)")});
  expectExecution(R"(, "timeStamp": null, "endTime": "2026-11-21T12:00:00Z")",
                  {.timeStamp = "(null)", .startTime = "(null)"});
}

TEST_F(DescriptionTest, TakesEveryValueOfAnExecution) {
  expectExecution(R"(, "timeStamp": "2026-11-21T12:00:00Z", "startPoint": "setup",
      "endPoint": "finish", "startTime": "2026-11-21T12:00:01.250Z",
      "endTime": "2026-11-21T12:00:02.5Z", "endResultString": "OK", "endResultCode": "0",
      "endErrorMessageString": "none", "endErrorMessageCode": "E0", "successfull": false,
      "cancelled": true, "executionType": "Silent",
      "fields": [{"name": "EDITION", "type": "string", "value": "Home"}])",
                  {.executionType = "Silent",
                   .startPoint = "setup",
                   .startTime = "2026-11-21T12:00:01.250UTC",
                   .endPoint = "finish",
                   .endTime = "2026-11-21T12:00:02.500UTC",
                   .endResultString = "OK",
                   .endResultCode = "0",
                   .endErrorMessageString = "none",
                   .endErrorMessageCode = "E0",
                   .cancelled = "TRUE",
                   .successfull = "FALSE",
                   .fields = field("string", "EDITION", "Home")});
  expectExecution(R"(, "timeStamp": "2026-11-21T12:00:00Z", "startPoint": null, "endPoint": null,
      "startTime": null, "endTime": null, "endResultString": null, "endResultCode": null,
      "endErrorMessageString": null, "endErrorMessageCode": null, "executionType": null,
      "successfull": 255, "cancelled": -128)",
                  {.executionType = "(null)",
                   .startPoint = "(null)",
                   .startTime = "(null)",
                   .endPoint = "(null)",
                   .endTime = "(null)",
                   .endResultString = "(null)",
                   .endResultCode = "(null)",
                   .endErrorMessageString = "(null)",
                   .endErrorMessageCode = "(null)",
                   .successfull = "FALSE"});
}

TEST_F(DescriptionTest, TakesStepsInOrderByNameAndByNumber) {
  expectExecution(
      R"(, "timeStamp": "2026-11-21T12:00:00Z", "steps": [
      {"timeStamp": "2026-11-21T12:00:00Z", "stepName": "Copy", "stepType": "LEAVE",
       "stepMessageString": "done", "stepMessageCode": "0"},
      {"timeStamp": "2026-11-21T12:00:00Z", "stepName": "Copy", "stepType": "ENTER"},
      {"timeStamp": "2026-11-21T12:00:00Z", "stepName": "", "stepType": "EXIT"},
      {"timeStamp": "2026-11-21T12:00:00Z", "stepName": "A", "stepType": "INFO"},
      {"timeStamp": "2026-11-21T12:00:00Z", "stepName": "A", "stepType": "ERROR"},
      {"timeStamp": "2026-11-21T12:00:00Z", "stepName": "A", "stepType": 4},
      {"timeStamp": "2026-11-21T12:00:00Z", "stepName": "A", "stepType": 5},
      {"timeStamp": "2026-11-21T12:00:00Z", "stepName": "A", "stepType": 18446744073709551615,
       "stepMessageString": null, "stepMessageCode": null},
      {"timeStamp": "2026-11-21T12:00:00Z"}])",
      {.steps = stepText("Copy", "LEAVE", kNoon, "done", "0") + stepText("Copy", "ENTER", kNoon) +
                stepText("", "EXIT", kNoon) + stepText("A", "INFO", kNoon) +
                stepText("A", "ERROR", kNoon) + stepText("A", "ERROR", kNoon) +
                stepText("A", "", kNoon) + stepText("A", "", kNoon, "(null)", "(null)") +
                stepText("(null)", "ENTER", kNoon)});
}

TEST_F(DescriptionTest, KeepsStepTypesOf64Bits) {
  const auto document = Description(R"({"pools": [{"kind": "execution", "steps": [
      {"stepType": 18446744073709551615}]}]})")
                            .makeOffline();
  const auto pool = std::dynamic_pointer_cast<ZtPortalPoolExecution>(document->pools().front());
  ASSERT_NE(pool, nullptr);
  EXPECT_EQ(pool->executionStep(0)->stepType(), 18446744073709551615U);
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

}  // namespace
