// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "TestPaths.h"
#include "tests/support/Inbox.h"
#include "tests/support/LoopbackClient.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"
#include "ztportal/Version.h"

namespace zt::test {
namespace {

using testing::MatchesRegex;

constexpr const char* kTime = "20[0-9][0-9]-[0-9][0-9]-[0-9][0-9] [0-9][0-9]:[0-9][0-9]:[0-9][0-9]";

using Finished = ProgramResult;

Finished run(const std::vector<std::string>& arguments) {
  return runProgram(paths::kInboxProgram, arguments);
}

/// The lines about reports, each without its time.
std::string linesOf(Inbox& inbox, std::size_t count) {
  std::string output = inbox.process().waitForLines(count + 1);
  EXPECT_EQ(output.substr(0, output.find('\n')), "ztinbox: listening on " + inbox.url());
  output.erase(0, output.find('\n') + 1);
  std::string lines;
  while (!output.empty()) {
    const std::string line = output.substr(0, output.find('\n') + 1);
    EXPECT_THAT(line.substr(0, 19), MatchesRegex(kTime)) << line;
    lines += line.substr(std::min<std::size_t>(line.size(), 19));
    output.erase(0, line.size());
  }
  return lines;
}

TEST(ProgramTest, WritesALineForEachReport) {
  Inbox inbox({"--max", "3"});
  SampleReport first = reportWithId("{A}");
  first.pools = {"EXECUTION", "CUSTOM"};
  inbox.post(first.text());
  const std::string size = std::to_string(first.text().size()) + " bytes";
  for (const char* answer : {"refuse", "garbage", "error:503", "drop", "truncate"}) {
    inbox.behave(std::string(R"({"answer": ")") + answer + "\"}");
    inbox.post(first.text(), answer == std::string("drop") ? "/soap-test" : "/soap");
  }
  const std::string who =
      "  Kelvane  {7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11} 2.1.77  EXECUTION, CUSTOM  " + size;
  EXPECT_EQ(linesOf(inbox, 6), "  #1  accepted" + who + "\n" +                            //
                                   "  #2  refused" + who + "  duplicate of #1\n" +        //
                                   "  #3  garbage" + who + "  duplicate of #1\n" +        //
                                   "  #4  error 503" + who + "  duplicate of #1\n" +      //
                                   "  #5  dropped" + who + "  test  duplicate of #2\n" +  //
                                   "  #6  truncated" + who + "  duplicate of #3\n");
}

TEST(ProgramTest, ReportsThatComeTogetherGetTheirLinesAndAnswersInOneOrder) {
  constexpr int kClients = 8;
  constexpr int kReports = 10;
  Inbox inbox;
  inbox.behave(R"({"scenario": [{"answer": "error:503", "times": 40}, {"answer": "refuse"}]})");
  std::vector<std::thread> clients;
  for (int i = 0; i < kClients; ++i) {
    clients.emplace_back([&inbox] {
      for (int report = 0; report < kReports; ++report) {
        RawClient client(inbox.port());
        EXPECT_TRUE(
            client.send(postRequest("/soap", SampleReport().text(), "Connection: close\r\n")));
        EXPECT_TRUE(client.receiveAll().starts_with("HTTP/1.1 "));
      }
    });
  }
  for (std::thread& client : clients) client.join();
  std::istringstream lines(linesOf(inbox, kClients * kReports));
  std::string line;
  for (int number = 1; number <= kClients * kReports; ++number) {
    ASSERT_TRUE(std::getline(lines, line));
    const std::string answer = number <= 40 ? "error 503" : "refused";
    EXPECT_TRUE(line.starts_with("  #" + std::to_string(number) + "  " + answer + "  ")) << line;
  }
}

TEST(ProgramTest, WritesTheLineOfAHangingReportToo) {
  Inbox inbox({"--answer", "hang"});
  const RawClient client(inbox.port());
  ASSERT_TRUE(client.send(postRequest("/soap", SampleReport().text())));
  EXPECT_EQ(linesOf(inbox, 1).substr(0, 17), "  #1  no answer  ");
}

TEST(ProgramTest, HostileTextsDoNotReachTheTerminal) {
  Inbox inbox;
  SampleReport report;
  report.customerId = "\x1b]0;owned\x07\x1b[2J";
  report.applicationId = std::string("\0\xff\xc2\x9b", 4) + std::string(500, 'i');
  report.applicationVersion = "1\r\n2026-11-21 12:00:00  #9  accepted";
  report.pools = {
      "\xe2\x80\xae"  // NOLINT(misc-misleading-bidirectional): shown by its escape
      "LOOP",
      "\b\b"};
  inbox.post(report.text());
  EXPECT_EQ(linesOf(inbox, 1),
            "  #1  accepted  \\x1b]0;owned\\x07\\x1b[2J  \\x00\\xff\\u{9b}" + std::string(45, 'i') +
                "… 1\\x0d\\x0a2026-11-21 12:00:00  #9  accepted  \\u{202e}LOOP, \\x08\\x08  " +
                std::to_string(report.text().size()) + " bytes\n");
}

TEST(ProgramTest, EndsCleanlyOnSignals) {
  for (const int signal : {SIGINT, SIGTERM}) {
    const TemporaryFolder folder;
    Subprocess child({paths::kInboxProgram, "--listen", "127.0.0.1:0", "--data", folder.path()});
    child.waitForLines(1);
    child.signal(signal);
    EXPECT_EQ(child.wait(), 0) << signal;
    EXPECT_EQ(child.waitForErrors(), "");
  }
}

TEST(ProgramTest, EndsCleanlyWhileClientsHang) {
  Inbox inbox({"--answer", "hang"});
  RawClient hanging(inbox.port());
  ASSERT_TRUE(hanging.send(postRequest("/soap", SampleReport().text())));
  inbox.waitFor(1);
  inbox.behave(R"({"answer": "accept", "slow": 3600000})");
  RawClient slow(inbox.port());
  ASSERT_TRUE(slow.send(postRequest("/soap", SampleReport().text())));
  inbox.waitFor(2);
  RawClient idle(inbox.port());
  RawClient waiting(inbox.port());
  ASSERT_TRUE(waiting.send("GET /api/v1/wait?count=9&timeout=3600 HTTP/1.1\r\nHost: " +
                           inbox.url().substr(7) + "\r\n\r\n"));
  RawClient following(inbox.port());
  ASSERT_TRUE(
      following.send("GET /api/v1/events HTTP/1.1\r\nHost: " + inbox.url().substr(7) + "\r\n\r\n"));
  EXPECT_TRUE(following.receiveSome().starts_with("HTTP/1.1 200 OK\r\n"));
  RawClient unfinished(inbox.port());
  ASSERT_TRUE(unfinished.send("POST /soap HTTP/1.1\r\nContent-Length: 100\r\n\r\nx"));

  inbox.process().signal(SIGTERM);
  EXPECT_EQ(inbox.process().wait(), 0);
  EXPECT_EQ(inbox.process().waitForErrors(), "");
  EXPECT_EQ(hanging.receiveAll(), "");
  EXPECT_EQ(slow.receiveAll(), "");
  following.receiveAll();
  EXPECT_NE(following.end(), RawClient::End::kStillOpen);
}

TEST(ProgramTest, KeepsServingWhenNobodyReadsItsLines) {
  Inbox inbox;
  auto client = inbox.newClient();
  inbox.process().stopReadingOutput();
  const std::string report = SampleReport().text();
  for (int i = 0; i < 1'000; ++i) ASSERT_TRUE(client.post("/soap", report, "text/xml")) << i;
  inbox.process().signal(SIGTERM);
  EXPECT_EQ(inbox.process().wait(), 0);
}

TEST(ProgramTest, RefusesWrongUsage) {
  const Finished result = run({"--listen", "nowhere"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.errors, "ztinbox: --listen must be ADDRESS:PORT, such as 127.0.0.1:8025\n");
  EXPECT_EQ(result.output, "");
}

TEST(ProgramTest, SaysWhenTheMachineFails) {
  const Inbox inbox;
  const TemporaryFolder broken;
  broken.write("reports.db", "This is a letter.");
  const std::string taken = inbox.url().substr(7);
  const struct {
    std::vector<std::string> arguments;
    std::string errors;
  } rows[] = {
      {{"--listen", taken}, "ztinbox: cannot listen on " + taken + ": Address already in use\n"},
      {{"--listen", "192.0.2.1:0"},
       "ztinbox: cannot listen on 192.0.2.1:0: Cannot assign requested address\n"},
      {{"--listen", "127.0.0.1:0", "--data", "/dev/null/data"},
       "ztinbox: cannot create the data folder /dev/null/data: Not a directory\n"},
      {{"--listen", "127.0.0.1:0", "--data", broken.path()},
       "ztinbox: " + broken.path() + "/reports.db: file is not a database\n"},
      {{"--scenario", "/nowhere/s.json"},
       "ztinbox: cannot read /nowhere/s.json: No such file or directory\n"},
  };
  for (const auto& row : rows) {
    const Finished result = run(row.arguments);
    EXPECT_EQ(result.status, 3) << row.errors;
    EXPECT_EQ(result.errors, row.errors);
    EXPECT_EQ(result.output, "");
  }
}

TEST(ProgramTest, PrintsItsHelp) {
  const Finished help = run({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(help.errors, "");
  EXPECT_EQ(
      help.output,
      R"(A reporting server for this machine: receives reports, shows them, and fails on request.
Usage: ztinbox [OPTIONS]

Options:
  -h,--help                   Print this help message and exit
  --version                   Print the version and exit
  --listen ADDRESS:PORT=127.0.0.1:8025
                              Listen at this address; port 0 selects a free port
  --data DIR                  Folder of the stored reports (default: ztinbox in the user's data folder)
  --store URL                 PostgreSQL database for the reports instead, which several inboxes may share: postgresql://USER@HOST/NAME or service=NAME
  --max N                     Keep only the newest N reports (default: 10000; with --store, all)
  --answer WORD=accept        Answer to each report: accept, refuse, garbage, error:STATUS, hang, drop or truncate
  --slow MS=0                 Delay before each answer, in milliseconds
  --fail-rate F=0             Probability that a report gets a random fault, from 0 to 1
  --seed S=0                  Seed of the random faults; the same seed repeats them
  --scenario FILE             JSON list of answers to play in order, such as [{"answer": "error:503", "times": 2}, {"answer": "accept"}]

)");
}

TEST(ProgramTest, PrintsItsVersion) {
  const Finished version = run({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, "ztinbox " ZTPORTAL_VERSION "\n");
}

}  // namespace
}  // namespace zt::test
