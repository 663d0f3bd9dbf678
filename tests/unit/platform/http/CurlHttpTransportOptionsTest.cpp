// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "tests/unit/platform/http/CurlHttpTransportFixture.h"
#include "tests/unit/platform/http/FakeNames.h"

// What a receipt says, and the options of hosts. Those for TLS are with the other tests of TLS.

namespace {

using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;
using std::chrono_literals::operator""us;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using zt::HttpHeader;
using zt::HttpResponse;
using zt::test::LoopbackPort;
using zt::test::LoopbackResponse;
using zt::test::LoopbackServer;
using zt::test::ok;
using zt::test::redirect;
using zt::test::refusingUrl;
using zt::test::Then;
using zt::test::withLength;

class CurlHttpTransportOptions : public zt::test::CurlHttpTransportFixture {
 protected:
  HttpResponse getWith(const ZtTransportOptions& options, std::string_view url,
                       std::chrono::milliseconds timeout = 20s) {
    return _transport.exchange({url, "GET", {}, std::nullopt, timeout, &options});
  }
};

TEST_F(CurlHttpTransportOptions, AFailureHasItsReason) {
  const zt::test::FakeNames names{{"another.example", "127.0.0.1"}};
  LoopbackServer server([](const std::string& request) {
    if (request.starts_with("GET /hang ")) return LoopbackResponse{"", Then::Hang};
    if (request.starts_with("GET /reset ")) return LoopbackResponse{"HTTP/1.1 200 O", Then::Reset};
    if (request.starts_with("GET /ftp ")) return redirect("302 Found", "ftp://127.0.0.1/");
    return redirect("302 Found", "/again");
  });
  const struct {
    std::string url;
    ZtDeliveryError error;
    const char* sentence;
  } rows[] = {
      {"", ZtDeliveryError::Address, "The URL is not one of http or https."},
      {"ftp://127.0.0.1/", ZtDeliveryError::Address, "The URL is not one of http or https."},
      {refusingUrl(), ZtDeliveryError::Connection, "No connection could be made ("},
      {"http://no-such-host.invalid/", ZtDeliveryError::NameLookup,
       "The server or the proxy has no known address"},
      {server.url("/hang"), ZtDeliveryError::Timeout, "No complete response arrived in time ("},
      {server.url("/reset"), ZtDeliveryError::Transfer, "The connection ended before"},
      {server.url("/ftp"), ZtDeliveryError::Redirect, "The redirect is not followed ("},
      {server.url("/again"), ZtDeliveryError::Redirect, "The redirect is not followed (too many)."},
  };
  for (const auto& row : rows) {
    const bool hangs = row.error == ZtDeliveryError::Timeout;
    const HttpResponse response = get(row.url, hangs ? 100ms : 20s);
    EXPECT_EQ(response.status, 0) << row.url;
    EXPECT_EQ(response.error, row.error) << row.url << " " << response.message;
    EXPECT_THAT(response.message, StartsWith(row.sentence)) << row.url;
    _transport.closeConnections();
  }
  zt::CurlHttpTransport without({"/no/such/libcurl.so"});
  const HttpResponse response = without.exchange({server.url("/"), "GET", {}, std::nullopt, 20s});
  EXPECT_EQ(response.error, ZtDeliveryError::Library);
  EXPECT_THAT(response.message, HasSubstr("/no/such/libcurl.so"));
}

// The first document without a server loaded libcurl, in the event loops of hosts that leave the
// sending to a thread: six milliseconds, or thirty where it had to be read from disk.
TEST_F(CurlHttpTransportOptions, AnEmptyUrlDoesNotLoadLibcurl) {
  zt::CurlHttpTransport without({"/no/such/libcurl.so"});
  EXPECT_EQ(without.exchange({"", "GET", {}, std::nullopt, 20s}).error, ZtDeliveryError::Address);
}

TEST_F(CurlHttpTransportOptions, AResponseHasItsTimesAndItsLastUrl) {
  LoopbackServer server({redirect("302 Found", "/there?a=b"), ok("x")});
  const HttpResponse response = get(server.url("/"));
  EXPECT_EQ(response.url, server.url("/there?a=b"));
  EXPECT_EQ(response.error, ZtDeliveryError::NoError);
  EXPECT_THAT(response.message, IsEmpty());
  EXPECT_GT(response.times.connect, 0us);
  EXPECT_EQ(response.times.tls, 0us);
  EXPECT_GT(response.times.response, 0us);
  EXPECT_GE(response.times.total, response.times.connect + response.times.response);
}

TEST_F(CurlHttpTransportOptions, RetryAfterIsADurationOrADate) {
  const struct {
    const char* value;
    std::chrono::seconds least;
    std::chrono::seconds most;
  } rows[] = {
      {"120", 120s, 120s},
      {"soon", 0s, 0s},
      {"Wed, 21 Oct 2015 07:28:00 GMT", 0s, 0s},
      {"Fri, 01 Jan 2100 00:00:00 GMT", 3600s, std::chrono::seconds::max()},
  };
  for (const auto& row : rows) {
    LoopbackServer server({{std::string("HTTP/1.1 503 Later\r\nRetry-After: ") + row.value +
                            "\r\nContent-Length: 0\r\n\r\n"}});
    const HttpResponse response = get(server.url("/"));
    EXPECT_EQ(response.status, 503);
    EXPECT_GE(response.retryAfter, row.least) << row.value;
    EXPECT_LE(response.retryAfter, row.most) << row.value;
  }
}

TEST_F(CurlHttpTransportOptions, HeadersGoToTheFirstOriginOnly) {
  LoopbackServer another({redirect("302 Found", "/last"), ok("")});
  LoopbackServer server({redirect("302 Found", "/next"), redirect("302 Found", another.url("/"))});
  ZtTransportOptions options;
  options.headers = {{"Authorization", "Bearer abc"}, {"X-Empty", ""}};
  EXPECT_EQ(getWith(options, server.url("/")).status, 200);
  const auto isTold =
      AllOf(HasSubstr("\r\nAuthorization: Bearer abc\r\n"), HasSubstr("\r\nX-Empty:\r\n"));
  EXPECT_THAT(server.requests(), ElementsAre(isTold, isTold));
  const auto isNotTold = AllOf(Not(HasSubstr("Authorization")), Not(HasSubstr("X-Empty")));
  EXPECT_THAT(another.requests(), ElementsAre(isNotTold, isNotTold));
}

TEST_F(CurlHttpTransportOptions, AProxyReplacesThatOfTheEnvironment) {
  LoopbackServer server([](const std::string&) { return ok("server"); });
  LoopbackServer environment([](const std::string&) { return ok("environment"); });
  LoopbackServer proxy([](const std::string&) { return ok("proxy"); });
  setenv("http_proxy", ("http://" + environment.host()).c_str(), 1);
  using Text = std::optional<std::string>;
  const struct {
    Text proxy;
    Text noProxy;
    const char* noProxyVariable;
    const char* expected;
  } rows[] = {
      {std::nullopt, std::nullopt, "", "environment"},
      {"http://" + proxy.host(), std::nullopt, "", "proxy"},
      {proxy.host(), std::nullopt, "", "proxy"},
      {"http://" + proxy.host(), std::nullopt, "127.0.0.1", "server"},
      {"http://" + proxy.host(), "", "127.0.0.1", "proxy"},
      {"http://" + proxy.host(), "127.0.0.1", "", "server"},
      {std::nullopt, "127.0.0.1", "", "server"},
      {"", std::nullopt, "", "server"},
  };
  int row = 0;
  for (const auto& [given, noProxy, noProxyVariable, expected] : rows) {
    setenv("no_proxy", noProxyVariable, 1);
    ZtTransportOptions options;
    options.proxy = given;
    options.noProxy = noProxy;
    EXPECT_EQ(getWith(options, server.url("/")).body, expected) << "row " << row++;
  }
}

// The name of the server is the proxy's to look up.
TEST_F(CurlHttpTransportOptions, AProxyIsAskedForNamesThatOnlyItKnows) {
  LoopbackServer proxy({ok("from the proxy")});
  ZtTransportOptions options;
  options.proxy = "http://localhost:" + std::to_string(proxy.port());
  EXPECT_EQ(getWith(options, "http://inside.invalid/").body, "from the proxy");
}

TEST_F(CurlHttpTransportOptions, AProxyThatRefusesIsTheReason) {
  LoopbackServer proxy({{withLength("407 Proxy Authentication Required", ""), Then::Close}});
  ZtTransportOptions options;
  options.proxy = "http://user:secret@" + proxy.host();
  const HttpResponse response = getWith(options, "https://inside.invalid/");
  EXPECT_EQ(response.error, ZtDeliveryError::Proxy) << response.message;
  EXPECT_THAT(response.message, Not(HasSubstr("secret")));
}

/// Receives slowly, then accepts; or receives nothing at all.
class SlowServer {
 public:
  explicit SlowServer(std::size_t bytesPerSecond)
      : _thread([this, bytesPerSecond] { serve(bytesPerSecond); }) {}
  SlowServer(const SlowServer&) = delete;
  SlowServer& operator=(const SlowServer&) = delete;
  ~SlowServer() {
    _port.stop();
    _thread.join();
  }

