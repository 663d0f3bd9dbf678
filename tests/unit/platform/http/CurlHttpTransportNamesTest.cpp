// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <iterator>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/OpenDescriptors.h"
#include "tests/support/Subprocess.h"
#include "tests/unit/platform/http/CurlHttpTransportFixture.h"
#include "tests/unit/platform/http/FakeNames.h"
#include "ztportal/base/DescriptorIdentity.h"
#include "ztportal/base/FileDescriptor.h"

// The names of servers and proxies, and look-ups that take their time.

namespace {

using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using zt::test::FakeNames;
using zt::test::LoopbackResponse;
using zt::test::LoopbackServer;
using zt::test::ok;
using zt::test::openNumbers;
using zt::test::redirect;
using zt::test::Then;
using Clock = std::chrono::steady_clock;

class CurlHttpTransportNames : public zt::test::CurlHttpTransportFixture {
 protected:
  /// A name that was not used before, since the cache of names outlives a test.
  static std::string unused(const std::string& name) {
    static int count = 0;
    return name + std::to_string(++count) + ".example";
  }
  static std::string urlOf(const LoopbackServer& server, const std::string& name,
                           const std::string& path = "/") {
    return "http://" + name + ":" + std::to_string(server.port()) + path;
  }
};

TEST_F(CurlHttpTransportNames, ANameIsLookedUpOnce) {
  const std::string name = unused("once");
  LoopbackServer server([](const std::string&) {
    return LoopbackResponse{
        "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 5\r\n\r\nthere", Then::Close};
  });
  FakeNames names{{name, "127.0.0.1"}};
  const std::string url = urlOf(server, name);
  EXPECT_EQ(get(url).body, "there");
  EXPECT_EQ(post(url, "x").body, "there");
  std::thread([&] { EXPECT_EQ(get(url).body, "there"); }).join();
  EXPECT_EQ(names.begun(), 1);
  EXPECT_THAT(server.requests(), testing::Each(HasSubstr("\r\nHost: " + name + ":")));
}

TEST_F(CurlHttpTransportNames, ANameThatDoesNotExistIsNoServer) {
  FakeNames names{};
  const auto start = Clock::now();
  EXPECT_EQ(get("http://" + unused("none") + "/").status, 0);
  EXPECT_LT(Clock::now() - start, 10s);
  EXPECT_EQ(names.begun(), 1);
}

TEST_F(CurlHttpTransportNames, ARedirectMayGoToAnotherName) {
  const std::string from = unused("from");
  const std::string to = unused("to");
  LoopbackServer other({ok("there")});
  LoopbackServer server({redirect("301 Moved Permanently", urlOf(other, to, "/b"))});
  FakeNames names{{from, "127.0.0.1"}, {to, "127.0.0.1"}};
  EXPECT_EQ(post(urlOf(server, from, "/a"), "body").body, "there");
  EXPECT_EQ(names.begun(), 2);
}

TEST_F(CurlHttpTransportNames, OnlyTheNameOfAProxyIsLookedUp) {
  const std::string name = unused("proxy");
  LoopbackServer proxy({ok("from the proxy")});
  FakeNames names{{name, "127.0.0.1"}};
  setenv("http_proxy", urlOf(proxy, name).c_str(), 1);
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
  const std::string name = unused("behind-socks");
  SocksProxy proxy;
  FakeNames names{{name, "10.1.2.3"}};
  setenv("all_proxy", proxy.url().c_str(), 1);
  EXPECT_EQ(get("http://" + name + "/").body, "from afar");
  EXPECT_THAT(proxy.waitForRequest(), testing::StartsWith("10.1.2.3.GET / HTTP/1.1\r\n"));
  EXPECT_EQ(names.begun(), 1);
}

// When the host had closed all descriptors during a look-up that hung, the end of the look-up
// closed those that the host had opened since.
TEST_F(CurlHttpTransportNames, ForgetsALookUpWhoseDescriptorsTheHostHasClosed) {
  if (!zt::test::kForkedProcessMayStartThreads) GTEST_SKIP();
  const std::string hanging = unused("hangs");
  const std::string other = unused("other");
  LoopbackServer server([](const std::string&) { return ok("there"); });
  FakeNames names{{hanging, "127.0.0.1"}, {other, "127.0.0.1"}};
  // Forked, since what is forgotten counts as leaked.
  const int status = zt::test::inForkedProcess([&] {
    const std::set<int> before = openNumbers();
    names.hold();
    while (names.outstanding() == 0) get(urlOf(server, hanging), 100ms);
    const zt::FileDescriptor own(::socket(AF_UNIX, SOCK_DGRAM, 0));
    const zt::DescriptorIdentity identity(own.number());
    std::vector<int> numbers;
    std::ranges::set_difference(openNumbers(), before, std::back_inserter(numbers));
    for (const int number : numbers) ::dup2(own.number(), number);

    names.release();
    while (names.outstanding() != 0) std::this_thread::yield();
    if (get(urlOf(server, other)).body != "there") return 1;
    _transport.closeConnections();
    return std::ranges::all_of(numbers, [&](int number) { return identity.isStill(number); }) ? 0
                                                                                              : 2;
  });
  EXPECT_EQ(status, 0);
}

// Each look-up that hung left one more thread of libcurl behind.
TEST_F(CurlHttpTransportNames, WhileALookUpHangsOthersFailAtOnce) {
  const std::string hanging = unused("hangs");
  const std::string other = unused("other");
  LoopbackServer server([](const std::string&) { return ok("there"); });
  FakeNames names{{hanging, "127.0.0.1"}, {other, "127.0.0.1"}};
  names.hold();
  while (names.outstanding() == 0) get(urlOf(server, hanging), 100ms);

  const auto start = Clock::now();
  for (const std::string& name : {hanging, other, other}) {
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
  while (get(urlOf(server, other)).body != "there") std::this_thread::yield();
  EXPECT_EQ(names.begun(), 2);
  EXPECT_EQ(names.mostOutstanding(), 1);
}

TEST_F(CurlHttpTransportNames, ThreadsLookNamesUpOneAfterTheOther) {
  LoopbackServer server([](const std::string&) { return ok("there"); });
  const std::array all = {unused("a"), unused("b"), unused("c")};
  FakeNames names{{all[0], "127.0.0.1"}, {all[1], "127.0.0.1"}, {all[2], "127.0.0.1"}};
  names.hold();
  std::atomic<int> there{0};
  std::vector<std::thread> threads;
  for (const std::string& name : all) {
    threads.emplace_back([&] {
      if (get(urlOf(server, name)).body == "there") ++there;
    });
  }
  while (names.outstanding() == 0) std::this_thread::yield();
  names.release();
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(there, 3);
  EXPECT_EQ(names.begun(), 3);
  EXPECT_EQ(names.mostOutstanding(), 1);
}

TEST_F(CurlHttpTransportNames, AForkedProcessDoesNotWaitForALookUpOfItsParent) {
  if (!zt::test::kForkedProcessMayStartThreads) GTEST_SKIP();
  const std::string parents = unused("parent");
  const std::string childs = unused("child");
  LoopbackServer server([](const std::string&) { return ok("there"); });
  FakeNames names{{parents, "127.0.0.1"}, {childs, "127.0.0.1"}};
  names.hold();
  while (names.outstanding() == 0) get(urlOf(server, parents), 100ms);
  const int status = zt::test::inForkedProcess([&] {
    names.release();
    return get(urlOf(server, childs)).body == "there" ? 0 : 1;
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(names.outstanding(), 1);
  names.release();
  while (get(urlOf(server, parents)).body != "there") std::this_thread::yield();
}

}  // namespace
