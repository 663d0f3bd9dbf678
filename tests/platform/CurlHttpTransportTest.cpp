#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>

#include "tests/platform/RawHttpServer.h"
#include "ztportal/platform/CurlHttpTransport.h"

namespace {

using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using zt::HttpAnswer;
using zt::HttpHeader;
using zt::HttpRequest;
using zt::test::RawAnswer;
using zt::test::RawHttpServer;
using Then = zt::test::RawAnswer::Then;

constexpr std::size_t kLargest = std::size_t{16} * 1024 * 1024;

/// No proxy of the machine that the tests run on gets in between; a test may name its own.
class CurlHttpTransport : public testing::Test {
 protected:
  CurlHttpTransport() {
    for (const char* name : {"http_proxy", "https_proxy", "all_proxy", "no_proxy", "HTTPS_PROXY",
                             "ALL_PROXY", "NO_PROXY"}) {
      unsetenv(name);
    }
  }

  HttpAnswer get(std::string_view url, std::chrono::milliseconds timeout = 20s) {
    return _transport.exchange({url, "GET", {}, std::nullopt, timeout});
  }
  HttpAnswer post(std::string_view url, std::string_view body,
                  std::span<const HttpHeader> headers = {}) {
    return _transport.exchange({url, "POST", headers, body, 20s});
  }

  zt::CurlHttpTransport _transport;
};

std::string withLength(std::string_view status, std::string_view body) {
  std::string answer = "HTTP/1.1 ";
  answer += status;
  answer += "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n";
  return answer += body;
}
RawAnswer ok(std::string_view body, Then then = Then::Keep) {
  return {withLength("200 OK", body), then};
}
RawAnswer redirect(std::string_view status, const std::string& location) {
  return {"HTTP/1.1 " + std::string(status) + "\r\nLocation: " + location +
          "\r\nContent-Length: 0\r\n\r\n"};
}

/// A loopback port that nobody listens on.
std::string refusingUrl() {
  const RawHttpServer ended(std::vector<RawAnswer>{});
  return ended.url("/");
}

TEST_F(CurlHttpTransport, SendsTheGivenHeadersOfAGetAndFewMore) {
  RawHttpServer server({ok("x")});
  const HttpHeader headers[] = {{"Content-Type", "text/xml; charset=UTF-8"},
                                {"User-Agent", "Setup/2.1"}};
  const std::string url = server.url("/reporting/kelvane.xml?a=1");
  const HttpAnswer answer = _transport.exchange({url, "GET", headers, std::nullopt, 20s});
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.body, "x");
  EXPECT_THAT(server.requests(), ElementsAre("GET /reporting/kelvane.xml?a=1 HTTP/1.1\r\n"
                                             "Host: " +
                                             server.host() +
                                             "\r\n"
                                             "Accept: */*\r\n"
                                             "Content-Type: text/xml; charset=UTF-8\r\n"
                                             "User-Agent: Setup/2.1\r\n"
                                             "\r\n"));
}

TEST_F(CurlHttpTransport, SendsTheGivenHeadersOfAPostAndFewMore) {
  RawHttpServer server({ok("")});
  const HttpHeader headers[] = {{"Content-Type", "text/xml; charset=UTF-8"},
                                {"User-Agent", "Setup/2.1"}};
  const HttpAnswer answer = post(server.url("/soap"), "<a>\xC3\xA4</a>", headers);
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.body, "");
  EXPECT_THAT(server.requests(), ElementsAre("POST /soap HTTP/1.1\r\n"
                                             "Host: " +
                                             server.host() +
                                             "\r\n"
                                             "Accept: */*\r\n"
                                             "Content-Type: text/xml; charset=UTF-8\r\n"
                                             "User-Agent: Setup/2.1\r\n"
                                             "Content-Length: 9\r\n"
                                             "\r\n"
                                             "<a>\xC3\xA4</a>"));
}

