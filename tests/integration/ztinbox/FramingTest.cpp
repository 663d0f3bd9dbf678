// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/Inbox.h"
#include "tests/support/LoopbackClient.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"

// Where a request ends: a client, a proxy and the inbox must agree about it. Otherwise a part of a
// body runs as a request of its own.

namespace zt::test {
namespace {

constexpr const char* kBadRequest = "HTTP/1.1 400 Bad Request\r\n";

std::string everythingAfter(const Inbox& inbox, const std::string& bytes) {
  RawClient client(inbox.port());
  EXPECT_TRUE(client.send(bytes));
  client.endSending();
  return client.receiveAll();
}

TEST(FramingTest, NothingRunsAfterABodyWithoutAClearEnd) {
  // Each of these bodies was once given an end, and the bytes after it ran as a request.
  const Inbox inbox;
  const std::string hidden = postRequest("/soap", SampleReport().text());
  const std::string chunked = "Transfer-Encoding: chunked\r\n";
  const std::string five = "hello\r\n0\r\n\r\n";
  const struct {
    const char* what;
    std::string headers;
    std::string body;
  } rows[] = {
      {"negative", chunked, "-1\r\n" + five},
      {"0x", chunked, "0x5\r\n" + five},
      {"plus", chunked, "+5\r\n" + five},
      {"leading blank", chunked, " 5\r\n" + five},
      {"leading tab", chunked, "\t5\r\n" + five},
      {"no size", chunked, "\r\n" + five},
      {"too large for 64 bits", chunked, "10000000000000005\r\n" + five},
      {"size after another chunk", chunked, "1\r\nx\r\n+5\r\n" + five},
      {"line feed alone", chunked, "5\nhello\n0\n\n"},
      {"no end of a chunk", chunked, "5\r\nhelloxx0\r\n\r\n"},
      {"two codings", chunked + chunked, "5\r\n" + five},
      {"unknown coding first", "Transfer-Encoding: x\r\n" + chunked, "5\r\n" + five},
      {"coding and length", chunked + "Content-Length: 5\r\n", "5\r\n" + five},
      {"length and coding", "Content-Length: 5\r\n" + chunked, "5\r\n" + five},
      {"two lengths", "Content-Length: 5\r\nContent-Length: 5\r\n", "hello"},
      {"list of lengths", "Content-Length: 5, 5\r\n", "hello"},
      {"blank before the colon", "Transfer-Encoding : chunked\r\n", "5\r\n" + five},
  };
  for (const auto& row : rows) {
    const std::string answers = everythingAfter(
        inbox, "POST /soap HTTP/1.1\r\nHost: x\r\n" + row.headers + "\r\n" + row.body + hidden);
    const bool isUnknown = row.headers.starts_with("Transfer-Encoding: x");
    EXPECT_TRUE(answers.starts_with(isUnknown ? "HTTP/1.1 501 " : kBadRequest))
        << row.what << ": " << answers;
    EXPECT_NE(answers.find("\r\nConnection: close\r\n"), std::string::npos) << row.what;
    EXPECT_EQ(answers.find("HTTP/1.1", 1), std::string::npos) << row.what << ": " << answers;
  }
  EXPECT_EQ(inbox.reports().size(), 0U);
}

TEST(FramingTest, TrailersAreAcceptedAndIgnored) {
  const Inbox inbox;
  const std::string report = SampleReport().text();
  constexpr const char* kHexDigits = "0123456789abcdef";
  std::string size;
  for (std::size_t left = report.size(); left > 0; left /= 16) {
    size.insert(size.begin(), kHexDigits[left % 16]);
  }
  const std::string answers = everythingAfter(
      inbox, "POST /soap HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n" + size +
                 ";name=value\r\n" + report + "\r\n0\r\nX-Check: 1\r\nX-Other: 2\r\n\r\n" +
                 postRequest("/soap", kVersionRequest));
  EXPECT_NE(answers.find(">true<"), std::string::npos) << answers;
  EXPECT_TRUE(answers.ends_with("</versioninfo>")) << answers;
  EXPECT_EQ(inbox.raw(1), report);
  EXPECT_EQ(inbox.newClient().get("/api/v1/reports/1").value().body.find("X-Check"),
            std::string::npos);
}

TEST(FramingTest, AnEmptyLineBeforeARequestIsIgnored) {
  const Inbox inbox;
  const std::string version = postRequest("/soap", kVersionRequest);
  EXPECT_TRUE(everythingAfter(inbox, version + "\r\n" + version).ends_with("</versioninfo>"));
}

TEST(FramingTest, TheConnectionLastsAsLongAsTheClientAsks) {
  const Inbox inbox;
  const struct {
    const char* line;
    const char* headers;
    std::size_t answers;
  } rows[] = {
      {"GET /nothing HTTP/1.1\r\nHost: x\r\n", "", 2},
      {"GET /nothing HTTP/1.1\r\nHost: x\r\n", "Connection: Close\r\n", 1},
      {"GET /nothing HTTP/1.1\r\nHost: x\r\n", "Connection: x, close\r\n", 1},
      {"GET /nothing HTTP/1.0\r\n", "", 1},
      {"GET /nothing HTTP/1.0\r\n", "Connection: keep-alive\r\n", 2},
  };
  for (const auto& row : rows) {
    const std::string request = std::string(row.line) + row.headers + "\r\n";
    const std::string answers = everythingAfter(inbox, request + request);
    std::size_t count = 0;
    for (std::size_t at = 0; (at = answers.find("HTTP/1.1 404", at)) != std::string::npos; ++at) {
      ++count;
    }
    EXPECT_EQ(count, row.answers) << request;
  }
}

TEST(FramingTest, HeadIsAnsweredWithoutABody) {
  const Inbox inbox;
  const auto get = inbox.newClient().get("/reporting/kelvane.xml").value();
  const std::string answers = everythingAfter(
      inbox, "HEAD /reporting/kelvane.xml HTTP/1.1\r\nHost: " + inbox.url().substr(7) +
                 "\r\nConnection: close\r\n\r\n");
  EXPECT_TRUE(answers.starts_with("HTTP/1.1 200 OK\r\n")) << answers;
  EXPECT_NE(answers.find("\r\nContent-Length: " + std::to_string(get.body.size()) + "\r\n"),
            std::string::npos);
  EXPECT_TRUE(answers.ends_with("\r\n\r\n")) << answers;
}

TEST(FramingTest, AClientThatWaitsForItIsToldToContinue) {
  const Inbox inbox;
  RawClient client(inbox.port());
  ASSERT_TRUE(
      client.send("POST /soap HTTP/1.1\r\nHost: x\r\nExpect: 100-continue\r\n"
                  "Connection: close\r\nContent-Length: " +
                  std::to_string(kVersionRequest.size()) + "\r\n\r\n"));
  EXPECT_EQ(client.receiveSome(), "HTTP/1.1 100 Continue\r\n\r\n");
  ASSERT_TRUE(client.send(kVersionRequest));
  EXPECT_TRUE(client.receiveAll().ends_with("</versioninfo>"));
}

TEST(FramingTest, EveryMethodThatIsNotAllowedComesWithThoseThatAre) {
  // PATCH and PROPFIND were once refused before anybody knew the address.
  const Inbox inbox;
  const struct {
    const char* path;
    const char* allowed;
  } rows[] = {
      {"/", "GET, HEAD"},
      {"/page/app.mjs", "GET, HEAD"},
      {"/reporting/kelvane.xml", "GET, HEAD"},
      {"/soap", "POST"},
      {"/api/v1/reports", "GET, HEAD, DELETE"},
      {"/api/v1/reports/read", "PUT"},
      {"/api/v1/reports/1", "GET, HEAD, DELETE"},
      {"/api/v1/reports/1/raw", "GET, HEAD"},
      {"/api/v1/reports/1/read", "PUT"},
      {"/api/v1/events", "GET, HEAD"},
      {"/api/v1/wait", "GET, HEAD"},
      {"/api/v1/stats", "GET, HEAD"},
      {"/api/v1/behaviour", "GET, HEAD, PUT"},
      {"/api/v1/openapi.json", "GET, HEAD"},
  };
  for (const auto& row : rows) {
    for (const char* method : {"PATCH", "PROPFIND", "OPTIONS", "TRACE", "get"}) {
      const auto answer = inbox.newClient().request(method, row.path).value();
      EXPECT_EQ(answer.status, 405) << method << row.path;
      EXPECT_EQ(answer.header("Allow"), row.allowed) << method << row.path;
    }
  }
}

TEST(FramingTest, ErrorsOfTheApiAreProblemDocuments) {
  const Inbox inbox;
  const std::string own = "Host: " + inbox.url().substr(7) + "\r\n";
  const struct {
    std::string request;
    const char* status;
  } rows[] = {
      {"GET /api HTTP/1.1\r\n" + own + "\r\n", "404"},
      {"GET /api/ HTTP/1.1\r\n" + own + "\r\n", "404"},
      {"PATCH /api/v1/reports HTTP/1.1\r\n" + own + "\r\n", "405"},
      {"PUT /api/v1/behaviour HTTP/1.1\r\n" + own + "Content-Length: x\r\n\r\n", "400"},
      {"PUT /api/v1/behaviour HTTP/1.1\r\n" + own + "Bad header\r\n\r\n", "400"},
      {"PUT /api/v1/behaviour HTTP/1.1\r\n" + own + "Transfer-Encoding: chunked\r\n\r\n-1\r\nx",
       "400"},
      {"PUT /api/v1/behaviour HTTP/1.1\r\n" + own + "Content-Length: 67108865\r\n\r\n", "413"},
      {"GET /api/v1/reports HTTP/1.1\r\nX: " + std::string(300'000, 'a'), "431"},
      {"GET /api/v1/" + std::string(300'000, 'a'), "431"},
  };
  for (const auto& row : rows) {
    const std::string answer = everythingAfter(inbox, row.request);
    EXPECT_TRUE(answer.starts_with(std::string("HTTP/1.1 ") + row.status)) << answer;
    const std::string shown = row.request.substr(0, 99) + "\n" + answer;
    EXPECT_NE(answer.find("\r\nContent-Type: application/problem+json\r\n"), std::string::npos)
        << shown;
    EXPECT_NE(answer.find("\r\n\r\n{\"detail\":\""), std::string::npos) << shown;
  }
}

}  // namespace
}  // namespace zt::test
