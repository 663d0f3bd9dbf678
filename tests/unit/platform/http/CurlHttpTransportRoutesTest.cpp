#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "tests/unit/platform/http/CurlHttpTransportFixture.h"

namespace {

using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;
using testing::ElementsAre;
using testing::SizeIs;
using zt::HttpHeader;
using zt::HttpResponse;
using zt::test::LoopbackResponse;
using zt::test::LoopbackServer;
using zt::test::ok;
using zt::test::redirect;
using zt::test::refusingUrl;
using zt::test::Then;

class CurlHttpTransportRoutes : public zt::test::CurlHttpTransportFixture {};

TEST_F(CurlHttpTransportRoutes, KeepsItsConnectionForTheNextExchange) {
  LoopbackServer server({ok("1"), ok("2"), ok("3")});
  EXPECT_EQ(get(server.url("/a")).body, "1");
  EXPECT_EQ(post(server.url("/b"), "x").body, "2");
  zt::CurlHttpTransport another;
  EXPECT_EQ(another.exchange({server.url("/c"), "GET", {}, std::nullopt, 20s}).body, "3");
  EXPECT_EQ(server.connections(), 1);
}

TEST_F(CurlHttpTransportRoutes, CarriesNothingOverToTheNextExchange) {
  LoopbackServer server(
      {{"HTTP/1.1 200 OK\r\nSet-Cookie: a=b\r\nContent-Length: 0\r\n\r\n"}, ok(""), ok("")});
  const HttpHeader headers[] = {{"X-Once", "1"}};
  EXPECT_EQ(post(server.url("/"), "body", headers).status, 200);
  EXPECT_EQ(get(server.url("/")).status, 200);
  EXPECT_EQ(server.requests().at(1),
            "GET / HTTP/1.1\r\nHost: " + server.host() + "\r\nAccept: */*\r\n\r\n");
}

TEST_F(CurlHttpTransportRoutes, ConnectsAnewWhereTheServerHasClosedTheConnection) {
  LoopbackServer server({ok("1", Then::Close), ok("2", Then::Reset), ok("3")});
  EXPECT_EQ(get(server.url("/")).body, "1");
  EXPECT_EQ(post(server.url("/"), "x").body, "2");
  EXPECT_EQ(post(server.url("/"), "y").body, "3");
  EXPECT_EQ(server.connections(), 3);
  EXPECT_THAT(server.requests(), SizeIs(3));
}

TEST_F(CurlHttpTransportRoutes, LeavesItsConnectionOutOfProgramsThatTheHostStarts) {
  LoopbackServer server({ok("")});
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

TEST_F(CurlHttpTransportRoutes, TakesARedirectedAnswerThatIsCutShortForNone) {
  for (const char* bytes : {"", "HTTP/1.1", "HTTP/1.1 200 OK\r\n", "HTTP/1.1 200 OK\r\nX: y"}) {
    LoopbackServer server(
        {redirect("302 Found", "/there"), {bytes, Then::Close}, {bytes, Then::Close}});
    EXPECT_EQ(get(server.url("/")).status, 0) << bytes;
  }
}

TEST_F(CurlHttpTransportRoutes, CountsAllRedirectsInOneTime) {
  LoopbackServer server([](const std::string&) {
    LoopbackResponse answer = redirect("302 Found", "/again");
    answer.perByte = 3ms;
    return answer;
  });
  EXPECT_EQ(get(server.url("/"), 500ms).status, 0);
  EXPECT_THAT(server.requests(), SizeIs(testing::Lt(11U)));
}

TEST_F(CurlHttpTransportRoutes, FollowsRedirects) {
  LoopbackServer server(
      {redirect("302 Found", "/b"), redirect("301 Moved Permanently", "c?d=e"), ok("there")});
  const HttpResponse answer = get(server.url("/a"));
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.body, "there");
  EXPECT_THAT(server.requests(), ElementsAre(testing::StartsWith("GET /a HTTP/1.1\r\n"),
                                             testing::StartsWith("GET /b HTTP/1.1\r\n"),
                                             testing::StartsWith("GET /c?d=e HTTP/1.1\r\n")));
}

TEST_F(CurlHttpTransportRoutes, MakesAGetOfARedirectedPostAsBrowsersDo) {
  struct {
    const char* status;
    bool staysPost;
  } const rows[] = {{"301 Moved Permanently", false},
                    {"302 Found", false},
                    {"303 See Other", false},
                    {"307 Temporary Redirect", true},
                    {"308 Permanent Redirect", true}};
  for (const auto& row : rows) {
    LoopbackServer server({redirect(row.status, "/b"), ok("there")});
    EXPECT_EQ(post(server.url("/a"), "body").body, "there") << row.status;
    const std::string common = "/b HTTP/1.1\r\nHost: " + server.host() + "\r\nAccept: */*\r\n";
    EXPECT_EQ(server.requests().at(1), row.staysPost
                                           ? "POST " + common + "Content-Length: 4\r\n\r\nbody"
                                           : "GET " + common + "\r\n")
        << row.status;
  }
}

TEST_F(CurlHttpTransportRoutes, FollowsNoRedirectToAnotherScheme) {
  for (const char* location : {"ftp://127.0.0.1/x", "file:///etc/hostname", "FILE:///etc/hostname",
                               "gopher://127.0.0.1/", "ldap://127.0.0.1/", "data:,x"}) {
    LoopbackServer server({redirect("302 Found", location)});
    const HttpResponse answer = get(server.url("/"));
    EXPECT_EQ(answer.status, 0) << location;
    EXPECT_EQ(answer.body, "") << location;
  }
}

TEST_F(CurlHttpTransportRoutes, EndsARedirectLoop) {
  LoopbackServer server([](const std::string&) { return redirect("302 Found", "/again"); });
  EXPECT_EQ(get(server.url("/")).status, 0);
  EXPECT_THAT(server.requests(), SizeIs(11));
}

TEST_F(CurlHttpTransportRoutes, AsksOnlyHttpServers) {
  LoopbackServer server([](const std::string&) { return ok("reached"); });
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
    const HttpResponse answer = get(url);
    EXPECT_EQ(answer.status, 0) << url;
    EXPECT_EQ(answer.body, "") << url;
  }
  EXPECT_EQ(server.connections(), 0);
  EXPECT_EQ(get("HTTP" + server.url("/").substr(4)).body, "reached");
}