TEST_F(CurlHttpTransport, SendsNoHeaderOfItsOwnWithAnEmptyPost) {
  RawHttpServer server({ok(""), ok("")});
  const std::string expected =
      "POST / HTTP/1.1\r\nHost: " + server.host() + "\r\nAccept: */*\r\nContent-Length: 0\r\n\r\n";
  EXPECT_EQ(post(server.url("/"), "").status, 200);
  EXPECT_EQ(_transport.exchange({server.url("/"), "POST", {}, std::nullopt, 20s}).status, 200);
  EXPECT_THAT(server.requests(), ElementsAre(expected, expected));
}

TEST_F(CurlHttpTransport, SendsALargePostAtOnceWithEveryByte) {
  RawHttpServer server({ok("")});
  std::string body(3'000'000, 'x');
  body[1'000'000] = '\0';
  EXPECT_EQ(post(server.url("/"), body).status, 200);
  EXPECT_THAT(server.requests(),
              ElementsAre("POST / HTTP/1.1\r\nHost: " + server.host() +
                          "\r\nAccept: */*\r\nContent-Length: 3000000\r\n\r\n" + body));
}

TEST_F(CurlHttpTransport, SendsAHeaderWithoutValue) {
  RawHttpServer server({ok("")});
  const HttpHeader headers[] = {{"SOAPAction", ""}};
  EXPECT_EQ(post(server.url("/"), "", headers).status, 200);
  EXPECT_THAT(server.requests(),
              ElementsAre("POST / HTTP/1.1\r\nHost: " + server.host() +
                          "\r\nAccept: */*\r\nSOAPAction:\r\nContent-Length: 0\r\n\r\n"));
}

TEST_F(CurlHttpTransport, SendsNothingWithALineEndInAHeader) {
  RawHttpServer server({ok("")});
  for (const HttpHeader& header : {HttpHeader{"A", "1\r\nB: 2"}, HttpHeader{"A\nB", "1"}}) {
    EXPECT_EQ(post(server.url("/"), "", {&header, 1}).status, 0);
  }
  EXPECT_THAT(server.requests(), IsEmpty());
}

TEST_F(CurlHttpTransport, DoesNotSendWhatIsNeitherGetNorPost) {
  RawHttpServer server({ok("")});
  for (const char* method : {"", "get", "PUT", "DELETE"}) {
    EXPECT_EQ(_transport.exchange({server.url("/"), method, {}, std::nullopt, 20s}).status, 0);
  }
  EXPECT_EQ(server.connections(), 0);
}

TEST_F(CurlHttpTransport, KeepsItsConnectionForTheNextExchange) {
  RawHttpServer server({ok("1"), ok("2"), ok("3")});
  EXPECT_EQ(get(server.url("/a")).body, "1");
  EXPECT_EQ(post(server.url("/b"), "x").body, "2");
  zt::CurlHttpTransport another;
  EXPECT_EQ(another.exchange({server.url("/c"), "GET", {}, std::nullopt, 20s}).body, "3");
  EXPECT_EQ(server.connections(), 1);
}

TEST_F(CurlHttpTransport, CarriesNothingOverToTheNextExchange) {
  RawHttpServer server(
      {{"HTTP/1.1 200 OK\r\nSet-Cookie: a=b\r\nContent-Length: 0\r\n\r\n"}, ok(""), ok("")});
  const HttpHeader headers[] = {{"X-Once", "1"}};
  EXPECT_EQ(post(server.url("/"), "body", headers).status, 200);
  EXPECT_EQ(get(server.url("/")).status, 200);
  EXPECT_EQ(server.requests().at(1),
            "GET / HTTP/1.1\r\nHost: " + server.host() + "\r\nAccept: */*\r\n\r\n");
}

TEST_F(CurlHttpTransport, ConnectsAnewWhereTheServerHasClosedTheConnection) {
  RawHttpServer server({ok("1", Then::Close), ok("2", Then::Reset), ok("3")});
  EXPECT_EQ(get(server.url("/")).body, "1");
  EXPECT_EQ(post(server.url("/"), "x").body, "2");
  EXPECT_EQ(post(server.url("/"), "y").body, "3");
  EXPECT_EQ(server.connections(), 3);
  EXPECT_THAT(server.requests(), SizeIs(3));
}

