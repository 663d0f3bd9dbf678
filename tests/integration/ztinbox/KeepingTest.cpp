// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <mutex>
#include <nlohmann/json.hpp>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "TestPaths.h"
#include "tests/support/Inbox.h"
#include "tests/support/LoopbackClient.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"
#include "tools/ztinbox/store/sqlite/Database.h"

// What is kept of the reports, whatever happens to the program.

namespace zt::test {
namespace {

using nlohmann::json;

bool isAccepted(const std::string& answer) { return answer.find(">true<") != std::string::npos; }

std::string postedTo(int port, const std::string& report) {
  RawClient client(port);
  if (!client.send(postRequest("/soap", report, "Connection: close\r\n"))) return "";
  return client.receiveAll();
}

/// Text that compression does not shrink.
std::string randomText(std::size_t size) {
  std::mt19937 random(7);
  std::string text;
  text.reserve(size);
  while (text.size() < size) text += static_cast<char>('0' + random() % 75);
  return text;
}

json getJson(const Inbox& inbox, const std::string& path) {
  auto client = inbox.newClient();
  const auto answer = client.get(path);
  return answer ? json::parse(answer->body) : json();
}

/// Posts from several clients at once until the inbox is gone; collects what was accepted.
class Posting {
 public:
  explicit Posting(int port, int round) {
    for (int client = 0; client < 8; ++client) {
      _threads.emplace_back([this, port, round, client] {
        for (int i = 0; !_over; ++i) {
          SampleReport report;
          report.reportId = "{" + std::to_string(round) + "-" + std::to_string(client) + "-" +
                            std::to_string(i) + "}";
          report.value = "word" + std::to_string(i) + std::string(2'000, ' ');
          try {
            if (!isAccepted(postedTo(port, report.text()))) continue;
          } catch (const std::runtime_error&) {
            return;  // nobody listens any more
          }
          const std::lock_guard lock(_mutex);
          _accepted.push_back(report);
        }
      });
    }
  }

  std::vector<SampleReport> end() {
    _over = true;
    for (std::thread& thread : _threads) thread.join();
    return std::move(_accepted);
  }
  std::size_t count() {
    const std::lock_guard lock(_mutex);
    return _accepted.size();
  }

 private:
  std::mutex _mutex;
  std::vector<SampleReport> _accepted;
  std::atomic<bool> _over = false;
  std::vector<std::thread> _threads;
};

TEST(KeepingTest, NoAcceptedReportIsLostWhenTheProgramIsKilled) {
  const TemporaryFolder folder;
  std::vector<SampleReport> accepted;
  for (int round = 0; round < 3; ++round) {
    Inbox inbox({"--data", folder.path(), "--max", "100000"});
    Posting posting(inbox.port(), round);
    while (posting.count() < 40) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    inbox.process().signal(SIGKILL);
    EXPECT_EQ(inbox.process().wait(), 128 + SIGKILL);
    for (const SampleReport& report : posting.end()) accepted.push_back(report);
  }
  ASSERT_GE(accepted.size(), 120U);

  Inbox inbox({"--data", folder.path(), "--max", "100000"});
  std::map<std::string, std::uint64_t> numbers;
  std::uint64_t last = 0;
  for (const auto& report : inbox.reports()) {
    EXPECT_TRUE(numbers.emplace(report.reportId, report.number).second) << "kept twice";
    last = std::max(last, report.number);
  }
  for (const SampleReport& report : accepted) {
    ASSERT_TRUE(numbers.contains(report.reportId)) << report.reportId;
    EXPECT_EQ(inbox.raw(numbers[report.reportId]), report.text());
  }
  EXPECT_EQ(last, numbers.size()) << "numbers go on where they were";
  for (const SampleReport& report : {accepted.front(), accepted.back()}) {
    const std::string word = report.value.substr(0, report.value.find(' '));
    const json found = getJson(inbox, "/api/v1/reports?limit=1000&text=%22" + word + "%22");
    const bool isFound = std::ranges::any_of(
        found, [&](const json& one) { return one["reportId"] == report.reportId; });
    EXPECT_TRUE(isFound) << word << ": the index is brought up to date after a kill";
  }
}

TEST(KeepingTest, WhatCannotBeKeptIsNotAccepted) {
  const TemporaryFolder folder;
  // Files of more than 2 MiB cannot be written.
  Subprocess child({"/bin/sh", "-c",
                    "trap '' XFSZ; ulimit -f 4096; exec \"$0\" --listen 127.0.0.1:0 "
                    "--data \"$1\"",
                    paths::kInboxProgram, folder.path()});
  const std::string line = child.waitForLines(1);
  const int port = std::stoi(line.substr(line.rfind(':') + 1));
  SampleReport large;
  large.value = randomText(8'000'000);
  EXPECT_TRUE(isAccepted(postedTo(port, SampleReport().text())));
  const std::string answer = postedTo(port, large.text());
  EXPECT_TRUE(answer.starts_with("HTTP/1.1 503 ")) << answer;
  EXPECT_NE(answer.find(folder.path() + "/reports.db: disk I/O error"), std::string::npos)
      << answer;
  EXPECT_TRUE(isAccepted(postedTo(port, SampleReport().text()))) << "others are not affected";
  const std::string lines = child.waitForLines(4);
  EXPECT_NE(lines.find("\nztinbox: " + folder.path() + "/reports.db: disk I/O error\n"),
            std::string::npos)
      << lines;
  EXPECT_NE(lines.find("  #2  accepted"), std::string::npos) << lines;
}

// An exception of the database left the stream of events, which ended the process.
TEST(KeepingTest, ALockedDatabaseEndsNoEventStreamWithTheProcess) {
  const TemporaryFolder folder;
  Inbox inbox({"--data", folder.path()});
  RawClient events(inbox.port());
  ASSERT_TRUE(
      events.send("GET /api/v1/events HTTP/1.1\r\nHost: " + inbox.url().substr(7) + "\r\n\r\n"));
  EXPECT_TRUE(events.receiveSome().starts_with("HTTP/1.1 200 "));
  {
    inbox::Database other(folder.path("reports.db"), inbox::Database::Access::kWrite);
    other.run("BEGIN IMMEDIATE");
    const std::string answer = postedTo(inbox.port(), SampleReport().text());
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 503 ")) << answer;
    EXPECT_NE(answer.find("\r\nRetry-After: 1\r\n"), std::string::npos) << answer;
  }
  EXPECT_TRUE(isAccepted(postedTo(inbox.port(), SampleReport().text())));
  EXPECT_EQ(inbox.reports().size(), 1U);
}

TEST(KeepingTest, TheFilesAreTheOwnersAlone) {
  const TemporaryFolder folder;
  const Inbox inbox({"--data", folder.path("data")});
  EXPECT_TRUE(isAccepted(postedTo(inbox.port(), SampleReport().text())));
  namespace fs = std::filesystem;
  constexpr auto kOthers = fs::perms::group_all | fs::perms::others_all;
  EXPECT_EQ(fs::status(folder.path("data")).permissions() & kOthers, fs::perms::none);
  int files = 0;
  for (const auto& file : fs::directory_iterator(folder.path("data"))) {
    EXPECT_EQ(file.status().permissions() & kOthers, fs::perms::none) << file.path();
    ++files;
  }
  EXPECT_GE(files, 2);
}

TEST(KeepingTest, TheUsersDataFolderIsTheDefault) {
  const TemporaryFolder folder;
  const struct {
    std::vector<std::string> environment;
    std::string data;
  } rows[] = {
      {{"XDG_DATA_HOME=" + folder.path("xdg"), "HOME=/nowhere"}, folder.path("xdg/ztinbox")},
      {{"HOME=" + folder.path("home")}, folder.path("home/.local/share/ztinbox")},
      {{"XDG_DATA_HOME=relative", "HOME=" + folder.path("x") + "/"},
       folder.path("x/.local/share/ztinbox")},
  };
  for (const auto& row : rows) {
    Subprocess child({paths::kInboxProgram, "--listen", "127.0.0.1:0"},
                     {.environment = row.environment});
    child.waitForLines(1);
    EXPECT_TRUE(std::filesystem::exists(row.data + "/reports.db")) << row.data;
  }
  Subprocess homeless({paths::kInboxProgram, "--listen", "127.0.0.1:0"},
                      {.environment = std::vector<std::string>{}});
  EXPECT_EQ(homeless.wait(), 3);
  EXPECT_EQ(homeless.waitForErrors(),
            "ztinbox: no home folder to keep reports in; choose a folder with --data\n");
}

}  // namespace
}  // namespace zt::test
