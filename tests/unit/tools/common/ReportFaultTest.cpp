// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "tests/unit/tools/common/ReportText.h"
#include "tools/common/ReportReader.h"

// What is refused, with the place of the first thing that cannot be read.

namespace zt::test {
namespace {

using zt::reader::placeIn;
using zt::reader::ReadError;
using zt::reader::readReport;

std::string faultOf(std::string_view text) {
  try {
    readReport(text);
  } catch (const ReadError& error) {
    return error.what();
  }
  return "no fault";
}

/// `text` with the only `before` in it replaced.
std::string replaced(std::string text, std::string_view before, std::string_view after) {
  const std::size_t at = text.find(before);
  if (at == text.npos || text.find(before, at + 1) != text.npos) return "not once: " + text;
  return text.replace(at, before.size(), after);
}

const std::string kReport = plainLines(plainPool(plainField("EDITION", "Home")));

struct FaultRow {
  const char* before;
  const char* after;
  const char* fault;
};

void expectFaults(const std::string& lines, const std::vector<FaultRow>& rows) {
  ASSERT_EQ(faultOf(lines), "no fault");
  for (const FaultRow& row : rows) {
    const std::string text = replaced(lines, row.before, row.after);
    EXPECT_EQ(faultOf(text), row.fault) << text;
  }
}

TEST(ReportFaultTest, OtherTexts) {
  const std::string either =
      R"(line 1, column 1: expected "<SOAP-ENV:Envelope" or "<?xml version="1.0"?>")";
  for (const char* text : {"x", "\r\n", "{\"pools\": []}", "<?xml version=\"1.1\"?>\r\n", "<a/>"}) {
    EXPECT_EQ(faultOf(text), either) << text;
  }
  EXPECT_EQ(faultOf(" <?xml version=\"1.0\"?>\n"),
            R"(line 1, column 2: expected "<SOAP-ENV:Envelope" or "<?xml version="1.0"?>")");
}

TEST(ReportFaultTest, InTheHead) {
  expectFaults(
      kReport,
      {
          {"?>\n", "?>", "line 1, column 22: expected the end of the line"},
          {"<reportData>", "<reportdata>", R"(line 2, column 1: expected "<reportData>")"},
          {"  <ReportID>", " <ReportID>",
           R"(line 3, column 2: expected "<ReportID>" after 2 blanks)"},
          {"  <ReportID>", "\t<ReportID>",
           R"(line 3, column 1: expected "<ReportID>" after 2 blanks)"},
          {"  <MachineID>{M}</MachineID>\n", "", R"(line 4, column 3: expected "<MachineID>")"},
          {"{M}</MachineID>", "{M}", R"(line 4, column 17: expected "</MachineID>")"},
          {"  <Datas>\n", "", R"(line 8, column 3: expected "<Datas>" after 2 blanks)"},
      });
}

TEST(ReportFaultTest, InAPool) {
  expectFaults(
      kReport,
      {
          {"    <Data Pool=\"CUSTOM\">\n", "    <Data>\n",
           R"(line 9, column 5: expected "<Data Pool="")"},
          {"\"CUSTOM\">", "\"CUSTOM\"", R"(line 9, column 24: expected "">")"},
          {"<Date>", "<Dat>", R"(line 10, column 7: expected "<Date>")"},
          {"      <Fields>", "      <Felds>", R"(line 11, column 7: expected "<Fields>")"},
          {"      </Fields>\n    </Data>\n", "    </Data>\n",
           R"(line 16, column 5: expected "<Field" after 8 blanks or "</Fields>" after 6)"},
          {"    </Data>\n", "", R"(line 17, column 3: expected "</Data>" after 4 blanks)"},
          {"  </Datas>\n", "",
           R"(line 18, column 1: expected "<Data" after 4 blanks or "</Datas>" after 2)"},
          {"</reportData>\n", "",
           R"(line 19, column 1: expected "</reportData>", found the end of the text)"},
          {"</reportData>\n", "</reportData>",
           "line 19, column 14: expected the end of the line, found the end of the text"},
          {"</reportData>\n", "</reportData>\nx",
           "line 20, column 1: expected the end of the text"},
          {"</reportData>\n", "</reportData>\n\n",
           "line 20, column 1: expected the end of the text"},
      });
  EXPECT_EQ(faultOf(plainLines("")),
            R"(line 9, column 3: expected "<Data" after 4 blanks or "</Datas>" after 2)");
}

TEST(ReportFaultTest, InAField) {
  const char* const kNoField =
      R"(line 12, column 9: expected "<Field" after 8 blanks or "</Fields>" after 6)";
  expectFaults(
      kReport,
      {
          {"FieldType=\"string\"", "FieldType=\"date\"", kNoField},
          {"<Field FieldType=\"string\">", "<Field FieldType=\"string\"> ",
           "line 12, column 35: expected the end of the line"},
          {"          <Name>", "         <Name>",
           R"(line 13, column 10: expected "<Name>" after 10 blanks)"},
          {"</Name>", "", R"(line 13, column 24: expected "</Name>")"},
          {"          <Value>Home</Value>\n", "",
           R"(line 14, column 9: expected "<Value>" after 10 blanks)"},
          {"Home</Value>", "Home", R"(line 14, column 22: expected "</Value>")"},
          {"Home</Value>", "Home</Value>x\n</Value>",
           "line 14, column 30: expected the end of the line"},
          {"Home</Value>", "Ho</Value>\nme</Value>",
           R"(line 15, column 1: expected "</Field>" after 8 blanks)"},
          {"Home", "Home\n        </Field>\nx", R"(line 14, column 22: expected "</Value>")"},
          {"        </Field>\n", "", R"(line 15, column 7: expected "</Field>" after 8 blanks)"},
          {"FieldType=\"string\"", "type=\"none\"",
           R"(line 13, column 11: expected "<Name type="none">")"},
      });
}

TEST(ReportFaultTest, InAnArray) {
  expectFaults(
      plainLines(plainPool("        <Field FieldType=\"array\">\n"
                           "          <Name>LIST</Date>\n"
                           "          <Fields>\n"
                           "          </Fields>\n"
                           "        </Data>\n")),
      {
          {"LIST</Date>", "LIST", R"(line 13, column 21: expected "</Date>")"},
          {"          <Fields>\n", "", R"(line 14, column 11: expected "<Fields>")"},
          {"          </Fields>\n", "",
           R"(line 15, column 9: expected "<Field" after 12 blanks or "</Fields>" after 10)"},
          {"        </Data>\n", "        </Field>\n", R"(line 16, column 9: expected "</Data>")"},
          {"LIST</Date>", "LIST</Name>",
           R"(line 16, column 9: expected "<Fields>" after 10 blanks or "</Field>" after 8)"},
      });
}

TEST(ReportFaultTest, InASoapReport) {
  expectFaults(
      soapLines("           <Data xsi:type=\"com_Pool\" Pool=\"A\">\n"
                "             <Date xsi:type=\"xsd:dateTime\">(null)</Date>\n"
                "             <Fields xsi:type=\"com_Fields\"/>\n"
                "           </Data>\n"),
      {
          {"  <SOAP-ENV:Body>\n", "  <SOAP-ENV:Header/>\n  <SOAP-ENV:Body>\n",
           R"(line 2, column 3: expected "<SOAP-ENV:Body>")"},
          {"Pool=\"A\"", "Pool=\"A\" ", R"(line 11, column 48: expected "">")"},
          {"xsi:type=\"com_Fields\"/>", "/>",
           R"(line 13, column 14: expected "<Fields xsi:type="com_Fields">")"},
          {"</SOAP-ENV:Envelope>\n", "",
           R"(line 19, column 1: expected "</SOAP-ENV:Envelope>", found the end of the text)"},
      });
}

TEST(ReportFaultTest, MixedLineEnds) {
  EXPECT_EQ(faultOf(replaced(crlf(kReport), "<Datas>\r\n", "<Datas>\n")),
            "line 8, column 10: expected the end of the line (CR LF)");
  EXPECT_EQ(faultOf(replaced(kReport, "<Datas>\n", "<Datas>\r\n")),
            "line 8, column 10: expected the end of the line");
}

TEST(ReportFaultTest, EveryBeginningOfAReportIsRefusedAtItsEndOrItsLastLine) {
  const std::string text =
      crlf(plainLines(plainPool(plainField("A", "x") + "        <Field FieldType=\"array\">\n"
                                                       "          <Name>LIST</Date>\n"
                                                       "          <Fields/>\n"
                                                       "        </Data>\n")));
  for (std::size_t size = 1; size < text.size(); ++size) {
    const std::string_view part = std::string_view(text).substr(0, size);
    try {
      readReport(part);
      ADD_FAILURE() << part;
    } catch (const ReadError& error) {
      EXPECT_EQ(error.place().line, placeIn(part, size).line) << part << "\n" << error.what();
    }
  }
}

}  // namespace
}  // namespace zt::test