TEST_F(CurlHttpTransport, LeavesItsConnectionOutOfProgramsThatTheHostStarts) {
  RawHttpServer server({ok("")});
  ASSERT_EQ(get(server.url("/")).status, 200);
  int found = 0;
  for (int descriptor = 0; descriptor < 1024; ++descriptor) {
    sockaddr_in peer{};
    socklen_t length = sizeof(peer);
    if (getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &length) != 0) continue;
    if (ntohs(peer.sin_port) != server.port()) continue;
    ++found;
    EXPECT_EQ(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
  }
  EXPECT_EQ(found, 1);
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
    RawHttpServer server({{row.answer, Then::Close}});
    const HttpAnswer answer = get(server.url("/"));
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
      RawHttpServer server({{bytes, then}});
      const HttpAnswer answer = get(server.url("/"));
      EXPECT_EQ(answer.status, 0) << bytes;
      EXPECT_EQ(answer.body, "") << bytes;
      EXPECT_THAT(server.requests(), SizeIs(1)) << bytes;
    }
  }
}

TEST_F(CurlHttpTransport, TakesARedirectedAnswerThatIsCutShortForNone) {
  for (const char* bytes : {"", "HTTP/1.1", "HTTP/1.1 200 OK\r\n", "HTTP/1.1 200 OK\r\nX: y"}) {
    RawHttpServer server(
        {redirect("302 Found", "/there"), {bytes, Then::Close}, {bytes, Then::Close}});
    EXPECT_EQ(get(server.url("/")).status, 0) << bytes;
  }
}

TEST_F(CurlHttpTransport, GivesUpWhenTheTimeIsOver) {
  const RawAnswer answers[] = {
      {"", Then::Hang},
      {"HTTP/1.1 200 OK\r\n", Then::Hang},
      {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n12345", Then::Hang},
      {withLength("200 OK", std::string(1000, 'x')), Then::Close, 20ms},
      {"HTTP/1.1 200 OK\r\nX: " + std::string(1000, 'x') + "\r\n\r\n", Then::Close, 20ms},
  };
  for (const RawAnswer& raw : answers) {
    RawHttpServer server({raw});
    const auto start = std::chrono::steady_clock::now();
    const HttpAnswer answer = get(server.url("/"), 300ms);
    EXPECT_EQ(answer.status, 0) << raw.bytes;
    EXPECT_EQ(answer.body, "") << raw.bytes;
    EXPECT_GE(std::chrono::steady_clock::now() - start, 290ms) << raw.bytes;
    EXPECT_THAT(server.requests(), SizeIs(1)) << raw.bytes;
  }
}

TEST_F(CurlHttpTransport, CountsAllRedirectsInOneTime) {
  RawHttpServer server([](const std::string&) {
    RawAnswer answer = redirect("302 Found", "/again");
    answer.perByte = 3ms;
    return answer;
  });
  EXPECT_EQ(get(server.url("/"), 500ms).status, 0);
  EXPECT_THAT(server.requests(), SizeIs(testing::Lt(11U)));
}

TEST_F(CurlHttpTransport, WorksAgainAfterATimeOut) {
  RawHttpServer server({{"", Then::Hang}, ok("fine")});
  EXPECT_EQ(get(server.url("/"), 100ms).status, 0);
  EXPECT_EQ(get(server.url("/")).body, "fine");
}

TEST_F(CurlHttpTransport, HasNoAnswerWithoutTime) {
  RawHttpServer server({ok("")});
  EXPECT_EQ(get(server.url("/"), 0ms).status, 0);
  EXPECT_EQ(get(server.url("/"), -1ms).status, 0);
  EXPECT_EQ(server.connections(), 0);
  EXPECT_EQ(get(server.url("/"), std::chrono::milliseconds::max()).status, 200);
}

TEST_F(CurlHttpTransport, TakesAnAnswerUpToItsLimit) {
  const std::string largest(kLargest, 'x');
  const std::string chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
  RawHttpServer server({ok(largest),
                        {chunked + "1000000\r\n" + largest + "\r\n0\r\n\r\n"},
                        ok(largest + 'x', Then::Close),
                        {chunked + "1000001\r\n" + largest + "x\r\n0\r\n\r\n", Then::Close},
                        {"HTTP/1.1 200 OK\r\n\r\n" + largest + 'x', Then::Close}});
  EXPECT_TRUE(get(server.url("/")).body == largest);
  EXPECT_TRUE(get(server.url("/")).body == largest);
  for (int i = 0; i < 3; ++i) {
    const HttpAnswer answer = get(server.url("/"));
    EXPECT_EQ(answer.status, 0);
    EXPECT_EQ(answer.body.size(), 0U);
  }
  EXPECT_THAT(server.requests(), SizeIs(5));
}

TEST_F(CurlHttpTransport, DoesNotTakeHeadersWithoutEnd) {
  std::string headers = "HTTP/1.1 200 OK\r\n";
  while (headers.size() < 1'200'000) headers += "X-More: " + std::string(1000, 'x') + "\r\n";
  RawHttpServer server({{headers + "Content-Length: 0\r\n\r\n", Then::Close}});
  EXPECT_EQ(get(server.url("/")).status, 0);
}

TEST_F(CurlHttpTransport, FollowsRedirects) {
  RawHttpServer server(
      {redirect("302 Found", "/b"), redirect("301 Moved Permanently", "c?d=e"), ok("there")});
  const HttpAnswer answer = get(server.url("/a"));
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.body, "there");
  EXPECT_THAT(server.requests(), ElementsAre(testing::StartsWith("GET /a HTTP/1.1\r\n"),
                                             testing::StartsWith("GET /b HTTP/1.1\r\n"),
                                             testing::StartsWith("GET /c?d=e HTTP/1.1\r\n")));
}

