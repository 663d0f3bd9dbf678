#include <gtest/gtest.h>

#include <string>

#include "tests/tools/inbox/SampleReport.h"
#include "tools/inbox/ReportText.h"
#include "ztportal/ztportal.h"

namespace {

using zt::inbox::readReportText;
using zt::inbox::ReportText;
using zt::test::SampleReport;

/// A line for each pool and field: indented by its depth, its group behind the depth.
std::string shown(const ReportText& report) {
  std::string text;
  for (const auto& pool : report.pools) {
    text.append(pool.type).append(" ").append(pool.date).append("\n");
    for (const auto& field : pool.fields) {
      text.append(field.depth * 2 + 2, ' ').append(std::to_string(field.group)).append(" ");
      text.append(field.type).append(" ").append(field.name);
      if (!field.isArray()) text.append("=").append(field.value);
      text.append("\n");
    }
  }
  return text;
}

/// The pools as the library writes them within a report.
std::string written(const std::vector<std::shared_ptr<ZtPortalPool>>& pools, bool soap) {
  std::string text = soap ? "         <Datas xsi:type=\"com_Pools\">\r\n" : "  <Datas>\r\n";
  for (const auto& pool : pools) pool->addToXml(soap ? "           " : "    ", text, soap);
  return text + (soap ? "         </Datas>\r\n" : "  </Datas>\r\n");
}

TEST(ReportTextTest, ReadsWhatTheLibraryWritesInBothForms) {
  const auto run = ZtPortalPoolExecution::initWithValues(ZtDate());
  run->setStartPoint("setup");
  run->addStep(ZtDate(), "Copy", ZtPortalStepEnter);
  run->addStep(ZtDate(), "Check", ZtPortalStepError)->setStepMessageString("a\r\n<b> & c");
  run->addString("EDITION", "Home");
  const auto custom = ZtPortalPool::initWithValues("CUSTOM \"<x>\"", ZtDate());
  const auto outer = custom->addArray("OUTER");
  outer->addInteger("COUNT", 7);
  const auto inner = outer->addArray("INNER");
  inner->addBOOL("FLAG", 1);
  outer->addArray("EMPTY");
  outer->addFloat("RATIO", 0.5F);
  custom->addString("LAST", "");
  const auto empty = ZtPortalPool::initWithValues("EMPTY", ZtDate());
  for (const bool soap : {true, false}) {
    EXPECT_EQ(shown(readReportText(written({run, custom, empty}, soap))),
              "EXECUTION (null)\n"
              "  0 string INSTALLATION_TYPE=Standard\n"
              "  0 string START_POINT=setup\n"
              "  0 string START_TIME=(null)\n"
              "  0 string END_POINT=\n"
              "  0 string END_TIME=(null)\n"
              "  0 string END_RESULTSTRING=\n"
              "  0 string END_RESULTCODE=\n"
              "  0 string END_ERRORMESSAGESTRING=\n"
              "  0 string END_ERRORMESSAGECODE=\n"
              "  0 boolean CANCELLED=FALSE\n"
              "  0 boolean SUCCESSFULL=TRUE\n"
              "  0 array INSTALLATIONSTEPS\n"
              "    0 string STEP_NAME=Copy\n"
              "    0 string STEP_TYPE=ENTER\n"
              "    0 string STEP_TIMESTAMP=(null)\n"
              "    0 string STEP_MESSAGESTRING=\n"
              "    0 string STEP_MESSAGECODE=\n"
              "    1 string STEP_NAME=Check\n"
              "    1 string STEP_TYPE=ERROR\n"
              "    1 string STEP_TIMESTAMP=(null)\n"
              "    1 string STEP_MESSAGESTRING=a\r\n<b> & c\n"
              "    1 string STEP_MESSAGECODE=\n"
              "  0 string EDITION=Home\n"
              "CUSTOM \"<x>\" (null)\n"
              "  0 array OUTER\n"
              "    0 integer COUNT=7\n"
              "    0 array INNER\n"
              "      0 boolean FLAG=TRUE\n"
              "    0 array EMPTY\n"
              "    0 float RATIO=0.50\n"
              "  0 string LAST=\n"
              "EMPTY (null)\n");
  }
}

TEST(ReportTextTest, ReadsReportsThatAnXmlLibraryWroteBack) {
  // Plain line ends, empty elements in one tag.
  EXPECT_EQ(shown(readReportText("<Datas>\n<Data Pool=\"P\">\n  <Date/>\n  <Fields>\n"
                                 "    <Field FieldType=\"string\">\n      <Name>N</Name>\n"
                                 "      <Value xsi:type=\"xsd:string\"/>\n    </Field>\n"
                                 "    <Field type=\"none\">\n      <Name type=\"none\">B</Name>\n"
                                 "    </Field>\n  </Fields>\n</Data>\n</Datas>\n")),
            "P \n  0 string N=\n  0 none B=\n");
}

TEST(ReportTextTest, AValueMayHoldWhatItWants) {
  for (const char* value :
       {"</Value>", "a</Value>b", "</Value>\r\n", "\r\n\r\n", "</Value>\r\n</Field>\r\n", "<Value>",
        "x\r\n           <Data Pool=\"QUOTED\">\r\n", "\r\n               </Field>\r\n",
        "\r\n               <Field FieldType=\"array\">\r\n", "</Data>\r\n</Datas>", "&amp;"}) {
    SampleReport report;
    report.pools = {"A", "B"};
    report.value = value;
    std::string expected;
    for (const char* pool : {"A", "B"}) {
      expected.append(pool).append(" 2026-11-21T12:00:00.123UTC\n  0 string EDITION=");
      expected.append(value).append("\n");
    }
    EXPECT_EQ(shown(readReportText(report.text())), expected);
  }
}

TEST(ReportTextTest, ReadsWhatItCanWhereEndsAreMissing) {
  const struct {
    const char* text;
    const char* shown;
  } rows[] = {
      {"", ""},
      {"<Data", ""},
      {"<Data Pool=\"", ""},
      {"<Data Pool=\"A\n", ""},
      {"<Data Pool=\"A\">", "A \n"},
      {"<Data Pool=\"A\">\n<Date>now", "A now\n"},
      {"<Field FieldType=\"string\">\n<Name>N</Name>\n<Value>V</Value>\n</Field>\n", ""},
      {"<Data Pool=\"A\">\n<Field FieldType=\"string\">\n<Name>N</Name>\n<Value>V",
       "A \n  0 string N=V\n"},
      {"<Data Pool=\"A\">\n<Field FieldType=\"string\">\n<Name>N\n<Value>V</Value>\n</Field>\n",
       "A \n  0 string N=V\n"},
      {"<Data Pool=\"A\">\n <Field FieldType=\"array\">\n  <Name>L</Date>\n  <Fields>\n"
       "   <Field>\n   <Name>N</Name>\n   </Field>\n <Field FieldType=\"string\">\n"
       "  <Name>M</Name>\n  <Value>V</Value>\n </Field>\n",
       "A \n  0 array L\n    0 none N=\n  0 string M=V\n"},
  };
  for (const auto& row : rows) EXPECT_EQ(shown(readReportText(row.text)), row.shown) << row.text;
}

TEST(ReportTextTest, LeavesOutWhatIsTooMuch) {
  std::string text = "<Data Pool=\"A\">\n";
  for (std::size_t i = 0; i < zt::inbox::kMostReportFields + 10; ++i) {
    text += "<Field>\n<Name>N</Name>\n</Field>\n";
  }
  const ReportText report = readReportText(text);
  EXPECT_FALSE(report.complete);
  EXPECT_EQ(report.pools[0].fields.size(), zt::inbox::kMostReportFields - 1);
  EXPECT_TRUE(readReportText(SampleReport().text()).complete);
}

/// The test's time limit is what would catch a search that starts over and over again.
TEST(ReportTextTest, TakesHostileReportsInOneGo) {
  for (const char* piece :
       {"<Field>\n<Name>\n", "<Field>\n<Name>x</Name>\n<Value>\n", "<Value>", "</Value>\n",
        "<Data Pool=\"x\n", "<Data Pool=\"x\">\n", "<Fields>\n", "\n", " ", "<",
        "<Field FieldType=\"array\">\n<Name>\n</Date>\n<Fields>\n",
        "<Field>\n<Value>\n</Value>\n"}) {
    std::string text = "<Data Pool=\"A\">\n";
    while (text.size() < 8UL * 1024 * 1024) text += piece;
    const ReportText report = readReportText(text);
    EXPECT_FALSE(report.pools.empty());
  }
}

}  // namespace
