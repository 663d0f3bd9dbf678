#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/Subprocess.h"
#include "tests/unit/platform/http/CurlHttpTransportFixture.h"
#include "tests/unit/platform/http/FakeNames.h"

// The names of servers and proxies, and look-ups that take their time.

namespace {

using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using zt::test::FakeNames;
using zt::test::LoopbackServer;
using zt::test::ok;
using zt::test::redirect;
using zt::test::Then;
using Clock = std::chrono::steady_clock;

class CurlHttpTransportNames : public zt::test::CurlHttpTransportFixture {
 protected:
  /// The cache of names outlives a test, so each test has names of its own.
  static std::string urlOf(const LoopbackServer& server, const std::string& name,
                           const std::string& path = "/") {
    return "http://" + name + ":" + std::to_string(server.port()) + path;
  }
};

TEST_F(CurlHttpTransportNames, ANameIsLookedUpOnce) {
  LoopbackServer server([](const std::string&) { return ok("there", Then::Close); });
  FakeNames names{{"once.example", "127.0.0.1"}};
  const std::string url = urlOf(server, "once.example");
  EXPECT_EQ(get(url).body, "there");
  EXPECT_EQ(post(url, "x").body, "there");
  std::thread([&] { EXPECT_EQ(get(url).body, "there"); }).join();
  EXPECT_EQ(names.begun(), 1);
  EXPECT_THAT(server.requests(), testing::Each(HasSubstr("\r\nHost: once.example:")));
}

TEST_F(CurlHttpTransportNames, ANameThatDoesNotExistIsNoServer) {
  FakeNames names{};
  const auto start = Clock::now();
  EXPECT_EQ(get("http://none.example/").status, 0);
  EXPECT_LT(Clock::now() - start, 10s);
  EXPECT_EQ(names.begun(), 1);
}

TEST_F(CurlHttpTransportNames, ARedirectMayGoToAnotherName) {
  LoopbackServer server([](const std::string& request) {
    const std::string port = request.substr(request.find(".example:") + 9, 5);
    return request.starts_with("POST /a ")
               ? redirect("301 Moved Permanently", "http://to.example:" + port + "/b")
               : ok(request.substr(request.size() - 4));
  });
  FakeNames names{{"from.example", "127.0.0.1"}, {"to.example", "127.0.0.1"}};
  EXPECT_EQ(post(urlOf(server, "from.example", "/a"), "body").body, "body");
  EXPECT_EQ(names.begun(), 2);
}

TEST_F(CurlHttpTransportNames, OnlyTheNameOfAProxyIsLookedUp) {
  LoopbackServer proxy({ok("from the proxy")});
  FakeNames names{{"proxy.example", "127.0.0.1"}};
  setenv("http_proxy", urlOf(proxy, "proxy.example").c_str(), 1);
  EXPECT_EQ(get("http://behind.example/").body, "from the proxy");
  EXPECT_EQ(names.begun(), 1);
}

/// A SOCKS 4 proxy for one request, to which it responds itself.
class SocksProxy {
 public:
  std::string url() const { return "socks4://" + _port.host(); }
  /// The address that the client asked for, and its request.
  std::string waitForRequest() {
    _thread.join();
    return _asked;
  }

 private:
  void serve() {
    char bytes[1000];
    zt::FileDescriptor client;
    do {
      client = _port.accept();
      // Version, command, port, address, user name (empty).
    } while (::recv(client.number(), bytes, 9, MSG_WAITALL) != 9);
    for (int i = 4; i < 8; ++i) _asked += std::to_string(bytes[i]) + '.';
    const char granted[8] = {0, 0x5a};
    ::send(client.number(), granted, sizeof(granted), MSG_NOSIGNAL);
    const ssize_t size = ::recv(client.number(), bytes, sizeof(bytes), 0);
    if (size > 0) _asked.append(bytes, static_cast<std::size_t>(size));
    const std::string response = ok("from afar").bytes;
    ::send(client.number(), response.data(), response.size(), MSG_NOSIGNAL);
  }

