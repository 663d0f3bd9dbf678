// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include "tests/support/LoopbackClient.h"
#include "tests/support/OpenDescriptors.h"
#include "tests/unit/platform/http/CurlHttpTransportFixture.h"

namespace {

using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using zt::HttpHeader;
using zt::HttpResponse;
using zt::test::kLargest;
using zt::test::LoopbackPort;
using zt::test::LoopbackResponse;
using zt::test::LoopbackServer;
using zt::test::ok;
using zt::test::openDescriptors;
using zt::test::RawClient;
using zt::test::Then;
using zt::test::withLength;

class CurlHttpTransport : public zt::test::CurlHttpTransportFixture {};

TEST_F(CurlHttpTransport, SendsTheGivenHeadersAndFewMore) {
  LoopbackServer server({ok("x"), ok("")});
  const HttpHeader headers[] = {{"Content-Type", "text/xml; charset=UTF-8"},
                                {"User-Agent", "Setup/2.1"}};
  const std::string url = server.url("/reporting/kelvane.xml?a=1");
  EXPECT_EQ(_transport.exchange({url, "GET", headers, std::nullopt, 20s}).body, "x");
  EXPECT_EQ(post(server.url("/soap"), "<a>\xC3\xA4</a>", headers).status, 200);
  const std::string sent = " HTTP/1.1\r\nHost: " + server.host() +
                           "\r\nAccept: */*\r\n"
                           "Content-Type: text/xml; charset=UTF-8\r\n"
                           "User-Agent: Setup/2.1\r\n";
  EXPECT_THAT(server.requests(),
              ElementsAre("GET /reporting/kelvane.xml?a=1" + sent + "\r\n",
                          "POST /soap" + sent + "Content-Length: 9\r\n\r\n<a>\xC3\xA4</a>"));
}

TEST_F(CurlHttpTransport, SendsNoHeaderOfItsOwnWithAnEmptyPost) {
  LoopbackServer server({ok(""), ok("")});
  const std::string expected =
      "POST / HTTP/1.1\r\nHost: " + server.host() + "\r\nAccept: */*\r\nContent-Length: 0\r\n\r\n";
  EXPECT_EQ(post(server.url("/"), "").status, 200);
  EXPECT_EQ(_transport.exchange({server.url("/"), "POST", {}, std::nullopt, 20s}).status, 200);
  EXPECT_THAT(server.requests(), ElementsAre(expected, expected));
}

TEST_F(CurlHttpTransport, SendsALargePostAtOnceWithEveryByte) {
  LoopbackServer server({ok("")});
  std::string body(3'000'000, 'x');
  body[1'000'000] = '\0';
  EXPECT_EQ(post(server.url("/"), body).status, 200);
  EXPECT_THAT(server.requests(),
              ElementsAre("POST / HTTP/1.1\r\nHost: " + server.host() +
                          "\r\nAccept: */*\r\nContent-Length: 3000000\r\n\r\n" + body));
}

TEST_F(CurlHttpTransport, SendsAHeaderWithoutValue) {
  LoopbackServer server({ok("")});
  const HttpHeader headers[] = {{"SOAPAction", ""}};
  EXPECT_EQ(post(server.url("/"), "", headers).status, 200);
  EXPECT_THAT(server.requests(),
              ElementsAre("POST / HTTP/1.1\r\nHost: " + server.host() +
                          "\r\nAccept: */*\r\nSOAPAction:\r\nContent-Length: 0\r\n\r\n"));
}

TEST_F(CurlHttpTransport, SendsNothingWithALineEndInAHeader) {
  LoopbackServer server({ok("")});
  for (const HttpHeader& header : {HttpHeader{"A", "1\r\nB: 2"}, HttpHeader{"A\nB", "1"}}) {
    EXPECT_EQ(post(server.url("/"), "", {&header, 1}).status, 0);
  }
  EXPECT_THAT(server.requests(), IsEmpty());
}

TEST_F(CurlHttpTransport, DoesNotSendWhatIsNeitherGetNorPost) {
  LoopbackServer server({ok("")});
  for (const char* method : {"", "get", "PUT", "DELETE"}) {
    EXPECT_EQ(_transport.exchange({server.url("/"), method, {}, std::nullopt, 20s}).status, 0);
  }
  EXPECT_EQ(server.connections(), 0);
}

TEST_F(CurlHttpTransport, HandsStatusAndBodyThrough) {
  struct {
    const char* answer;
    int status;
    const char* body;
  } const rows[] = {
      {"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nab", 200, "ab"},
      {"HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\n\xFF\xC0\x80", 200, "\xFF\xC0\x80"},
      {"HTTP/1.1 204 No Content\r\n\r\n", 204, ""},
      {"HTTP/1.1 304 Not Modified\r\n\r\n", 304, ""},
      {"HTTP/1.1 302 Found\r\nContent-Length: 7\r\n\r\nnowhere", 302, "nowhere"},
      {"HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\ngone", 404, "gone"},
      {"HTTP/1.1 500 Internal Server Error\r\nContent-Length: 5\r\n\r\nFault", 500, "Fault"},
      {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2;x=y\r\nde\r\n0\r\n\r\n",
       200, "abcde"},
      {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1\r\na\r\n0\r\nX-End: 1\r\n\r\n", 200,
       "a"},
      {"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\na", 200, "a"},
      {"HTTP/1.1 200 OK\nContent-Length: 1\n\na", 200, "a"},
      {"HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 1\r\n\r\na", 200, "a"},
      {"HTTP/1.0 200 OK\r\n\r\nup to the end", 200, "up to the end"},
  };
  for (const auto& row : rows) {
    LoopbackServer server({{row.answer, Then::Close}});
    const HttpResponse answer = get(server.url("/"));
    EXPECT_EQ(answer.status, row.status) << row.answer;
    EXPECT_EQ(answer.body, row.body) << row.answer;
  }
}

TEST_F(CurlHttpTransport, TakesWhatIsNoWholeAnswerForNone) {
  const char* const answers[] = {
      "",
      "H",
      "HTTP/1.1 200",
      "HTTP/1.1 200 OK\r\n",
      "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nContent-Le",
      "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\n",
      "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n",
      "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n123456789",
      "HTTP/1.1 100 Continue\r\n\r\n",
      "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\n",
      "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n",
      "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nabc",
      "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n",
      "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\nabc\r\n0\r\n\r\n",
      "HTTP/1.1 200 OK\r\nContent-Length: x\r\n\r\nab",
      "<html>no HTTP at all</html>",
      "SSH-2.0-OpenSSH_9.2\r\n",
  };
  for (const char* bytes : answers) {
    for (const Then then : {Then::Close, Then::Reset}) {
      LoopbackServer server({{bytes, then}});
      const HttpResponse answer = get(server.url("/"));
      EXPECT_EQ(answer.status, 0) << bytes;
      EXPECT_EQ(answer.body, "") << bytes;
      EXPECT_THAT(server.requests(), SizeIs(1)) << bytes;
    }
  }
}

TEST_F(CurlHttpTransport, GivesUpWhenTheTimeIsOver) {
  const LoopbackResponse answers[] = {
      {"", Then::Hang},
      {"HTTP/1.1 200 OK\r\n", Then::Hang},
      {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n12345", Then::Hang},
      {withLength("200 OK", std::string(1000, 'x')), Then::Close, 20ms},
      {"HTTP/1.1 200 OK\r\nX: " + std::string(1000, 'x') + "\r\n\r\n", Then::Close, 20ms},
  };
  for (const LoopbackResponse& raw : answers) {
    LoopbackServer server({raw});
    const auto start = std::chrono::steady_clock::now();
    const HttpResponse answer = get(server.url("/"), 300ms);
    EXPECT_EQ(answer.status, 0) << raw.bytes;
    EXPECT_EQ(answer.body, "") << raw.bytes;
    EXPECT_GE(std::chrono::steady_clock::now() - start, 290ms) << raw.bytes;
    EXPECT_THAT(server.requests(), SizeIs(1)) << raw.bytes;
  }
}

TEST_F(CurlHttpTransport, WorksAgainAfterATimeOut) {
  LoopbackServer server({{"", Then::Hang}, ok("fine")});
  EXPECT_EQ(get(server.url("/"), 100ms).status, 0);
  EXPECT_EQ(get(server.url("/")).body, "fine");
}

// Each attempt to connect that took too long left two descriptors and libcurl's handle behind:
// libcurl 7.88 to 8.1 does not tell when it closes such a socket, so that its number was taken for
// one of the host's.
TEST_F(CurlHttpTransport, AnAttemptToConnectThatTakesTooLongLeavesNothingBehind) {
  const LoopbackPort port(LoopbackPort::Listens);
  ASSERT_EQ(::listen(port.socket(), 0), 0);
  const RawClient theOnlyOneThatMayWait(port.number());
  _transport.closeConnections();
  const auto before = openDescriptors();
  EXPECT_EQ(get(port.url("/"), 100ms).status, 0);
  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(CurlHttpTransport, HasNoAnswerWithoutTime) {
  LoopbackServer server({ok("")});
  EXPECT_EQ(get(server.url("/"), 0ms).status, 0);
  EXPECT_EQ(get(server.url("/"), -1ms).status, 0);
  EXPECT_EQ(server.connections(), 0);
  EXPECT_EQ(get(server.url("/"), std::chrono::milliseconds::max()).status, 200);
}

// The words that accept a report did not count in a longer response, and the report was sent again.
TEST_F(CurlHttpTransport, TakesAnAnswerUpToItsLimit) {
  const std::string largest(kLargest, 'x');
  const std::string chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
  LoopbackServer server({ok(largest),
                         {chunked + "1000000\r\n" + largest + "\r\n0\r\n\r\n"},
                         ok(largest + 'x', Then::Close),
                         {chunked + "1000001\r\n" + largest + "x\r\n0\r\n\r\n", Then::Close},
                         {"HTTP/1.1 200 OK\r\n\r\n" + largest + 'x', Then::Close}});
  for (int i = 0; i < 5; ++i) {
    const HttpResponse answer = get(server.url("/"));
    EXPECT_EQ(answer.status, 200);
    EXPECT_TRUE(answer.body == largest) << answer.body.size();
  }
  EXPECT_THAT(server.requests(), SizeIs(5));
}

TEST_F(CurlHttpTransport, DoesNotWaitForTheRestOfALongerAnswer) {
  LoopbackServer server(
      {{withLength("200 OK", std::string(kLargest + 2, 'x')).substr(0, kLargest + 100),
        Then::Hang}});
  EXPECT_EQ(get(server.url("/")).body.size(), kLargest);
}

TEST_F(CurlHttpTransport, CutsALongerAnswerBetweenCharacters) {
  struct {
    const char* character;
    std::size_t within;  ///< how many of its bytes are within the limit
    std::size_t kept;
  } const rows[] = {
      {"\xc3\xa4", 1, 0},         {"\xc3\xa4", 2, 2},
      {"\xe2\x82\xac", 2, 0},     {"\xe2\x82\xac", 3, 3},
      {"\xf0\x9f\x98\x80", 1, 0}, {"\xf0\x9f\x98\x80", 3, 0},
      {"\xf0\x9f\x98\x80", 4, 4}, {"\xff", 1, 0},
  };
  for (const auto& row : rows) {
    const std::string before(kLargest - row.within, 'x');
    LoopbackServer server({ok(before + row.character + "rest", Then::Close)});
    EXPECT_EQ(get(server.url("/")).body.size(), before.size() + row.kept)
        << testing::PrintToString(row.character) << row.within;
  }
}

TEST_F(CurlHttpTransport, DoesNotTakeHeadersWithoutEnd) {
  std::string headers = "HTTP/1.1 200 OK\r\n";
  while (headers.size() < 1'200'000) headers += "X-More: " + std::string(1000, 'x') + "\r\n";
  LoopbackServer server({{headers + "Content-Length: 0\r\n\r\n", Then::Close}});
  EXPECT_EQ(get(server.url("/")).status, 0);
}

TEST_F(CurlHttpTransport, LoadsTheFirstLibraryThatIsThere) {
  LoopbackServer server({ok("reached")});
  zt::CurlHttpTransport transport({"libzt-none.so.1", "libcurl.so.4"});
  EXPECT_EQ(transport.exchange({server.url("/"), "GET", {}, std::nullopt, 20s}).body, "reached");
  EXPECT_EQ(transport.loadError(), "");
  EXPECT_EQ(_transport.loadError(), "");
}

TEST_F(CurlHttpTransport, FailsEveryRequestWithoutLibcurl) {
  LoopbackServer server({ok("reached")});
  zt::CurlHttpTransport transport({"libzt-none.so.1", "libzt-none.so.2"});
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(transport.exchange({server.url("/"), "GET", {}, std::nullopt, 20s}).status, 0);
  }
  EXPECT_EQ(server.connections(), 0);
  EXPECT_EQ(transport.loadError(),
            "libzt-none.so.1: cannot open shared object file: No such file or directory; "
            "libzt-none.so.2: cannot open shared object file: No such file or directory");
}

TEST_F(CurlHttpTransport, RefusesALibraryThatIsNotLibcurl) {
  zt::CurlHttpTransport transport({"libc.so.6"});
  EXPECT_EQ(transport.exchange({"http://127.0.0.1:1/", "GET", {}, std::nullopt, 20s}).status, 0);
  EXPECT_THAT(transport.loadError(), testing::HasSubstr("undefined symbol: curl_easy_cleanup"));
}

}  // namespace