TEST_F(CurlHttpTransportRoutes, HasNoAnswerOfAServerWithoutTls) {
  LoopbackServer server({ok("")});
  EXPECT_EQ(get("https://" + server.host() + "/", 2s).status, 0);
}

TEST_F(CurlHttpTransportRoutes, AsksTheProxyOfTheEnvironment) {
  LoopbackServer proxy({ok("from the proxy")});
  setenv("http_proxy", ("http://" + proxy.host()).c_str(), 1);
  EXPECT_EQ(get("http://config.kelvane.example/reporting/kelvane.xml").body, "from the proxy");
  EXPECT_THAT(proxy.requests(),
              ElementsAre("GET http://config.kelvane.example/reporting/kelvane.xml HTTP/1.1\r\n"
                          "Host: config.kelvane.example\r\n"
                          "Accept: */*\r\n"
                          "\r\n"));
}

TEST_F(CurlHttpTransportRoutes, AsksNoProxyForTheHostsThatTheEnvironmentExcepts) {
  LoopbackServer proxy({ok("from the proxy")});
  LoopbackServer server({ok("from the server")});
  setenv("http_proxy", ("http://" + proxy.host()).c_str(), 1);
  setenv("no_proxy", "other.example,127.0.0.1", 1);
  EXPECT_EQ(get(server.url("/")).body, "from the server");
  EXPECT_EQ(proxy.connections(), 0);
  setenv("no_proxy", "other.example", 1);
  EXPECT_EQ(get(server.url("/")).body, "from the proxy");
}

TEST_F(CurlHttpTransportRoutes, ServesThreadsAtOnceWithAConnectionEach) {
  LoopbackServer server(
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

TEST_F(CurlHttpTransportRoutes, ClosesTheConnectionWithItsThread) {
  std::atomic<int> ended{0};
  LoopbackServer server({ok("1"), ok("2")});
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

TEST_F(CurlHttpTransportRoutes, LeavesTheParentsConnectionAloneInAChild) {
  LoopbackServer server({ok("parent"), ok("child"), ok("parent again")});
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