  const zt::test::LoopbackPort _port{zt::test::LoopbackPort::Listens};
  std::string _asked;
  std::thread _thread{[this] { serve(); }};
};

TEST_F(CurlHttpTransportNames, ASocksProxyMayGetTheAddressOfTheHost) {
  SocksProxy proxy;
  FakeNames names{{"behind-socks.example", "10.1.2.3"}};
  setenv("all_proxy", proxy.url().c_str(), 1);
  EXPECT_EQ(get("http://behind-socks.example/").body, "from afar");
  EXPECT_THAT(proxy.waitForRequest(), testing::StartsWith("10.1.2.3.GET / HTTP/1.1\r\n"));
  EXPECT_EQ(names.begun(), 1);
}

// Each look-up that hung left one more thread of libcurl behind.
TEST_F(CurlHttpTransportNames, WhileALookUpHangsOthersFailAtOnce) {
  LoopbackServer server([](const std::string&) { return ok("there"); });
  FakeNames names{{"hangs.example", "127.0.0.1"}, {"other.example", "127.0.0.1"}};
  names.hold();
  while (names.outstanding() == 0) get(urlOf(server, "hangs.example"), 100ms);

  const auto start = Clock::now();
  for (const char* name : {"hangs.example", "other.example", "other.example"}) {
    EXPECT_EQ(get(urlOf(server, name), 60s).status, 0);
    std::thread([&] { EXPECT_EQ(get(urlOf(server, name), 60s).status, 0); }).join();
  }
  EXPECT_LT(Clock::now() - start, 60s);
  EXPECT_EQ(names.begun(), 1);

  // Addresses are no names.
  EXPECT_EQ(get(server.url("/")).body, "there");
  EXPECT_EQ(get(urlOf(server, "localhost")).body, "there");
  setenv("http_proxy", server.host().c_str(), 1);
  EXPECT_EQ(get(server.url("/")).body, "there");
  setenv("http_proxy", "proxy.example:3128", 1);
  EXPECT_EQ(get(server.url("/")).status, 0);
  unsetenv("http_proxy");
  EXPECT_EQ(names.begun(), 1);

  names.release();
  while (get(urlOf(server, "other.example")).body != "there") std::this_thread::yield();
  EXPECT_EQ(names.begun(), 2);
  EXPECT_EQ(names.mostOutstanding(), 1);
}

TEST_F(CurlHttpTransportNames, ThreadsLookNamesUpOneAfterTheOther) {
  LoopbackServer server([](const std::string&) { return ok("there"); });
  FakeNames names{{"a.example", "127.0.0.1"},
                  {"b.example", "127.0.0.1"},
                  {"c.example", "127.0.0.1"},
                  {"d.example", "127.0.0.1"}};
  names.hold();
  std::atomic<int> there{0};
  std::vector<std::thread> threads;
  for (const char* name : {"a.example", "b.example", "c.example", "d.example"}) {
    threads.emplace_back([&, name] {
      if (get(urlOf(server, name)).body == "there") ++there;
    });
  }
  while (names.outstanding() == 0) std::this_thread::yield();
  names.release();
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(there, 4);
  EXPECT_EQ(names.begun(), 4);
  EXPECT_EQ(names.mostOutstanding(), 1);
}

TEST_F(CurlHttpTransportNames, AForkedProcessDoesNotWaitForALookUpOfItsParent) {
  LoopbackServer server([](const std::string&) { return ok("there"); });
  FakeNames names{{"parent.example", "127.0.0.1"}, {"child.example", "127.0.0.1"}};
  names.hold();
  while (names.outstanding() == 0) get(urlOf(server, "parent.example"), 100ms);
  const int status = zt::test::inForkedProcess([&] {
    names.release();
    return get(urlOf(server, "child.example")).body == "there" ? 0 : 1;
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(names.outstanding(), 1);
}

}  // namespace
