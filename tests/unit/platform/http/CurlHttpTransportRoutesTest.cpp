// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <iterator>
#include <set>
#include <thread>

#include "tests/support/OpenDescriptors.h"
#include "tests/support/Subprocess.h"
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
using zt::test::openNumbers;
using zt::test::redirect;
using zt::test::refusingUrl;
using zt::test::Then;

/// The client's end of a connection to `server`; -1 if there is none.
int connectionTo(const LoopbackServer& server) {
  for (const int number : openNumbers()) {
    sockaddr_in peer{};
    socklen_t length = sizeof(peer);
    if (getpeername(number, reinterpret_cast<sockaddr*>(&peer), &length) != 0) continue;
    if (peer.sin_family == AF_INET && ntohs(peer.sin_port) == server.port()) return number;
  }
  return -1;
}

/// Waits until the client's system knows that the server has closed the connection. (One that was
/// reset has no peer any more.)
void waitForTheEndOf(int connection) {
  pollfd end{connection, POLLRDHUP, 0};
  if (connection >= 0) ::poll(&end, 1, 60'000);
}

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
  waitForTheEndOf(connectionTo(server));
  EXPECT_EQ(post(server.url("/"), "x").body, "2");
  waitForTheEndOf(connectionTo(server));
  EXPECT_EQ(post(server.url("/"), "y").body, "3");
  EXPECT_EQ(server.connections(), 3);
  EXPECT_THAT(server.requests(), SizeIs(3));
}

// libcurl repeated a POST on a new connection when the server read it on a kept one and closed that
// without a response. The server then had the report twice, and the store may have sent it again.
TEST_F(CurlHttpTransportRoutes, SendsAPostOnce) {
  for (const Then end : {Then::Close, Then::Reset}) {
    for (const std::string& body : {std::string(), std::string("body"), std::string(300000, 'x')}) {
      LoopbackServer server({ok("kept"), {"", end}, ok("again"), ok("next")});
      EXPECT_EQ(get(server.url("/")).body, "kept");
      EXPECT_EQ(post(server.url("/"), body).status, 0);
      EXPECT_THAT(server.requests(), SizeIs(2));
      EXPECT_EQ(post(server.url("/"), body).body, "again");
    }
  }
}

TEST_F(CurlHttpTransportRoutes, SendsARedirectedPostOnceToEachServer) {
  LoopbackServer server({redirect("307 Temporary Redirect", "/b"), {"", Then::Close}, ok("again")});
  EXPECT_EQ(post(server.url("/a"), "body").status, 0);
  EXPECT_THAT(server.requests(), ElementsAre(testing::StartsWith("POST /a HTTP/1.1\r\n"),
                                             testing::StartsWith("POST /b HTTP/1.1\r\n")));
}

// A report after a suspend or a change of the network was written to a connection that no longer
// led anywhere: it took the whole time-out and failed.
TEST_F(CurlHttpTransportRoutes, UsesNoConnectionThatWasIdleForSeconds) {
  LoopbackServer server({ok("1"), ok("2")});
  EXPECT_EQ(get(server.url("/")).body, "1");
  std::this_thread::sleep_for(3s);
  EXPECT_EQ(post(server.url("/"), "x").body, "2");
  EXPECT_EQ(server.connections(), 2);
}

// A host closed all descriptors, and the next report was written into the file that it then opened.
TEST_F(CurlHttpTransportRoutes, ForgetsAConnectionThatTheHostHasClosed) {
  LoopbackServer server({ok("1"), ok("2")});
  // Forked, since what is forgotten counts as leaked.
  const int status = zt::test::inForkedProcess([&] {
    const std::set<int> before = openNumbers();
    if (get(server.url("/")).body != "1") return 1;
    const std::set<int> after = openNumbers();
    std::vector<int> numbers;
    std::ranges::set_difference(after, before, std::back_inserter(numbers));
    int pair[2];
    if (numbers.empty() || ::socketpair(AF_UNIX, SOCK_STREAM, 0, pair) != 0) return 2;
    for (const int number : numbers) ::dup2(pair[0], number);

    if (post(server.url("/"), "x").body != "2") return 3;
    _transport.closeConnections();
    char byte = 0;
    if (::recv(pair[1], &byte, 1, MSG_DONTWAIT) != -1 || errno != EAGAIN) return 4;
    for (const int number : numbers) {
      if (::fcntl(number, F_GETFD) == -1) return 5;
    }
    return 0;
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(server.connections(), 2);
}

TEST_F(CurlHttpTransportRoutes, ClosesItsConnectionsOnDemand) {
  LoopbackServer server({ok("1"), ok("2", Then::Close)});
  EXPECT_EQ(get(server.url("/")).body, "1");
  EXPECT_NE(connectionTo(server), -1);
  _transport.closeConnections();
  EXPECT_EQ(connectionTo(server), -1);
  EXPECT_EQ(post(server.url("/"), "x").body, "2");
  EXPECT_EQ(server.connections(), 2);
  _transport.closeConnections();
  _transport.closeConnections();
}

TEST_F(CurlHttpTransportRoutes, LeavesItsConnectionOutOfProgramsThatTheHostStarts) {
  LoopbackServer server({ok("")});
  ASSERT_EQ(get(server.url("/")).status, 200);
  const int connection = connectionTo(server);
  ASSERT_NE(connection, -1);
  EXPECT_EQ(fcntl(connection, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
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

// A POST became a GET for 301, 302 and 303: a report that no server had could count as accepted,
// and none arrived where a server redirects to its new address.
TEST_F(CurlHttpTransportRoutes, RepeatsAPostForEveryRedirect) {
  for (const char* status : {"301 Moved Permanently", "302 Found", "303 See Other",
                             "307 Temporary Redirect", "308 Permanent Redirect"}) {
    LoopbackServer server({redirect(status, "/b"), ok("there")});
    const HttpHeader headers[] = {{"Content-Type", "application/xml"}};
    EXPECT_EQ(post(server.url("/a"), "body", headers).body, "there") << status;
    EXPECT_EQ(server.requests().at(1), "POST /b HTTP/1.1\r\nHost: " + server.host() +
                                           "\r\nAccept: */*\r\nContent-Type: application/xml\r\n"
                                           "Content-Length: 4\r\n\r\nbody")
        << status;
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
  EXPECT_THAT(server.requests(), SizeIs(6));
}

TEST_F(CurlHttpTransportRoutes, FollowsFiveRedirects) {
  std::vector<LoopbackResponse> script(5, redirect("302 Found", "/again"));
  script.push_back(ok("there"));
  LoopbackServer server(std::move(script));
  EXPECT_EQ(post(server.url("/"), "x").body, "there");
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
  EXPECT_EQ(connectionTo(server), -1);
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