  std::string url() const { return _port.url("/"); }

 private:
  void serve(std::size_t bytesPerSecond) {
    const zt::FileDescriptor connection = _port.accept();
    if (!connection.isOpen()) return;
    if (bytesPerSecond == 0) {
      static_cast<void>(_port.accept());  // until the end of the test
      return;
    }
    constexpr std::string_view kEnd = "end of the report";
    std::string last;  // bytes that arrived
    std::vector<char> bytes(bytesPerSecond / 20);
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t size = 0; last != kEnd;) {
      const ssize_t count = ::recv(connection.number(), bytes.data(), bytes.size(), 0);
      if (count <= 0) return;
      last.append(bytes.data(), static_cast<std::size_t>(count));
      if (last.size() > kEnd.size()) last.erase(0, last.size() - kEnd.size());
      size += static_cast<std::size_t>(count);
      std::this_thread::sleep_until(start +
                                    std::chrono::milliseconds(1000 * size / bytesPerSecond));
    }
    const std::string answer = withLength("200 OK", "arrived");
    static_cast<void>(::send(connection.number(), answer.data(), answer.size(), MSG_NOSIGNAL));
  }

  LoopbackPort _port{LoopbackPort::Listens};
  std::thread _thread;
};

// With one limit for the whole exchange, a large report could never pass a slow link.
TEST_F(CurlHttpTransportOptions, EightMegabytesPassALinkOfOneMegabyteASecond) {
  constexpr std::size_t kMegabyte = 1'000'000;
  std::string report(8 * kMegabyte, 'x');
  report += "end of the report";
  ZtTransportOptions options;
  options.idleTimeout = 20s;
  SlowServer server(kMegabyte);
  const HttpResponse response = _transport.exchange(
      {server.url(), "POST", {}, report, std::chrono::milliseconds::max(), &options});
  EXPECT_EQ(response.body, "arrived") << response.message;
  EXPECT_GT(response.times.response, 4s);
}

TEST_F(CurlHttpTransportOptions, AnIdleConnectionEnds) {
  ZtTransportOptions options;
  options.idleTimeout = 1ms;  // rounded up to a second
  SlowServer server(0);
  const HttpResponse response = getWith(options, server.url(), std::chrono::milliseconds::max());
  EXPECT_EQ(response.error, ZtDeliveryError::Timeout) << response.message;
}

// The server accepts the connection, but says nothing about TLS.
TEST_F(CurlHttpTransportOptions, ConnectingHasALimitOfItsOwn) {
  const LoopbackPort silent(LoopbackPort::Listens);
  ZtTransportOptions options;
  options.connectTimeout = 100ms;
  const HttpResponse response =
      getWith(options, "https://" + silent.host() + "/", std::chrono::milliseconds::max());
  EXPECT_EQ(response.error, ZtDeliveryError::Timeout) << response.message;
}

}  // namespace
