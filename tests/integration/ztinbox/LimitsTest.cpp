// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "tests/support/Inbox.h"
#include "tests/support/LoopbackClient.h"
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
  for (const char* size : {"67108865", "99999999999999999999999"}) {
    RawClient client(inbox.port());
    ASSERT_TRUE(client.send(std::string("POST /soap HTTP/1.1\r\nHost: x\r\nExpect: 100-continue\r\n"
                                        "Content-Length: ") +
                            size + "\r\n\r\n"));
    client.endSending();
    EXPECT_TRUE(client.receiveAll().starts_with(kTooLargeLine)) << size;
  }
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

TEST(LimitsTest, RefusesAHeadThatNeverEnds) {
  const Inbox inbox;
  std::string headers;
  for (int i = 0; i < 30'000; ++i) headers += "X: xxxxxx\r\n";
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
