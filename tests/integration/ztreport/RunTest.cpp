// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/support/Inbox.h"
#include "tests/support/ScopedEnvironment.h"
#include "tools/common/ReportReader.h"
#include "tools/ztreport/description/DescribedReport.h"

// `ztreport run`, with the inbox as the proxy to the customer's configuration host.

namespace zt::test {
namespace {

using nlohmann::json;

// clang-format off
const std::vector<std::string> kRun{
    "run", "--customer", "Norvantel", "--app-id", "{MINE}", "--start", "setup", "--end", "finish",
    "--fact", "EDITION=Home=Pro", "--fact", "EMPTY=", "--flag", "ICON=yes", "--flag", "MENU=no",
    "--step", "ENTER:Copy: all", "--step", "ERROR:"};
// clang-format on

/// The execution pool of a request as its description, without the dates.
json executionOf(const std::string& request) {
  const zt::Json described = zt::tools::describedReport(zt::reader::readReport(request));
  json pool = json::parse(described.text()).at("pools").at(1);
  for (const char* key : {"timeStamp", "startTime", "endTime"}) pool.erase(key);
  for (json& step : pool.at("steps")) step.erase("timeStamp");
  return pool;
}

const json kExecution = json::parse(R"({
  "kind": "execution", "executionType": "Standard", "startPoint": "setup", "endPoint": "finish",
  "endResultString": "", "endResultCode": "", "endErrorMessageString": "",
  "endErrorMessageCode": "", "cancelled": false, "successfull": true,
  "steps": [
    {"stepName": "Copy: all", "stepType": "ENTER", "stepMessageString": "", "stepMessageCode": ""},
    {"stepName": "", "stepType": "ERROR", "stepMessageString": "", "stepMessageCode": ""}],
  "fields": [
    {"name": "EDITION", "type": "string", "value": "Home=Pro"},
    {"name": "EMPTY", "type": "string", "value": ""},
    {"name": "ICON", "type": "boolean", "value": true},
    {"name": "MENU", "type": "boolean", "value": false}]})");

class RunTest : public testing::Test {
 protected:
  void proxyTo(const Inbox& inbox) { _program.setVariable("http_proxy=" + inbox.url()); }

  ReportProgram _program;

 private:
  // The descriptions of the reports are read in the program's time zone and language.
  ScopedEnvironment _zone{"TZ", "UTC"};
  ScopedEnvironment _locale{"LC_ALL", "C"};
};

TEST_F(RunTest, AWholeRunIsAccepted) {
  Inbox inbox;
  proxyTo(inbox);
  const Finished result = _program.run(kRun);
  EXPECT_EQ(result.errors, "");
  ASSERT_EQ(result.status, 0) << result.output;
  ASSERT_EQ(inbox.reports().size(), 1U);
  const std::string request = inbox.raw(1);
  EXPECT_EQ(result.output, "accepted: " + reportIdOf(request) + "\n");
  EXPECT_EQ(valueOf(request, "<CustomerID"), "Norvantel");
  EXPECT_EQ(valueOf(request, "<ApplicationID"), "{MINE}");
  EXPECT_NE(request.find("Pool=\"COMPUTER_SYSTEM\""), std::string::npos);
  EXPECT_EQ(executionOf(request), kExecution);
  EXPECT_EQ(_program.fileCount(), 0U);
}

TEST_F(RunTest, ARefusedRunIsSavedAndCanBeResent) {
  Inbox inbox({"--answer", "refuse"});
  proxyTo(inbox);
  const Finished result = _program.run(kRun);
  EXPECT_EQ(result.status, 1);
  ASSERT_EQ(_program.stored().size(), 1U);
  const std::string file = _program.storeFolder() + "/" + _program.stored()[0];
  EXPECT_EQ(executionOf(contentOf(file)), kExecution);
  EXPECT_EQ(result.output, "saved: " + file + "\n");

  inbox.behave(R"({"answer": "accept"})");
  EXPECT_EQ(_program.run({"resend", "--customer", "Norvantel"}), done("1 sent, 0 left\n"));
  EXPECT_EQ(_program.fileCount(), 0U);
}

TEST_F(RunTest, WithSaveNothingIsSent) {
  Inbox inbox;
  proxyTo(inbox);
  std::vector<std::string> saved = kRun;
  saved.emplace_back("--save");
  const Finished result = _program.run(saved);
  EXPECT_TRUE(inbox.reports().empty());
  ASSERT_EQ(_program.stored().size(), 1U);
  EXPECT_EQ(result, done(_program.storeFolder() + "/" + _program.stored()[0] + "\n"));
}

TEST_F(RunTest, WithoutAServerItIsSaved) {
  _program.setVariable("http_proxy=http://127.0.0.1:1");
  const Finished result = _program.run({"run", "--customer", "Kelvane"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, testing::StartsWith("ztreport: not accepted: no configuration at "
                                                 "http://config.kelvane.example/reporting/"
                                                 "kelvane.xml: Failed to connect to 127.0.0.1 "));
  EXPECT_EQ(_program.stored().size(), 1U);
}

TEST_F(RunTest, WrongUsageSaysWhatIsWrongAndDoesNothing) {
  const std::string customers =
      "; it is one of Kelvane, Norvantel, Brisalink, cavomedia, Quillnet; see ztreport ";
  const std::string types = ": expected TYPE:NAME, the type one of ENTER, LEAVE, EXIT, INFO, ERROR";
  const std::vector<std::string> kelvane{"run", "--customer", "Kelvane"};
  const std::pair<std::vector<std::string>, std::string> rows[] = {
      {{"--fact", "EDITION"}, "--fact EDITION: expected NAME=VALUE"},
      {{"--fact", "=x"}, "--fact =x: expected NAME=VALUE"},
      {{"--fact", "A=1", "--fact", "A=2"}, "--fact A=2: a second value of this name"},
      {{"--flag", "A=maybe"}, "--flag A=maybe: expected NAME=yes or NAME=no"},
      {{"--step", "Copy"}, "--step Copy" + types},
      {{"--step", "enter:Copy"}, "--step enter:Copy" + types},
  };
  for (const auto& [options, message] : rows) {
    std::vector<std::string> arguments = kelvane;
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(_program.run(arguments), refused(2, message + "; see ztreport run --help"));
  }
  EXPECT_EQ(_program.run({"run"}), refused(2, "--customer is required; see ztreport run --help"));
  EXPECT_EQ(_program.run({"run", "--customer", "kelvane"}),
            refused(2, "--customer: no such customer: \"kelvane\" (did you mean Kelvane?)" +
                           customers + "run --help"));
  EXPECT_EQ(_program.run({"resend", "--customer", ""}),
            refused(2, "--customer: no such customer: \"\"" + customers + "resend --help"));
  EXPECT_EQ(_program.fileCount(), 0U);
}

}  // namespace
}  // namespace zt::test
