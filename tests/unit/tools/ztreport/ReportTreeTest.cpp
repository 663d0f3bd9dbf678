// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "tests/unit/tools/common/ReportText.h"
#include "tools/common/ReportReader.h"
#include "tools/ztreport/commands/ReportTree.h"

namespace zt::test {
namespace {

using zt::reader::readReport;
using zt::terminal::TerminalStyle;
using zt::tools::reportTree;

constexpr const char* kHead =
    "report       {R}\nmachine      {M}\ncustomer     Kelvane\napplication  {A}\n"
    "version      2.1.77\nform         plain XML\n\n"
    "CUSTOM  2026-11-21T12:00:00.000UTC\n";

std::string treeOf(const std::string& fields, const TerminalStyle& style = {}) {
  return reportTree(readReport(plainLines(plainPool(fields))), style);
}

TEST(ReportTreeTest, OfAReportWithoutPools) {
  EXPECT_EQ(reportTree(readReport(""), {}), "a report without pools, which has no text\n");
}

TEST(ReportTreeTest, PutsNamesTypesAndValuesInColumns) {
  EXPECT_EQ(treeOf(plainFields("string A = one | integer LONGER_NAME = 7 | boolean Ä = TRUE\n"
                               "string EMPTY =\nnone BARE")),
            std::string(kHead) +
                "  A            string   one\n"
                "  LONGER_NAME  integer  7\n"
                "  Ä            boolean  TRUE\n"
                "  EMPTY        string\n"
                "  BARE         none\n");
}

TEST(ReportTreeTest, IndentsArraysAndNumbersRecords) {
  EXPECT_EQ(treeOf(plainFields(R"(
records STEPS
  - string STEP_NAME = Copy | boolean DONE = TRUE
  -
array OUTER
  array INNER
  float F = 0.62
string A = x
)")),
            std::string(kHead) +
                "  STEPS  records  2\n"
                "    1  STEP_NAME  string   Copy\n"
                "       DONE       boolean  TRUE\n"
                "    2\n"
                "  OUTER  array    2\n"
                "    INNER  array    0\n"
                "    F      float    0.62\n"
                "  A      string   x\n");
}

TEST(ReportTreeTest, MakesWhatPlaysWithATerminalHarmless) {
  const std::string shown = treeOf(plainField("A\x1b]0;x\x07", "\x1b[2J \xe2\x80\xae \xff \t"));
  EXPECT_EQ(shown,
            std::string(kHead) + "  A\\x1b]0;x\\x07  string   \\x1b[2J \\u{202e} \\xff \\x09\n");
  const std::string text = plainLines(
      "    <Data Pool=\"\x1b[31m\">\n      <Date>\x07</Date>\n      <Fields/>\n"
      "    </Data>\n");
  EXPECT_NE(reportTree(readReport(text), {}).find("\n\\x1b[31m  \\x07\n"), std::string::npos);
}

TEST(ReportTreeTest, GoesOnInItsColumnAfterALineEnd) {
  EXPECT_EQ(treeOf(plainField("A", "one\ntwo\n") + plainField("B", "\n\nx")),
            std::string(kHead) +
                "  A  string   one\\x0a\n"
                "              two\\x0a\n"
                "  B  string   \\x0a\n"
                "              \\x0a\n"
                "              x\n");
  std::string text = crlf(plainLines(plainPool(plainField("A", "one\ntwo\n\n"))));
  text.replace(text.find("two"), 3, "t\rwo");
  EXPECT_EQ(reportTree(readReport(text), {}), std::string(kHead) +
                                                  "  A  string   one\\x0d\\x0a\n"
                                                  "              t\\x0d\n"
                                                  "              wo\\x0d\\x0a\n"
                                                  "              \\x0d\\x0a\n");
}

TEST(ReportTreeTest, BreaksLongValuesAtTheWidthOfTheWindow) {
  const std::string fields = plainField("A", "0123456789abcdefghijklmnopqrstuvwxyz");
  EXPECT_EQ(treeOf(fields, {.columns = 44}), std::string(kHead) +
                                                 "  A  string   0123456789abcdefghijklmnopqrst\n"
                                                 "              uvwxyz\n");
  EXPECT_EQ(treeOf(fields, {.columns = 50}),
            std::string(kHead) + "  A  string   0123456789abcdefghijklmnopqrstuvwxyz\n");
  // A line has at least twenty characters, and an escape is never split.
  EXPECT_NE(treeOf(fields, {.columns = 1})
                .find("  A  string   0123456789abcdefghij\n"
                      "              klmnopqrstuvwxyz\n"),
            std::string::npos);
  EXPECT_NE(treeOf(plainField("A", "0123456789abcdefgh\x1bz"), {.columns = 34})
                .find("  A  string   0123456789abcdefgh\n              \\x1bz\n"),
            std::string::npos);
}

TEST(ReportTreeTest, ALongNameStandsOutOfItsColumn) {
  const std::string name(60, 'N');
  EXPECT_EQ(treeOf(plainField(name, "x") + plainField("A", "x")),
            std::string(kHead) + "  " + name + "  string   x\n  A" + std::string(41, ' ') +
                "string   x\n");
}

TEST(ReportTreeTest, Colours) {
  EXPECT_EQ(reportTree(
                readReport(plainLines(plainPool(plainField("A", "x") + plainField("B", "(null)")))),
                {.hasColours = true}),
            "\x1b[36mreport\x1b[0m       {R}\n"
            "\x1b[36mmachine\x1b[0m      {M}\n"
            "\x1b[36mcustomer\x1b[0m     Kelvane\n"
            "\x1b[36mapplication\x1b[0m  {A}\n"
            "\x1b[36mversion\x1b[0m      2.1.77\n"
            "\x1b[36mform\x1b[0m         plain XML\n\n"
            "\x1b[1mCUSTOM\x1b[0m  2026-11-21T12:00:00.000UTC\n"
            "  \x1b[36m"
            "A\x1b[0m  \x1b[2mstring\x1b[0m   x\n"
            "  \x1b[36m"
            "B\x1b[0m  \x1b[2mstring\x1b[0m   \x1b[2m(null)\x1b[0m\n");
}

}  // namespace
}  // namespace zt::test
