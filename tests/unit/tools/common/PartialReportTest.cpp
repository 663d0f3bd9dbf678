// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>

#include "tests/unit/tools/common/ReportText.h"
#include "tests/unit/tools/common/ToldReport.h"
#include "tools/common/ReportReader.h"

// What is read of a report that has a fault.

namespace zt::test {
namespace {

using zt::reader::ParsedReport;
using zt::reader::readReport;

/// A pool with an array in an array, and with two records.
const std::string kDeepPool = plainPool(plainFields(R"(
string A = 1
array OUTER
  array INNER
    integer COUNT = 7
records STEPS
  - string STEP_NAME = Copy
  -
)"));

TEST(PartialReportTest, TellsWhatStandsBeforeAFault) {
  std::string text = plainLines(kDeepPool + plainPool(""));
  const std::string last = "              <Name>STEP_NAME</Name>\n";
  text.insert(text.find(last) + last.size(), "?\n");
  const auto [report, fault] = zt::reader::readReportUpToFault(text);
  ASSERT_TRUE(fault);
  EXPECT_EQ(std::string(fault->what()), "line 35, column 1: expected \"<Value>\" after 14 blanks");
  EXPECT_EQ(told(report),
            "[CUSTOM] [2026-11-21T12:00:00.000UTC]\n"
            "  string [A] [1]\n"
            "  array [OUTER] []\n    array [INNER] []\n      integer [COUNT] [7]\n"
            "  records [STEPS] []\n    record [] []\n");
  EXPECT_FALSE(zt::reader::readReportUpToFault(kDeepPool.substr(0, 0)).fault);
}

TEST(PartialReportTest, WhateverLineCannotBeReadTheRestBeforeItIs) {
  const std::string text = plainLines(kDeepPool + plainPool(plainField("B", "2")));
  const ParsedReport whole = readReport(text);
  std::size_t line = 1;
  for (std::size_t at = 0; at <= text.size(); at = text.find('\n', at) + 1, ++line) {
    std::string broken = text;
    broken.insert(at, "?\n");
    const auto [report, fault] = zt::reader::readReportUpToFault(broken);
    ASSERT_TRUE(fault) << line;
    EXPECT_EQ(fault->place().line, line);
    ASSERT_LE(report.fields.size(), whole.fields.size());
    for (std::size_t i = 0; i < report.fields.size(); ++i) {
      EXPECT_EQ(report.fields[i].name, whole.fields[i].name);
      EXPECT_EQ(report.fields[i].size, std::min(whole.fields[i].size, report.fields.size() - i));
    }
    if (!report.pools.empty()) {
      EXPECT_EQ(report.pools.back().end, report.fields.size());
    }
    if (at == text.size()) break;
  }
  EXPECT_EQ(line, 54U) << "every line of the text, and behind it";
}

}  // namespace
}  // namespace zt::test
