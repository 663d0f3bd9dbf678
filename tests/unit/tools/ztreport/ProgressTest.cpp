// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/support/Inbox.h"
#include "tests/support/Terminal.h"

// What `ztreport resend` shows on standard error while it sends.

namespace {

using testing::MatchesRegex;
using zt::test::describedFlatReport;
using zt::test::Inbox;
using zt::test::ReportProgram;
using zt::test::Terminal;

class ProgressTest : public testing::Test {
 protected:
  /// Saves `count` reports and sends them. Returns what a terminal at standard error shows; `type`
  /// is its TERM, empty for none.
  std::string shown(int count, const std::string& type, int status) {
    const std::string file = program.write("report.json", describedFlatReport());
    for (int i = 0; i < count; ++i) EXPECT_EQ(program.run({"save", file}).status, 0);
    const Terminal terminal;
    if (!type.empty()) program.setVariable("TERM=" + type);
    const auto result = program.run({"resend", "--config-url", inbox.configurationUrl()},
                                    {.errors = terminal.name()});
    EXPECT_EQ(result.status, status);
    return terminal.shown();
  }

  Inbox inbox;
  ReportProgram program;
};

TEST_F(ProgressTest, IsOneLineThatIsErasedAtTheEnd) {
  EXPECT_THAT(shown(2, "xterm", 0), MatchesRegex("\r\033\\[K0 sent, 2 left, 0\\.0 a second"
                                                 "\r\033\\[K1 sent, 1 left, [0-9]+\\.[0-9] a second"
                                                 "\r\033\\[K2 sent, 0 left, [0-9]+\\.[0-9] a second"
                                                 "\r\033\\[K"));
}

TEST_F(ProgressTest, StopsAtTheFirstReportThatIsNotAccepted) {
  inbox.behave(R"({"answer": "accept", "scenario": [{"answer": "accept"}, {"answer": "refuse"}]})");
  EXPECT_THAT(shown(3, "xterm", 1), MatchesRegex("\r\033\\[K0 sent, 3 left, 0\\.0 a second"
                                                 "\r\033\\[K1 sent, 2 left, [0-9]+\\.[0-9] a second"
                                                 "\r\033\\[Kztreport: [^\r\n]+\n"));
  EXPECT_EQ(program.stored().size(), 2U);
}

TEST_F(ProgressTest, IsQuietWithoutReportsAndWhereALineCannotBeRewritten) {
  EXPECT_EQ(shown(1, "", 0), "");
  EXPECT_EQ(shown(1, "dumb", 0), "");
  EXPECT_EQ(shown(0, "xterm", 0), "");
  EXPECT_TRUE(program.stored().empty());

  program.setVariable("TERM=xterm");
  program.run({"save", program.path("report.json")});
  EXPECT_EQ(program.run({"resend", "--config-url", inbox.configurationUrl()}).errors, "");
  EXPECT_TRUE(program.stored().empty());
}

}  // namespace
