// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "tests/unit/tools/common/ReportText.h"
#include "tests/unit/tools/common/ToldReport.h"
#include "tools/common/ReportReader.h"

namespace zt::test {
namespace {

using zt::reader::Form;
using zt::reader::ParsedReport;
using zt::reader::readReport;

/// What is read from a plain report with these fields, in both kinds of line ends.
void expectFields(const std::string& fields, const std::string& expected) {
  const std::string head = "[CUSTOM] [2026-11-21T12:00:00.000UTC]\n";
  const std::string text = plainLines(plainPool(fields));
  EXPECT_EQ(told(readReport(text)), head + expected) << fields;
  EXPECT_EQ(told(readReport(crlf(text))), head + expected) << fields;
}

TEST(ReportReaderTest, AnEmptyTextIsAReportWithoutPools) {
  const ParsedReport report = readReport("");
  EXPECT_EQ(report.form, Form::Empty);
  EXPECT_TRUE(report.pools.empty());
}

TEST(ReportReaderTest, ReadsTheHeadOfBothForms) {
  const std::string plain = plainLines(
      "    <Data Pool=\"A\">\n      <Date>(null)</Date>\n      <Fields/>\n    </Data>\n");
  const std::string soap = soapLines(
      "           <Data xsi:type=\"com_Pool\" Pool=\"A\">\n"
      "             <Date xsi:type=\"xsd:dateTime\">(null)</Date>\n"
      "             <Fields xsi:type=\"com_Fields\"/>\n"
      "           </Data>\n");
  const struct {
    std::string text;
    Form form;
  } rows[] = {{plain, Form::Plain},
              {crlf(plain), Form::Plain},
              {soap, Form::Soap},
              {crlf(soap), Form::Soap}};
  for (const auto& row : rows) {
    const ParsedReport report = readReport(row.text);
    EXPECT_EQ(report.form, row.form);
    EXPECT_EQ(report.reportId, "{R}");
    EXPECT_EQ(report.machineId, "{M}");
    EXPECT_EQ(report.customerId, "Kelvane");
    EXPECT_EQ(report.applicationId, "{A}");
    EXPECT_EQ(report.applicationVersion, "2.1.77");
    EXPECT_EQ(told(report), "[A] [(null)] empty\n");
    EXPECT_EQ(report.text, row.text);
  }
}

TEST(ReportReaderTest, ReadsFieldsOfEveryType) {
  expectFields(
      plainFields("string A = x | integer B = -7 | float C = 1.10 | boolean D = TRUE\nnone E"),
      "  string [A] [x]\n  integer [B] [-7]\n  float [C] [1.10]\n  boolean [D] [TRUE]\n"
      "  none [E] []\n");
}

TEST(ReportReaderTest, ReadsArraysByTheirOwnEndTags) {
  expectFields(plainFields(R"(
array OUTER
  array INNER
    integer COUNT = 7
  array
)") + R"(        <Field FieldType="array">
          <Name></Name></Date>
          <Fields>
          </Fields>
        </Data>
)" + plainField("A", "x"),
               "  array [OUTER] []\n"
               "    array [INNER] []\n"
               "      integer [COUNT] [7]\n"
               "    array [] [] empty\n"
               "  array [</Name>] []\n"
               "  string [A] [x]\n");
}

TEST(ReportReaderTest, ReadsListsOfRecords) {
  const std::string told =
      "    record [] []\n      string [STEP_NAME] [Copy]\n      boolean [DONE] [TRUE]\n";
  expectFields(plainFields(R"(
records STEPS
  - string STEP_NAME = Copy | boolean DONE = TRUE
  - string STEP_NAME = Copy | boolean DONE = TRUE
string A = x
)"),
               "  records [STEPS] []\n" + told + told + "  string [A] [x]\n");
  expectFields(plainFields("records STEPS"), "  records [STEPS] []\n");
  expectFields(plainFields("records STEPS\n  -"), "  records [STEPS] []\n    record [] []\n");
}

TEST(ReportReaderTest, ReadsSeveralPoolsInOrder) {
  const std::string text =
      plainLines(plainPool(plainField("A", "1")) + plainPool("") + plainPool(plainField("B", "2")));
  EXPECT_EQ(told(readReport(text)),
            "[CUSTOM] [2026-11-21T12:00:00.000UTC]\n  string [A] [1]\n"
            "[CUSTOM] [2026-11-21T12:00:00.000UTC]\n"
            "[CUSTOM] [2026-11-21T12:00:00.000UTC]\n  string [B] [2]\n");
}

const std::vector<std::string> kHostile{
    "",          " ",
    "  x  ",     "(null)",
    "&<>\"'",    "<Field>",
    "</Field>",  "</Fields>",
    "</Name>",   "</Value>",
    "</Date>",   "</Data>",
    "</Datas>",  "</reportData>",
    "a</Name>b", "a</Value>b</Value>c",
    "\">",       "\"/>",
    "]]>",       "<!--",
    "<![CDATA[", "        </Field>",
    "<Fields/>", "\t",
    "\x1b[31m",  "\xff\xfe",
    "Höme",      std::string("a\0b", 3),
};

TEST(ReportReaderTest, GivesBackEveryValueOfOneLine) {
  for (const std::string& value : kHostile) {
    expectFields(plainField("A", value), "  string [A] [" + value + "]\n");
    expectFields(plainField(value, "A"), "  string [" + value + "] [A]\n");
    expectFields("        <Field type=\"none\">\n          <Name type=\"none\">" + value +
                     "</Name>\n        </Field>\n",
                 "  none [" + value + "] []\n");
    expectFields("        <Field FieldType=\"array\">\n          <Name>" + value +
                     "</Date>\n          <Fields/>\n        </Data>\n",
                 "  array [" + value + "] [] empty\n");
  }
}

TEST(ReportReaderTest, GivesBackEveryPartOfPoolAndHeadOfOneLine) {
  for (const std::string& value : kHostile) {
    const auto line = [&](const std::string& name) {
      return "  <" + name + ">" + value + "</" + name + ">\n";
    };
    const std::string text =
        crlf("<?xml version=\"1.0\"?>\n<reportData>\n" + line("ReportID") + line("MachineID") +
             line("CustomerID") + line("ApplicationID") + line("ApplicationVersion") +
             "  <Datas>\n    <Data Pool=\"" + value + "\">\n      <Date>" + value +
             "</Date>\n      <Fields/>\n    </Data>\n  </Datas>\n"
             "</reportData>\n");
    const ParsedReport report = readReport(text);
    EXPECT_EQ(report.reportId, value);
    EXPECT_EQ(report.machineId, value);
    EXPECT_EQ(report.customerId, value);
    EXPECT_EQ(report.applicationId, value);
    EXPECT_EQ(report.applicationVersion, value);
    ASSERT_EQ(report.pools.size(), 1U);
    EXPECT_EQ(report.pools[0].type, value);
    EXPECT_EQ(report.pools[0].date, value);
  }
}

TEST(ReportReaderTest, GivesBackValuesWithLineEndsThatCannotBeMistaken) {
  for (const char* value : {"one\ntwo", "\n", "\n\n", "x\n", "\nx", "<Field>\n<Value>",
                            "a\n</Name>\nb", "a\n</Field>", "a\n       </Field>"}) {
    const std::string text = plainLines(plainPool(plainField("A", value) + plainField("B", "x")));
    const ParsedReport lines = readReport(text);
    ASSERT_EQ(lines.fields.size(), 2U) << value;
    EXPECT_EQ(lines.fields[0].value, value);
    const std::string written = crlf(text);
    const ParsedReport report = readReport(written);
    ASSERT_EQ(report.fields.size(), 2U) << value;
    EXPECT_EQ(report.fields[0].value, crlf(value));
  }
}

TEST(ReportReaderTest, ALoneLineFeedOrReturnIsNoLineEndOfAWrittenReport) {
  for (const std::string value : {"a\nb", "a\n        </Field>\nb", "\n", "\r", "a\rb\n</Value>"}) {
    std::string text = crlf(plainLines(plainPool(plainField("A", "VALUE"))));
    text.replace(text.find("VALUE"), 5, value);
    const ParsedReport report = readReport(text);
    ASSERT_EQ(report.fields.size(), 1U) << value;
    EXPECT_EQ(report.fields[0].value, value);
  }
}

TEST(ReportReaderTest, GivesBackNamesAndTypesWithLineEnds) {
  const std::string text = crlf(
      "<?xml version=\"1.0\"?>\n<reportData>\n  <ReportID>a\nb</ReportID>\n"
      "  <MachineID></MachineID>\n  <CustomerID></CustomerID>\n"
      "  <ApplicationID></ApplicationID>\n  <ApplicationVersion>a\nb</ApplicationVersion>\n"
      "  <Datas>\n    <Data Pool=\"a\nb\">\n      <Date>a\nb</Date>\n      <Fields>\n"
      "        <Field FieldType=\"array\">\n          <Name>a\nb</Date>\n          <Fields/>\n"
      "        </Data>\n" +
      plainField("a\nb", "x") +
      "        <Field type=\"none\">\n          <Name type=\"none\">a\nb</Name>\n"
      "        </Field>\n      </Fields>\n    </Data>\n  </Datas>\n</reportData>\n");
  const ParsedReport report = readReport(text);
  EXPECT_EQ(report.reportId, "a\r\nb");
  EXPECT_EQ(report.applicationVersion, "a\r\nb");
  EXPECT_EQ(told(report),
            "[a\r\nb] [a\r\nb]\n  array [a\r\nb] [] empty\n  string [a\r\nb] [x]\n"
            "  none [a\r\nb] []\n");
}

TEST(ReportReaderTest, ReadsTheEmptyElementsOfAnXmlWriter) {
  // What was sent again from the store was written by one.
  const std::string text =
      "<?xml version=\"1.0\"?>\n<reportData>\n  <ReportID/>\n  <MachineID>{M}</MachineID>\n"
      "  <CustomerID/>\n  <ApplicationID/>\n  <ApplicationVersion/>\n  <Datas>\n"
      "    <Data Pool=\"\">\n      <Date/>\n      <Fields>\n"
      "        <Field FieldType=\"string\">\n          <Name/>\n          <Value/>\n"
      "        </Field>\n"
      "        <Field FieldType=\"string\">\n          <Name>a\nb</Name>\n          <Value/>\n"
      "        </Field>\n"
      "        <Field type=\"none\">\n          <Name type=\"none\"/>\n        </Field>\n"
      "      </Fields>\n    </Data>\n  </Datas>\n</reportData>\n";
  const ParsedReport report = readReport(text);
  EXPECT_EQ(report.reportId, "");
  EXPECT_EQ(report.machineId, "{M}");
  EXPECT_EQ(report.applicationVersion, "");
  EXPECT_EQ(told(report), "[] []\n  string [] []\n  string [a\nb] []\n  none [] []\n");
  EXPECT_THROW(readReport(crlf(text)), zt::reader::ReadError) << "the library writes both tags";
}

TEST(ReportReaderTest, AValueThatImitatesTheReportsLinesIsWhatItImitates) {
  const std::string imitation =
      "x</Value>\n        </Field>\n        <Field FieldType=\"string\">\n"
      "          <Name>B</Name>\n          <Value>y";
  expectFields(plainField("A", imitation), "  string [A] [x]\n  string [B] [y]\n");
}

TEST(ReportReaderTest, KeepsThePlaceOfEverything) {
  const std::string text = crlf(plainLines(plainPool(plainField("NAME", "VALUE"))));
  const ParsedReport report = readReport(text);
  EXPECT_EQ(report.offsetOf(report.fields[0].value), text.find("VALUE"));
  EXPECT_EQ(report.offsetOf(report.fields[0].name), text.find("NAME"));
  EXPECT_EQ(report.offsetOf(report.pools[0].type), text.find("CUSTOM"));
}

/// Arrays in arrays, `depth` of them, and nothing in the innermost.
std::string nestedArrays(std::size_t depth) {
  std::string text;
  for (std::size_t i = 0; i < depth; ++i) {
    const std::string blanks(8 + 4 * i, ' ');
    text += blanks + "<Field FieldType=\"array\">\n" + blanks + "  <Name>A</Date>\n" + blanks +
            (i + 1 < depth ? "  <Fields>\n" : "  <Fields/>\n");
  }
  for (std::size_t i = depth; i-- > 0;) {
    const std::string blanks(8 + 4 * i, ' ');
    text += (i + 1 < depth ? blanks + "  </Fields>\n" : "") + blanks + "</Data>\n";
  }
  return text;
}

TEST(ReportReaderTest, TakesArraysInArraysOfAnyDepth) {
  constexpr std::size_t kDepth = 1500;
  const std::string text = crlf(plainLines(plainPool(nestedArrays(kDepth))));
  const ParsedReport report = readReport(text);
  ASSERT_EQ(report.fields.size(), kDepth);
  for (std::size_t i = 0; i < kDepth; ++i) ASSERT_EQ(report.fields[i].size, kDepth - i);
}

TEST(ReportReaderTest, TakesATextOf64MiB) {
  std::string fields;
  std::size_t count = 0;
  for (; fields.size() < std::size_t{64} * 1024 * 1024; ++count) {
    fields += plainField("NUMBER", std::to_string(count), "integer");
  }
  const std::string text = plainLines(plainPool(fields));
  const ParsedReport report = readReport(text);
  ASSERT_EQ(report.fields.size(), count);
  EXPECT_EQ(report.fields.back().value, std::to_string(count - 1));
}

using zt::reader::Place;
using zt::reader::placeIn;
using zt::reader::ReadError;

TEST(ReportReaderTest, CountsLinesByLineFeedsAndColumnsByBytes) {
  const struct {
    const char* text;
    std::size_t offset;
    Place place;
  } rows[] = {
      {"", 0, {1, 1}},          {"", 7, {1, 1}},       {"abc", 0, {1, 1}},  {"abc", 2, {1, 3}},
      {"abc", 3, {1, 4}},       {"abc", 99, {1, 4}},   {"a\nb", 1, {1, 2}}, {"a\nb", 2, {2, 1}},
      {"a\r\nb", 2, {1, 3}},    {"a\r\nb", 3, {2, 1}}, {"a\rb", 2, {1, 3}}, {"\n\n\n", 3, {4, 1}},
      {"\xc3\xa4x", 2, {1, 3}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(placeIn(row.text, row.offset), row.place) << row.text << " " << row.offset;
  }
}

TEST(ReportReaderTest, AnErrorHasItsPlaceAndReason) {
  const ReadError error({12, 7}, "expected more");
  EXPECT_STREQ(error.what(), "line 12, column 7: expected more");
  EXPECT_EQ(error.place(), (Place{12, 7}));
}

}  // namespace
}  // namespace zt::test
