#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestPaths.h"
#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/support/Inbox.h"
#include "tests/support/Subprocess.h"

// What `ztreport resend` shows on standard error while it sends.

namespace {

using zt::test::describedFlatReport;
using zt::test::Inbox;
using zt::test::ProgramResult;
using zt::test::ReportProgram;

class ProgressTest : public testing::Test {
 protected:
  void save(int count) const {
    const std::string file = program.write("report.json", describedFlatReport());
    for (int i = 0; i < count; ++i) ASSERT_EQ(program.run({"save", file}).status, 0);
  }
  ProgramResult resend(const Inbox& inbox, const std::string& terminal) const {
    auto environment = program.environment();
    if (!terminal.empty()) environment.push_back("TERM=" + terminal);
    return zt::test::runProgram(
        zt::test::paths::kReportProgram, {"resend", "--config-url", inbox.configurationUrl()},
        {.environment = environment, .output = "/dev/null", .errorsToTerminal = true});
  }

  ReportProgram program;
};

TEST_F(ProgressTest, IsOneLineThatIsGoneAtTheEnd) {
  save(2);
  const Inbox inbox;
  const ProgramResult result = resend(inbox, "xterm");
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.errors,
              testing::MatchesRegex("\r\033\\[K0 sent, 2 left, 0\\.0 a second"
                                    "\r\033\\[K1 sent, 1 left, [0-9]+\\.[0-9] a second"
                                    "\r\033\\[K2 sent, 0 left, [0-9]+\\.[0-9] a second"
                                    "\r\033\\[K"));
}

TEST_F(ProgressTest, StopsWithTheFirstReportThatIsNotAccepted) {
  save(3);
  Inbox inbox;
  inbox.behave(R"({"answer": "accept", "scenario": [{"answer": "accept"}, {"answer": "refuse"}]})");
  const ProgramResult result = resend(inbox, "xterm");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors,
              testing::MatchesRegex("\r\033\\[K0 sent, 3 left, 0\\.0 a second"
                                    "\r\033\\[K1 sent, 2 left, [0-9]+\\.[0-9] a second"
                                    "\r\033\\[K"));
  EXPECT_EQ(program.stored().size(), 2U);
}

TEST_F(ProgressTest, IsQuietWithoutReports) {
  const Inbox inbox;
  EXPECT_EQ(resend(inbox, "xterm").errors, "");
}

TEST_F(ProgressTest, IsQuietOnATerminalThatCannotGoBack) {
  const Inbox inbox;
  for (const char* terminal : {"dumb", ""}) {
    save(1);
    const ProgramResult result = resend(inbox, terminal);
    EXPECT_EQ(result.errors, "") << terminal;
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(program.stored().empty());
  }
}

TEST_F(ProgressTest, IsQuietInAPipe) {
  save(1);
  const Inbox inbox;
  program.setVariable("TERM=xterm");
  const auto result = program.run({"resend", "--config-url", inbox.configurationUrl()});
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output, "1 sent, 0 left\n");
}

}  // namespace
