// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

#include "tests/support/LoopbackClient.h"
#include "tools/ztinbox/http/HttpServer.h"

namespace zt::test {
namespace {

using inbox::Exchange;
using std::chrono::milliseconds;

constexpr std::size_t kLargeSize = 16UL * 1024 * 1024;

/// A server in this process with short deadlines. It answers with the body of the request, or with
/// a large one at /large, or waits for its client at /wait.
class Server {
 public:
  explicit Server(const inbox::HttpLimits& limits) {
    if (::pipe(_stop) != 0) throw std::runtime_error("no pipe");
    _thread =
        std::thread([this, limits] { inbox::serveHttp(_socket, handlers(), limits, _stop[0]); });
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  ~Server() {
    ::close(_stop[1]);
    _thread.join();
    ::close(_stop[0]);
  }

  int port() const { return _socket.address().port; }
  /// Waits until `count` clients are being served at /wait.
  void waitForWaiting(int count) const {
    for (int now = _waiting; now != count; now = _waiting) _waiting.wait(now);
  }
  /// The status of the response to `request`; 0 if there is none.
  int statusOf(const std::string& request) const {
    RawClient client(port());
    client.send(request);
    client.endSending();
    const std::string answer = client.receiveAll();
    return answer.empty() ? 0 : std::stoi(answer.substr(answer.find(' ')));
  }

 private:
  inbox::HttpHandlers handlers() {
    return {[this](Exchange& exchange) {
              const std::string& path = exchange.request.path;
              if (path == "/wait") {
                ++_waiting;
                _waiting.notify_all();
                exchange.connection.isLeftWithin(milliseconds(-1));
              }
              exchange.response.setBody(
                  path == "/large" ? std::string(kLargeSize, 'x') : exchange.request.body,
                  inbox::kTextType);
            },
            [](const auto&, const auto&) { return std::nullopt; },
            [](const auto& request) { return request.path == "/wait"; }};
  }

  inbox::ListeningSocket _socket{{"127.0.0.1", 0}};
  int _stop[2]{};
  std::atomic<int> _waiting{0};
  std::thread _thread;
};

/// Sends `begin`, and then bytes one by one for as long as the server lets it; the response.
std::string responseToDrips(const Server& server, const std::string& begin) {
  RawClient client(server.port());
  EXPECT_TRUE(client.send(begin));
  for (;;) {
    client.send("x");
    const std::string answer = client.receiveSome(5);
    if (!answer.empty()) return answer;
  }
}

TEST(HttpServerTest, DripsDoNotProlongARequest) {
  // Each byte once gave the client five more seconds.
  inbox::HttpLimits limits;
  limits.head = limits.body = milliseconds(100);
  const Server server(limits);
  for (const char* begin :
       {"G", "GET / HTTP/1.1\r\nX: ", "POST / HTTP/1.1\r\nContent-Length: 9999999\r\n\r\n",
        "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\nffffff\r\n"}) {
    const std::string answer = responseToDrips(server, begin);
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 408 Request Timeout\r\n")) << begin << answer;
    EXPECT_TRUE(answer.ends_with("the request took too long\n")) << begin << answer;
  }
  const std::string answer = responseToDrips(server, "GET /api/v1/wait HTTP/1.1\r\nX: ");
  EXPECT_NE(answer.find("\r\nContent-Type: application/problem+json\r\n"), std::string::npos)
      << answer;
}

TEST(HttpServerTest, ALargeBodyMayTakeLonger) {
  inbox::HttpLimits limits;
  limits.body = milliseconds(1);
  limits.bytesPerSecond = 1;
  const Server server(limits);
  RawClient client(server.port());
  const std::string half(1'000, 'x');
  ASSERT_TRUE(
      client.send("POST / HTTP/1.1\r\nConnection: close\r\nContent-Length: 2000\r\n\r\n" + half));
  EXPECT_EQ(client.receiveSome(50), "") << "it may take a thousand seconds";
  ASSERT_TRUE(client.send(half));
  EXPECT_TRUE(client.receiveAll().ends_with("\r\n\r\n" + half + half));
}

TEST(HttpServerTest, IdleConnectionsEnd) {
  inbox::HttpLimits limits;
  limits.idle = milliseconds(20);
  const Server server(limits);
  RawClient client(server.port());
  EXPECT_EQ(client.receiveAll(), "");
  EXPECT_EQ(client.end(), RawClient::End::kOrderly);
  std::string answer;
  while (answer.empty()) {  // On a busy machine, the connection may end before the request is sent.
    RawClient second(server.port());
    second.send("GET /nothing HTTP/1.1\r\n\r\n");
    answer = second.receiveAll();
  }
  EXPECT_TRUE(answer.starts_with("HTTP/1.1 200 OK\r\n")) << answer;
}

TEST(HttpServerTest, TheBodiesOfAllConnectionsHaveALimit) {
  inbox::HttpLimits limits;
  limits.memory = 1'000;
  const Server server(limits);
  RawClient first(server.port());
  ASSERT_TRUE(first.send("POST / HTTP/1.1\r\nConnection: close\r\nContent-Length: 950\r\n\r\n" +
                         std::string(900, 'x')));
  RawClient second(server.port());
  std::string answer;
  do {  // The first client's bytes may arrive later.
    ASSERT_TRUE(second.send(postRequest("/", std::string(200, 'y'))));
    answer = second.receiveSome();
  } while (answer.starts_with("HTTP/1.1 200 OK\r\n"));
  EXPECT_TRUE(answer.starts_with("HTTP/1.1 503 Service Unavailable\r\n")) << answer;
  EXPECT_NE(answer.find("\r\nRetry-After: 1\r\n"), std::string::npos) << answer;
  EXPECT_NE(answer.find("\r\nConnection: close\r\n"), std::string::npos) << answer;
  second.receiveAll();
  ASSERT_TRUE(first.send(std::string(50, 'x')));
  EXPECT_TRUE(first.receiveAll().ends_with("\r\n\r\n" + std::string(950, 'x')));
  EXPECT_EQ(server.statusOf(postRequest("/", std::string(1'000, 'z'))), 200) << "all is free again";
}

TEST(HttpServerTest, AReaderThatTakesNothingIsCutOff) {
  inbox::HttpLimits limits;
  limits.memory = kLargeSize;
  limits.body = milliseconds(50);
  limits.bytesPerSecond = 1'000'000'000;  // else what the kernel has taken gives it a minute more
  const Server server(limits);
  RawClient stuck(server.port());
  ASSERT_TRUE(stuck.send("GET /large HTTP/1.1\r\n\r\n"));
  EXPECT_NE(stuck.receiveSome(), "") << "now the response uses all memory";
  int status = 503;
  while (status == 503) status = server.statusOf(postRequest("/", "x"));
  EXPECT_EQ(status, 200);
  EXPECT_LT(stuck.receiveAll().size(), kLargeSize);
}

TEST(HttpServerTest, WaitingClientsAreCountedApart) {
  inbox::HttpLimits limits;
  limits.handlers = 1;
  limits.waitingClients = 2;
  const Server server(limits);
  const std::string wait = "GET /wait HTTP/1.1\r\n\r\n";
  const RawClient first(server.port());
  ASSERT_TRUE(first.send(wait));
  RawClient second(server.port());
  ASSERT_TRUE(second.send(wait));
  server.waitForWaiting(2);
  RawClient third(server.port());
  ASSERT_TRUE(third.send(wait + wait));
  const std::string answer = third.receiveSome();
  EXPECT_TRUE(answer.starts_with("HTTP/1.1 503 Service Unavailable\r\n")) << answer;
  EXPECT_EQ(server.statusOf("GET / HTTP/1.1\r\n\r\n"), 200);
  second.endSending();
  EXPECT_TRUE(second.receiveSome().starts_with("HTTP/1.1 200 OK\r\n"));
}

}  // namespace
}  // namespace zt::test
