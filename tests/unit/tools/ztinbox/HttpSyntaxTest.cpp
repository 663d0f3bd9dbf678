// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tools/ztinbox/http/HttpSyntax.h"

namespace zt::inbox {
namespace {

using Step = RequestReader::Step;

constexpr const char* kChunkedPost = "POST /soap HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n";

/// A reader for the bytes of one connection.
class Reading {
 public:
  /// Reads `bytes` up to the end of the next request, or to a refusal.
  Step read(std::string_view bytes) {
    const Step step = reader.read(bytes);
    return step == Step::kHead ? reader.read({}) : step;
  }

 private:
  MemoryBudget _budget{kLargestRequest};
  MemoryBudget::Share _share{_budget};

 public:
  RequestReader reader{_share};
};

TEST(HttpSyntaxTest, ReadsRequestsInAnyPortions) {
  const std::string first =
      "POST http://a.example/so%61p?x=1 HTTP/1.1\r\nHost: a.example\r\nX-Two:  a\r\nx-two: b \r\n"
      "Transfer-Encoding: chunked\r\n\r\n";
  const std::string body = "5\r\nhello\r\n1;a=b\r\n \r\n005\r\nworld\r\n0\r\nHost: other\r\n\r\n";
  const std::string second = "GET / HTTP/1.0\r\n\r\n";
  // The parser once failed when the last chunk of an empty body arrived in portions.
  const std::string third = "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n";
  const std::string bytes = "\r\n" + first + body + second + third + "0\r\n\r\n";
  for (std::size_t size = 1; size <= bytes.size(); ++size) {
    Reading reading;
    std::string seen;
    for (std::size_t at = 0; at < bytes.size(); at += size) {
      Step step = reading.read(std::string_view(bytes).substr(at, size));
      for (; step == Step::kComplete; step = reading.read({})) {
        HttpRequest& request = reading.reader.request();
        seen += request.method + " " + request.path + " " + request.authority + " " + request.body;
        for (const auto& [name, value] : request.headers) seen += "|" + name + "=" + value;
        seen += reading.reader.head() + "\n";
        reading.reader.next();
      }
      ASSERT_EQ(step, Step::kMore) << size;
    }
    EXPECT_EQ(seen,
              "POST /soap a.example hello world|Host=a.example|X-Two=a|x-two=b"
              "|Transfer-Encoding=chunked" +
                  first + "\nGET /  " + second + "\nPOST /  |Transfer-Encoding=chunked" + third +
                  "\n")
        << size;
    EXPECT_FALSE(reading.reader.hasBegun());
  }
}

TEST(HttpSyntaxTest, RefusesWhatCannotBeRead) {
  std::string manyHeaders = "GET / HTTP/1.1\r\n";
  for (int i = 0; i < 1'001; ++i) manyHeaders += "a:\r\n";
  const struct {
    std::string bytes;
    int status;
    const char* reason;
  } rows[] = {
      {"hello\r\n\r\n", 400, "bad request"},
      {"GET /\r\n\r\n", 400, "bad request"},
      {"GET / HTTP/2.0\r\n\r\n", 400, "bad request"},
      {std::string("\0\1\2\r\n", 5), 400, "bad request"},
      {"GET / HTTP/1.1\r\nno colon\r\n\r\n", 400, "bad request"},
      {"POST / HTTP/1.0\r\nTransfer-Encoding: chunked\r\n\r\n", 400, "bad Transfer-Encoding"},
      {"POST / HTTP/1.1\r\nTransfer-Encoding: gzip, chunked\r\n\r\n", 501,
       "transfer encoding not supported"},
      {"POST / HTTP/1.1\r\nTransfer-Encoding: identity\r\n\r\n", 501,
       "transfer encoding not supported"},
      {"POST / HTTP/1.1\r\nContent-Length:\r\n\r\n", 400, "bad Content-Length"},
      {"POST / HTTP/1.1\r\nContent-Length: 67108865\r\n\r\n", 413, "request over 64 MiB"},
      {kChunkedPost + std::string("4000001\r\n"), 413, "request over 64 MiB"},
      {kChunkedPost + std::string("5 5\r\n"), 400, "bad chunk"},
      {kChunkedPost + std::string("5;") + std::string(20'000, 'a'), 400, "bad chunk"},
      {kChunkedPost + std::string("0\r\na: ") + std::string(20'000, 'a'), 400, "bad chunk"},
      {kChunkedPost + std::string("0\r\nContent-Length: 5\r\n\r\n"), 400, "bad Content-Length"},
      {manyHeaders + "\r\n", 431, "over 1000 headers"},
      {"GET / HTTP/1.1\r\na: " + std::string(262'144, 'a'), 431, "request head over 256 KiB"},
      {"GET /" + std::string(262'144, 'a'), 431, "request head over 256 KiB"},
  };
  for (const auto& row : rows) {
    const std::string shown = row.bytes.substr(0, 99);
    // In small portions too: limits are for the sum of them.
    for (const std::size_t size : {row.bytes.size(), std::size_t{1'000}}) {
      Reading reading;
      Step step = Step::kMore;
      for (std::size_t at = 0; at < row.bytes.size() && step == Step::kMore; at += size) {
        step = reading.read(std::string_view(row.bytes).substr(at, size));
      }
      ASSERT_EQ(step, Step::kRefused) << shown;
      EXPECT_EQ(reading.reader.refusal().status, row.status) << shown;
      EXPECT_EQ(reading.reader.refusal().reason, row.reason) << shown;
    }
  }
}

TEST(HttpSyntaxTest, AHeadOfManyShortLinesIsLimitedToo) {
  Reading reading;
  Step step = reading.read("GET /api HTTP/1.1\r\n");
  const std::string line = "a: " + std::string(997, 'a') + "\r\n";
  for (int i = 0; i < 300 && step == Step::kMore; ++i) step = reading.read(line);
  ASSERT_EQ(step, Step::kRefused);
  EXPECT_EQ(reading.reader.refusal().status, 431);
  EXPECT_EQ(reading.reader.path(), "/api");
}

TEST(HttpSyntaxTest, KnowsTheAddressOfARequestThatCannotBeRead) {
  for (const char* bytes : {"GET /api/x HTTP/9.9\r\n\r\n", "GET /api/x HTTP/1.1\r\nbad\r\n\r\n",
                            "GET http://a/%61pi/x?y HTTP/9.9\r\n\r\n"}) {
    Reading reading;
    EXPECT_EQ(reading.read(bytes), Step::kRefused) << bytes;
    EXPECT_EQ(reading.reader.path(), "/api/x") << bytes;
  }
  Reading begun;
  EXPECT_EQ(begun.read("GET /api/x HTTP/1.1\r\nX"), Step::kMore);
  EXPECT_EQ(begun.reader.path(), "/api/x") << "for one that takes too long";
}

TEST(HttpSyntaxTest, WritesHeadsOfResponses) {
  HttpResponse response;
  response.setBody("hello", kTextType);
  response.headers.emplace_back("Allow", "GET");
  const std::string head = responseHead(response, false, "Connection: close\r\n");
  EXPECT_TRUE(head.starts_with("HTTP/1.1 200 OK\r\nContent-Security-Policy: ")) << head;
  EXPECT_TRUE(
      head.ends_with("\r\nAllow: GET\r\nContent-Type: text/plain; charset=utf-8\r\n"
                     "Content-Length: 5\r\nConnection: close\r\n\r\n"))
      << head;
  response.announcedSize = 9;
  EXPECT_NE(responseHead(response, false, "").find("Content-Length: 9\r\n"), std::string::npos);
  response.status = 204;
  EXPECT_EQ(responseHead(response, false, "").find("Content-Length"), std::string::npos);
}

}  // namespace
}  // namespace zt::inbox