TEST_F(CurlHttpTransport, MakesAGetOfARedirectedPostAsBrowsersDo) {
  struct {
    const char* status;
    bool staysPost;
  } const rows[] = {{"301 Moved Permanently", false},
                    {"302 Found", false},
                    {"303 See Other", false},
                    {"307 Temporary Redirect", true},
                    {"308 Permanent Redirect", true}};
  for (const auto& row : rows) {
    RawHttpServer server({redirect(row.status, "/b"), ok("there")});
    EXPECT_EQ(post(server.url("/a"), "body").body, "there") << row.status;
    const std::string common = "/b HTTP/1.1\r\nHost: " + server.host() + "\r\nAccept: */*\r\n";
    EXPECT_EQ(server.requests().at(1), row.staysPost
                                           ? "POST " + common + "Content-Length: 4\r\n\r\nbody"
                                           : "GET " + common + "\r\n")
        << row.status;
  }
}

TEST_F(CurlHttpTransport, FollowsNoRedirectToAnotherScheme) {
  for (const char* location : {"ftp://127.0.0.1/x", "file:///etc/hostname", "FILE:///etc/hostname",
                               "gopher://127.0.0.1/", "ldap://127.0.0.1/", "data:,x"}) {
    RawHttpServer server({redirect("302 Found", location)});
    const HttpAnswer answer = get(server.url("/"));
    EXPECT_EQ(answer.status, 0) << location;
    EXPECT_EQ(answer.body, "") << location;
  }
}

TEST_F(CurlHttpTransport, EndsARedirectLoop) {
  RawHttpServer server([](const std::string&) { return redirect("302 Found", "/again"); });
  EXPECT_EQ(get(server.url("/")).status, 0);
  EXPECT_THAT(server.requests(), SizeIs(11));
}

