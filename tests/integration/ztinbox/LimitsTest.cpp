// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "TestPaths.h"
#include "tests/support/Inbox.h"
#include "tests/support/LoopbackClient.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"

namespace zt::test {
namespace {

constexpr const char* kTooLargeLine = "HTTP/1.1 413 Payload Too Large\r\n";

std::string reportOfSize(std::size_t size) {
  SampleReport report;
  report.value = "";
  report.value = std::string(size - report.text().size(), '\0');
  return report.text();
}

TEST(LimitsTest, RefusesALargerOneWhileTheClientIsStillSending) {
  Inbox inbox;
  const std::string request = postRequest("/soap", reportOfSize(kLargestReport + 1));
  RawClient client(inbox.port());
  client.send(request);
  const std::string answer = client.receiveAll();
  EXPECT_TRUE(answer.starts_with(kTooLargeLine)) << answer;
  EXPECT_TRUE(answer.ends_with("request over 64 MiB\n")) << answer;
  EXPECT_EQ(inbox.reports().size(), 0U);
}

TEST(LimitsTest, AnAnnouncedSizeIsEnoughToBeRefused) {
  const Inbox inbox;
  RawClient client(inbox.port());
  ASSERT_TRUE(
      client.send("POST /soap HTTP/1.1\r\nHost: x\r\nExpect: 100-continue\r\n"
                  "Content-Length: 67108865\r\n\r\n"));
  client.endSending();
  EXPECT_TRUE(client.receiveAll().starts_with(kTooLargeLine));
}

TEST(LimitsTest, RefusesTooManyChunks) {
  Inbox inbox;
  RawClient client(inbox.port());
  const std::string chunk = "100000\r\n" + std::string(0x100000, 'x') + "\r\n";
  bool taken = client.send("POST /soap HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n");
  for (int i = 0; i < 65 && taken; ++i) taken = client.send(chunk);
  EXPECT_TRUE(client.receiveAll().starts_with(kTooLargeLine));
  EXPECT_EQ(inbox.reports().size(), 0U);
}

TEST(LimitsTest, RefusesALengthThatMakesNoSense) {
  const Inbox inbox;
  for (const char* headers : {"Content-Length: -1\r\n", "Content-Length: 5x\r\n",
                              "Content-Length: 99999999999999999999999\r\n",
                              "Content-Length: 5\r\nContent-Length: 6\r\n"}) {
    RawClient client(inbox.port());
    ASSERT_TRUE(client.send(std::string("POST /soap HTTP/1.1\r\nHost: x\r\n") + headers + "\r\n"));
    client.endSending();
    const std::string answer = client.receiveAll();
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 400 Bad Request\r\n")) << answer;
    EXPECT_TRUE(answer.ends_with("bad Content-Length\n")) << answer;
  }
}

TEST(LimitsTest, EndsConnectionsThatSpeakNoHttp) {
  Inbox inbox;
  for (const std::string& bytes :
       {std::string("hello\r\n\r\n"), std::string("\0\1\2\r\n", 5), std::string("GET /\r\n\r\n"),
        "GET /" + std::string(10'000, 'a') + " HTTP/1.1\r\n\r\n"}) {
    RawClient client(inbox.port());
    ASSERT_TRUE(client.send(bytes));
    client.endSending();
    client.receiveAll();
    EXPECT_NE(client.end(), RawClient::End::kStillOpen) << bytes;
  }
  EXPECT_EQ(inbox.reports().size(), 0U) << "it is still there";
}

TEST(LimitsTest, SlowAndIdleClientsDoNotBlockReports) {
  // 512 of them once occupied every thread of the inbox.
  constexpr int kClients = 600;
  const Inbox inbox;
  const std::string events =
      "GET /api/v1/events HTTP/1.1\r\nHost: " + inbox.url().substr(7) + "\r\n\r\n";
  const std::string wait =
      "GET /api/v1/wait HTTP/1.1\r\nHost: " + inbox.url().substr(7) + "\r\n\r\n";
  for (const std::string& sent :
       {std::string(), std::string("POST /soap HT"),
        std::string("POST /soap HTTP/1.1\r\nContent-Length: 9\r\n\r\n<"), events, wait}) {
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < kClients; ++i) {
      clients.push_back(std::make_unique<RawClient>(inbox.port()));
      ASSERT_TRUE(clients.back()->send(sent));
    }
    EXPECT_NE(inbox.post(SampleReport().text()), "") << sent;
  }
}

TEST(LimitsTest, TooManyEventStreamsAreAskedToComeBack) {
  constexpr int kStreams = 128;
  const Inbox inbox;
  const std::string request =
      "GET /api/v1/events HTTP/1.1\r\nHost: " + inbox.url().substr(7) + "\r\n\r\n";
  std::vector<std::unique_ptr<RawClient>> clients;
  for (int i = 0; i <= kStreams; ++i) {
    clients.push_back(std::make_unique<RawClient>(inbox.port()));
    ASSERT_TRUE(clients.back()->send(request));
    const std::string answer = clients.back()->receiveSome();
    if (i < kStreams) {
      ASSERT_TRUE(answer.starts_with("HTTP/1.1 200 OK\r\n")) << i << answer;
    } else {
      EXPECT_TRUE(answer.starts_with("HTTP/1.1 503 Service Unavailable\r\n")) << answer;
      EXPECT_NE(answer.find("\r\nRetry-After: 1\r\n"), std::string::npos) << answer;
      EXPECT_NE(answer.find(R"({"detail":"too many clients are waiting",)"), std::string::npos);
    }
  }
}

TEST(LimitsTest, TheBodiesOfAllClientsAreLimited) {
  // Bodies take memory until they are answered.
  const TemporaryFolder folder;
  const Inbox inbox({"--scenario", folder.write("scenario.json", R"([
    {"answer": "hang", "times": 4}, {"answer": "accept"}])")});
  const std::string large = reportOfSize(kLargestReport - 16'384);
  std::vector<std::unique_ptr<RawClient>> clients;
  for (int i = 0; i < 4; ++i) {  // 256 MiB, except for 64 KiB
    clients.push_back(std::make_unique<RawClient>(inbox.port()));
    ASSERT_TRUE(clients.back()->send(postRequest("/soap", large)));
  }
  inbox.waitFor(4);
  const std::string report = reportOfSize(100'000);
  auto answer = inbox.newClient().post("/soap", report);
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 503);
  EXPECT_EQ(answer->header("Retry-After"), "1");
  clients.clear();
  do {
    answer = inbox.newClient().post("/soap", report);
  } while (answer && answer->status == 503);
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 200);
}

TEST(LimitsTest, WithoutFileDescriptorsTheSlowestClientMakesRoom) {
  // Clients that sent nothing once kept all others out until they left.
  if (paths::kIsSanitized) GTEST_SKIP() << "the sanitizers need descriptors";
  const TemporaryFolder folder;
  Subprocess inbox({"/bin/sh", "-c", "ulimit -n 40; exec \"$0\" \"$@\"", paths::kInboxProgram,
                    "--listen", "127.0.0.1:0", "--data", folder.path()});
  const std::string line = inbox.waitForLines(1);
  const int port = std::stoi(line.substr(line.rfind(':') + 1));
  std::vector<std::unique_ptr<RawClient>> slow;
  for (int i = 0; i < 60; ++i) {
    slow.push_back(std::make_unique<RawClient>(port));
    slow.back()->send("POST /soap HT");
  }
  EXPECT_EQ(HttpClient(port).post("/soap", kVersionRequest).value().status, 200);
  EXPECT_EQ(slow.front()->receiveAll(), "") << "its connection has ended";
}

TEST(LimitsTest, RefusesAHeadThatNeverEnds) {
  const Inbox inbox;
  std::string headers;
  for (int i = 0; i < 300; ++i) headers += "X: " + std::string(1'000, 'x') + "\r\n";
  const struct {
    std::string request;
    const char* status;
    const char* body;
  } rows[] = {{"GET / HTTP/1.1\r\n" + headers, "HTTP/1.1 431 ", "request head over 256 KiB\n"},
              {"GET /" + std::string(300'000, 'a'), "", ""}};
  for (const auto& row : rows) {
    RawClient client(inbox.port());
    ASSERT_TRUE(client.send(row.request));
    const std::string answer = client.receiveAll();
    EXPECT_EQ(client.end(), RawClient::End::kOrderly);
    EXPECT_TRUE(answer.starts_with(row.status)) << answer;
    EXPECT_TRUE(answer.ends_with(row.body)) << answer;
  }
}

}  // namespace
}  // namespace zt::test
