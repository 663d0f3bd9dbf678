// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "ztportal/base/FileDescriptor.h"

namespace zt::test {

/// A free loopback port, which is reserved as long as this object exists. It refuses every
/// connection; with `Listens`, connections wait until they are accepted.
///
///     const LoopbackPort nobody(LoopbackPort::Refuses);
///     report->setUrl(nobody.url("/soap"));
class LoopbackPort {
 public:
  enum Manner { Refuses, Listens };

  explicit LoopbackPort(Manner manner);

  int number() const { return _number; }
  int socket() const { return _socket.number(); }
  std::string host() const { return "127.0.0.1:" + std::to_string(_number); }
  std::string url(const std::string& path = "") const { return "http://" + host() + path; }

  /// Waits for the next connection. After stop(), returns one that is not open.
  FileDescriptor accept() const;
  /// Wakes up accept(), which does not wait from now on.
  void stop() const;

 private:
  FileDescriptor _socket;
  int _number = 0;
};

/// What a `LoopbackServer` does once a request has arrived.
struct LoopbackResponse {
  enum class Then { Keep, Close, Reset, Hang };

  std::string bytes;
  Then then = Then::Keep;
  std::chrono::milliseconds perByte{0};  ///< a pause before each byte
};

/// A server on a loopback port that responds with the bytes that the test chooses, and records the
/// bytes of the requests. Each connection has a thread.
///
///     LoopbackServer server({{"HTTP/1.1 204 No Content\r\n\r\n"}});
///     get(server.url("/config.xml"));
///     server.requests();                       // {"GET /config.xml HTTP/1.1\r\n..."}
class LoopbackServer {
 public:
  /// Called for one request at a time.
  using Handler = std::function<LoopbackResponse(const std::string& request)>;

  explicit LoopbackServer(Handler handler);
  /// Sends these responses in turn, over all connections. A request after the last one resets its
  /// connection.
  explicit LoopbackServer(std::vector<LoopbackResponse> script);
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;
  ~LoopbackServer();

  int port() const { return _port.number(); }
  std::string host() const { return _port.host(); }
  std::string url(const std::string& path) const { return _port.url(path); }

  /// How many connections have been accepted.
  int connections() const { return _connections; }
  std::vector<std::string> requests() const;

 private:
  bool wait(int descriptor, int milliseconds) const;
  bool isStopped() const;
  void acceptAll();
  void serve(int connection);
  LoopbackResponse handle(const std::string& request);
  bool read(int connection, std::string& request) const;
  bool send(int connection, const LoopbackResponse& response) const;

  Handler _handler;
  const LoopbackPort _port{LoopbackPort::Listens};
  const FileDescriptor _stop;
  std::atomic<int> _connections{0};
  mutable std::mutex _mutex;
  std::vector<std::string> _requests;
  std::list<std::thread> _threads;  // used only by the acceptor until it has ended
  std::thread _acceptor;
};

/// The three requests that a document sends.
enum class RequestKind { Configuration, Version, Report };

const char* nameOf(RequestKind kind);
RequestKind kindOf(std::string_view request);

/// A response with status 200; `then` says what happens to the connection.
LoopbackResponse success(std::string_view body,
                         LoopbackResponse::Then then = LoopbackResponse::Then::Keep);

/// A reporting server whose responses the test can replace. Otherwise it accepts every report.
class ReportingServer {
 public:
  /// `beforeResponse` is called on the server's thread when a request has arrived.
  explicit ReportingServer(std::function<void(RequestKind)> beforeResponse = [](RequestKind) {});

  std::string configurationUrl() const { return _server.url("/reporting/kelvane.xml"); }
  std::string host() const { return _server.host(); }
  std::vector<std::string> requests() const { return _server.requests(); }

  /// The body of a healthy server's response.
  std::string healthyBody(RequestKind kind) const;

  /// Sets the response to every request of the kind.
  void setResponse(RequestKind kind, LoopbackResponse response);
  /// Sets the response to only the next request of the kind.
  void setResponseOnce(RequestKind kind, LoopbackResponse response);

 private:
  LoopbackResponse respond(const std::string& request);

  const std::function<void(RequestKind)> _beforeResponse;
  std::mutex _mutex;
  std::map<RequestKind, LoopbackResponse> _responses;
  std::map<RequestKind, LoopbackResponse> _nextResponses;
  LoopbackServer _server;
};

}  // namespace zt::test