TEST_F(CurlHttpTransport, AsksOnlyHttpServers) {
  RawHttpServer server([](const std::string&) { return ok("reached"); });
  const std::string urls[] = {"",
                              "/",
                              server.host(),
                              server.host() + "/",
                              "//" + server.host() + "/",
                              "localhost:" + std::to_string(server.port()),
                              "file:///etc/hostname",
                              "ftp://" + server.host() + "/",
                              "gopher://" + server.host() + "/",
                              "http://",
                              "http://127.0.0.1:99999/",
                              "http://host name/",
                              server.url("/") + '\0' + "x",
                              refusingUrl()};
  for (const std::string& url : urls) {
    const HttpAnswer answer = get(url);
    EXPECT_EQ(answer.status, 0) << url;
    EXPECT_EQ(answer.body, "") << url;
  }
  EXPECT_EQ(server.connections(), 0);
  EXPECT_EQ(get("HTTP" + server.url("/").substr(4)).body, "reached");
}

TEST_F(CurlHttpTransport, HasNoAnswerOfAServerWithoutTls) {
  RawHttpServer server({ok("")});
  EXPECT_EQ(get("https://" + server.host() + "/", 2s).status, 0);
}

TEST_F(CurlHttpTransport, AsksTheProxyOfTheEnvironment) {
  RawHttpServer proxy({ok("from the proxy")});
  setenv("http_proxy", ("http://" + proxy.host()).c_str(), 1);
  EXPECT_EQ(get("http://config.kelvane.example/reporting/kelvane.xml").body, "from the proxy");
  EXPECT_THAT(proxy.requests(),
              ElementsAre("GET http://config.kelvane.example/reporting/kelvane.xml HTTP/1.1\r\n"
                          "Host: config.kelvane.example\r\n"
                          "Accept: */*\r\n"
                          "\r\n"));
}

TEST_F(CurlHttpTransport, AsksNoProxyForTheHostsThatTheEnvironmentExcepts) {
  RawHttpServer proxy({ok("from the proxy")});
  RawHttpServer server({ok("from the server")});
  setenv("http_proxy", ("http://" + proxy.host()).c_str(), 1);
  setenv("no_proxy", "other.example,127.0.0.1", 1);
  EXPECT_EQ(get(server.url("/")).body, "from the server");
  EXPECT_EQ(proxy.connections(), 0);
  setenv("no_proxy", "other.example", 1);
  EXPECT_EQ(get(server.url("/")).body, "from the proxy");
}

TEST_F(CurlHttpTransport, ServesThreadsAtOnceWithAConnectionEach) {
  RawHttpServer server(
      [](const std::string& request) { return ok(request.substr(request.find("\r\n\r\n") + 4)); });
  constexpr int kThreads = 4;
  constexpr int kExchanges = 25;
  std::atomic<int> right{0};
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      for (int i = 0; i < kExchanges; ++i) {
        const std::string body = std::to_string(thread) + '.' + std::to_string(i);
        if (post(server.url("/"), body).body == body) ++right;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(right, kThreads * kExchanges);
  EXPECT_EQ(server.connections(), kThreads);
}

TEST_F(CurlHttpTransport, ClosesTheConnectionWithItsThread) {
  std::atomic<int> ended{0};
  RawHttpServer server({ok("1"), ok("2")});
  for (int i = 0; i < 2; ++i) {
    std::thread([&] { ended += get(server.url("/")).status; }).join();
  }
  EXPECT_EQ(ended, 400);
  EXPECT_EQ(server.connections(), 2);
  for (int descriptor = 0; descriptor < 1024; ++descriptor) {
    sockaddr_in peer{};
    socklen_t length = sizeof(peer);
    if (getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &length) != 0) continue;
    EXPECT_NE(ntohs(peer.sin_port), server.port());
  }
}

TEST_F(CurlHttpTransport, LeavesTheParentsConnectionAloneInAChild) {
  RawHttpServer server({ok("parent"), ok("child"), ok("parent again")});
  ASSERT_EQ(get(server.url("/1")).body, "parent");

  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) _exit(get(server.url("/2")).body == "child" ? 0 : 1);
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(server.connections(), 2);

  EXPECT_EQ(get(server.url("/3")).body, "parent again");
  EXPECT_EQ(server.connections(), 2);
}

}  // namespace
