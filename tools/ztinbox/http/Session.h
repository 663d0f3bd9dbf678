// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "tools/ztinbox/http/Connection.h"
#include "tools/ztinbox/http/Exchange.h"
#include "tools/ztinbox/http/HttpSyntax.h"
#include "tools/ztinbox/http/MemoryBudget.h"

namespace zt::inbox {

/// The code that responds to requests. All of it is called from several threads.
struct HttpHandlers {
  std::function<void(Exchange&)> respond;
  /// Returns a refusal for a request that must not be handled. Called before the body is read; must
  /// not wait.
  std::function<std::optional<Refusal>(const HttpRequest&, const Connection&)> check;
  /// Whether respond() waits for something other than the store, perhaps for hours.
  std::function<bool(const HttpRequest&)> waits;
};

struct HttpLimits {
  /// From a connection or a response to the first byte of the next request.
  std::chrono::milliseconds idle{5'000};
  /// From the first byte of a request to the end of its head.
  std::chrono::milliseconds head{10'000};
  /// For a body. A client that has sent `bytesPerSecond` on average may take longer. The same
  /// applies to receiving a response.
  std::chrono::milliseconds body{60'000};
  std::size_t bytesPerSecond = 64'000;
  /// After the last response, a client may continue to send, with pauses of at most this length and
  /// for at most this time.
  std::chrono::milliseconds farewellPause{2'000};
  std::chrono::milliseconds farewell{30'000};
  /// Bodies of requests and responses in memory, of all connections together.
  std::size_t memory = 256UL * 1024 * 1024;
  /// Requests that are being responded to at the same time; others queue.
  std::size_t handlers = 512;
  /// The same for those that HttpHandlers::waits names; others are refused.
  std::size_t waitingClients = 128;
};

/// What happens on one connection: reads a request, has it handled, writes the response, and so on.
/// It never waits for the client by itself, so that whoever runs it can serve other connections
/// meanwhile. Used by one thread at a time.
///
///     Next next = session.advance();
///     kReadable, kWritable: wait for the socket, at most until deadline(), then advance()
///     kHandler:             handle(), in a thread that may wait, then advance()
///     kEnd:                 destroy it
class Session {
 public:
  using Clock = std::chrono::steady_clock;
  enum class Next { kReadable, kWritable, kHandler, kEnd };

  /// `handlers`, `limits` and `memory` outlive the session.
  Session(FileDescriptor socket, const HttpHandlers& handlers, const HttpLimits& limits,
          MemoryBudget& memory);

  /// Continues as far as possible without waiting.
  Next advance();
  /// Instead of advance(), when the socket was not ready before deadline().
  Next timeOut();
  Clock::time_point deadline() const;
  /// When the part began that it waits for.
  Clock::time_point since() const { return _since; }

  // These need a complete request, and prepare its response

  const HttpRequest& request() { return _reader.request(); }
  void handle();
  void refuse(const Refusal& refusal);

  const Connection& connection() const { return _connection; }
  void close() { _connection.close(); }

 private:
  enum class State { kReading, kWriting, kFarewell, kEnded };
  /// Nothing if the session can continue at once.
  using Pause = std::optional<Next>;

  Pause step();
  Pause receive();
  Pause proceed(RequestReader::Step step);
  Pause write();
  Pause drain();
  void sendStream(HttpResponse& response);
  void respondWith(HttpResponse response);
  std::string connectionHeader() const;
  void enter(State state);
  Clock::time_point endAtRate(std::size_t bytes) const;

  const HttpHandlers& _handlers;
  const HttpLimits& _limits;
  Connection _connection;
  MemoryBudget::Share _memory;
  RequestReader _reader;
  State _state = State::kReading;
  Clock::time_point _since = Clock::now();
  bool _isLast = false;  ///< whether the connection ends after the response
  std::string _head;     ///< of the response
  std::string _body;
  std::size_t _sent = 0;  ///< of both
};

}  // namespace zt::inbox
