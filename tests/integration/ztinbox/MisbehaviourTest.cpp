// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <string>
#include <vector>

#include "tests/support/Inbox.h"
#include "tests/support/LoopbackClient.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"
#include "ztportal/Version.h"

namespace zt::test {
namespace {

using End = RawClient::End;

/// What a client sees of the response to one report.
struct Seen {
  std::string bytes;
  End end = End::kStillOpen;
};

Seen seenBy(const Inbox& inbox, const std::string& request) {
  RawClient client(inbox.port());
  EXPECT_TRUE(client.send(request));
  Seen seen;
  seen.bytes = client.receiveAll();
  seen.end = client.end();
  return seen;
}

Seen seenAfterReport(const Inbox& inbox) {
  return seenBy(inbox, postRequest("/soap", SampleReport().text(), "Connection: close\r\n"));
}

std::string bodyOf(const Seen& seen) { return seen.bytes.substr(seen.bytes.find("\r\n\r\n") + 4); }
std::string statusOf(const Seen& seen) { return seen.bytes.substr(0, seen.bytes.find("\r\n")); }

TEST(MisbehaviourTest, GarbageIsASuccessThatSaysNothing) {
  const Seen seen = seenAfterReport(Inbox({"--answer", "garbage"}));
  EXPECT_EQ(statusOf(seen), "HTTP/1.1 200 OK");
  EXPECT_EQ(bodyOf(seen),
            "<!DOCTYPE html>\n<html><head><title>Welcome</title></head>"
            "<body>Please log in to use this network.</body></html>\n");
  EXPECT_EQ(seen.end, End::kOrderly);
}

TEST(MisbehaviourTest, AnErrorHasTheGivenStatus) {
  Inbox inbox;
  const struct {
    const char* status;
    const char* line;
    const char* body;
  } rows[] = {
      {"503", "HTTP/1.1 503 Service Unavailable", "error 503, on purpose\n"},
      {"404", "HTTP/1.1 404 Not Found", "error 404, on purpose\n"},
      {"302", "HTTP/1.1 302 Found", "error 302, on purpose\n"},
      {"200", "HTTP/1.1 200 OK", "error 200, on purpose\n"},
      {"204", "HTTP/1.1 204 No Content", ""},
      {"304", "HTTP/1.1 304 Not Modified", ""},
  };
  for (const auto& row : rows) {
    inbox.behave(std::string(R"({"answer": "error:)") + row.status + R"("})");
    const Seen seen = seenAfterReport(inbox);
    EXPECT_EQ(statusOf(seen), row.line);
    EXPECT_EQ(bodyOf(seen), row.body) << row.status;
  }
  EXPECT_EQ(inbox.reports()[5].answer, "error 503");
}

TEST(MisbehaviourTest, ADroppedConnectionIsResetWithoutAByte) {
  Inbox inbox({"--answer", "drop"});
  const Seen seen = seenAfterReport(inbox);
  EXPECT_EQ(seen.bytes, "");
  EXPECT_EQ(seen.end, End::kReset);
  EXPECT_EQ(inbox.reports()[0].answer, "dropped");
}

TEST(MisbehaviourTest, ATruncatedAnswerEndsBeforeItSaysAnything) {
  Inbox inbox({"--answer", "truncate"});
  const Seen seen = seenBy(inbox, postRequest("/soap", SampleReport().text()));
  EXPECT_EQ(statusOf(seen), "HTTP/1.1 200 OK");
  EXPECT_NE(seen.bytes.find("\r\nContent-Length: 510\r\n"), std::string::npos) << seen.bytes;
  EXPECT_TRUE(seen.bytes.ends_with("<ns1:postPoolDa")) << seen.bytes;
  EXPECT_EQ(seen.bytes.find("true"), std::string::npos);
  EXPECT_EQ(seen.end, End::kOrderly);
  EXPECT_EQ(inbox.reports()[0].answer, "truncated");
}

TEST(MisbehaviourTest, AHangingReportGetsNoAnswer) {
  Inbox inbox({"--answer", "hang"});
  RawClient client(inbox.port());
  ASSERT_TRUE(client.send(postRequest("/soap", SampleReport().text())));
  inbox.waitFor(1);
  EXPECT_EQ(client.receiveAll(300), "");
  EXPECT_EQ(client.end(), End::kStillOpen);
  client.endSending();
  EXPECT_EQ(client.receiveAll(), "") << "the client gave up";
  EXPECT_EQ(client.end(), End::kOrderly);
  EXPECT_EQ(inbox.reports()[0].answer, "no answer");
}

TEST(MisbehaviourTest, HangingClientsDoNotBlockOthers) {
  constexpr int kClients = 100;
  Inbox inbox({"--answer", "hang"});
  std::vector<std::unique_ptr<RawClient>> hanging;
  for (int i = 0; i < kClients; ++i) {
    hanging.push_back(std::make_unique<RawClient>(inbox.port()));
    ASSERT_TRUE(hanging.back()->send(postRequest("/soap", SampleReport().text())));
  }
  inbox.waitFor(kClients);
  inbox.behave(R"({"answer": "accept"})");
  EXPECT_EQ(statusOf(seenAfterReport(inbox)), "HTTP/1.1 200 OK");
  inbox.process().signal(SIGTERM);
  EXPECT_EQ(inbox.process().wait(), 0);
}

TEST(MisbehaviourTest, ConfigurationAndVersionStayHealthy) {
  for (const char* answer : {"refuse", "garbage", "error:500", "hang", "drop", "truncate"}) {
    const Inbox inbox({"--answer", answer, "--slow", "60000"});
    EXPECT_EQ(bodyOf(seenBy(inbox, postRequest("/soap", kVersionRequest, "Connection: close\r\n"))),
              "<versioninfo>ztinbox " ZTPORTAL_VERSION "</versioninfo>")
        << answer;
    EXPECT_EQ(inbox.newClient().get("/reporting/kelvane.xml").value().status, 200) << answer;
  }
}

TEST(MisbehaviourTest, ASlowAnswerComesLate) {
  const Inbox inbox({"--slow", "200"});
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(statusOf(seenAfterReport(inbox)), "HTTP/1.1 200 OK");
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
}

TEST(MisbehaviourTest, PlaysAScenarioFile) {
  const TemporaryFolder folder;
  const std::string path = folder.write(
      "scenario.json",
      R"([{"answer": "error:503", "times": 2}, {"answer": "drop"}, {"answer": "accept"}])");
  Inbox inbox({"--scenario", path, "--answer", "garbage"});
  std::string seen;
  for (int i = 0; i < 5; ++i) seen += statusOf(seenAfterReport(inbox)) + "\n";
  EXPECT_EQ(seen,
            "HTTP/1.1 503 Service Unavailable\nHTTP/1.1 503 Service Unavailable\n\n"
            "HTTP/1.1 200 OK\nHTTP/1.1 200 OK\n");
}

}  // namespace
}  // namespace zt::test
