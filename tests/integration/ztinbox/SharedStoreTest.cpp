// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include "TestPaths.h"
#include "tests/support/Inbox.h"
#include "tests/support/LoopbackClient.h"
#include "tests/support/PostgresServer.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"

// Inboxes whose reports are in one PostgreSQL database.

namespace zt::test {
namespace {

std::string posted(const Inbox& inbox, const SampleReport& report) {
  RawClient client(inbox.port());
  EXPECT_TRUE(client.send(postRequest("/soap", report.text(), "Connection: close\r\n")));
  return client.receiveAll();
}

bool isAccepted(const std::string& response) {
  return response.starts_with("HTTP/1.1 200 ") && response.find(">true<") != std::string::npos;
}

/// Reads the stream of events until `text` comes.
void expectNext(RawClient& events, const std::string& text) {
  std::string received;
  while (received.find(text) == std::string::npos) {
    const std::string more = events.receiveSome();
    ASSERT_NE(more, "") << "no " << text << " in " << received;
    received += more;
  }
}

class SharedStoreTest : public ::testing::Test {
 protected:
  std::vector<std::string> options() const { return {"--store", _server.options()}; }

  PostgresServer _server;
};

TEST_F(SharedStoreTest, EachInboxShowsTheReportsOfAll) {
  const Inbox one(options());
  const Inbox other(options());
  RawClient events(other.port());
  ASSERT_TRUE(
      events.send("GET /api/v1/events HTTP/1.1\r\nHost: " + other.url().substr(7) + "\r\n\r\n"));
  expectNext(events, "retry:");
  EXPECT_TRUE(isAccepted(posted(one, reportWithId("{a}"))));
  expectNext(events, R"("reportId":"{a}")");
  EXPECT_TRUE(isAccepted(posted(other, reportWithId("{a}"))));
  one.waitFor(2);
  for (const Inbox* inbox : {&one, &other}) {
    const auto reports = inbox->reports();
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[0].number, 2U);
    EXPECT_EQ(reports[0].duplicateOf, 1U);
    EXPECT_EQ(inbox->raw(1), reportWithId("{a}").text());
  }
  one.clear();
  expectNext(events, "event: change");
  EXPECT_TRUE(other.reports().empty());
}

TEST_F(SharedStoreTest, NumbersFollowEachOtherWhenAllReceiveAtOnce) {
  constexpr int kClients = 4;
  constexpr int kReports = 25;
  const Inbox inboxes[] = {Inbox(options()), Inbox(options())};
  std::vector<std::thread> clients;
  for (int client = 0; client < kClients; ++client) {
    clients.emplace_back([&inbox = inboxes[client % 2], client] {
      for (int i = 0; i < kReports; ++i) {
        const std::string id = std::to_string(client) + "-" + std::to_string(i);
        EXPECT_TRUE(isAccepted(posted(inbox, reportWithId(id)))) << id;
      }
    });
  }
  for (std::thread& client : clients) client.join();
  std::uint64_t next = kClients * kReports;
  for (const InboxReport& report : inboxes[0].reports()) EXPECT_EQ(report.number, next--);
  EXPECT_EQ(next, 0U);
  inboxes[1].waitFor(kClients * kReports);
}

TEST_F(SharedStoreTest, WhileTheDatabaseIsGoneNothingIsAcceptedAndNothingIsLost) {
  const Inbox inbox(options());
  EXPECT_TRUE(isAccepted(posted(inbox, reportWithId("before"))));
  _server.stop(SIGQUIT);
  const std::string refused = posted(inbox, reportWithId("meanwhile"));
  EXPECT_TRUE(refused.starts_with("HTTP/1.1 503 ")) << refused;
  EXPECT_NE(refused.find("\r\nRetry-After: 1\r\n"), std::string::npos) << refused;
  EXPECT_NE(refused.find("PostgreSQL: "), std::string::npos) << refused;
  auto client = inbox.newClient();
  const auto list = client.get("/api/v1/reports");
  ASSERT_TRUE(list);
  EXPECT_EQ(list->status, 503);

  _server.start();
  EXPECT_TRUE(isAccepted(posted(inbox, reportWithId("after"))));
  const auto reports = inbox.reports();
  ASSERT_EQ(reports.size(), 2U);
  EXPECT_EQ(reports[0].reportId, "after");
  EXPECT_EQ(reports[1].reportId, "before");
}

TEST_F(SharedStoreTest, SaysAtTheStartThatItCannotConnect) {
  _server.stop(SIGINT);
  const ProgramResult result =
      runProgram(paths::kInboxProgram, {"--listen", "127.0.0.1:0", "--store", _server.options()});
  EXPECT_EQ(result.status, 3);
  EXPECT_TRUE(result.errors.starts_with("ztinbox: PostgreSQL: ")) << result.errors;
  _server.start();
}

}  // namespace
}  // namespace zt::test
