// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/http/HttpServer.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cerrno>
#include <unordered_set>

#include "tools/ztinbox/http/Workers.h"

namespace zt::inbox {

namespace {

namespace asio = boost::asio;
using boost::system::error_code;
using Descriptor = asio::posix::stream_descriptor;
using Next = Session::Next;
using std::chrono::milliseconds;

/// Pause before another attempt to accept a connection when the process is out of file descriptors.
constexpr milliseconds kNoDescriptorPause{20};
/// How long the thread that handled a request waits for the next one of the same client. Handing
/// the connection over to another thread would take longer than the request itself.
constexpr milliseconds kPatience{10};

/// A connection. While its session waits for the socket or runs in the loop's thread, it belongs to
/// the loop; while a request is being handled, to the thread that does it.
struct Client {
  Client(asio::io_context& loop, FileDescriptor socket, const HttpHandlers& handlers,
         const HttpLimits& limits, MemoryBudget& memory)
      : session(std::move(socket), handlers, limits, memory), waiting(loop), timer(loop) {}
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;
  // The session owns the socket.
  ~Client() { stopWaiting(); }

  void stopWaiting() {
    ++waits;
    timer.cancel();
    if (waiting.is_open()) waiting.release();
  }

  Session session;
  Descriptor waiting;  ///< the session's socket while the loop waits for it, else closed
  asio::steady_timer timer;
  std::uint64_t waits = 0;  ///< tells a timer of an earlier wait
};

using ClientPointer = std::shared_ptr<Client>;

class Loop {
 public:
  Loop(const ListeningSocket& socket, const HttpHandlers& handlers, const HttpLimits& limits)
      : _socket(socket),
        _handlers(handlers),
        _limits(limits),
        _memory(limits.memory),
        _listening(_loop, socket.number()),
        _pause(_loop),
        _workers(limits.handlers),
        _waiters(limits.waitingClients) {}
  Loop(const Loop&) = delete;
  Loop& operator=(const Loop&) = delete;
  ~Loop() { _listening.release(); }

  void run(int stopDescriptor) {
    Descriptor stop(_loop, stopDescriptor);
    stop.async_wait(Descriptor::wait_read, [this](error_code) { endAll(); });
    acceptClients();
    _loop.run();
    stop.release();
  }

 private:
  void endAll() {
    _isEnding = true;
    _listening.cancel();
    _pause.cancel();
    for (const ClientPointer& client : _clients) client->session.connection().endNow();
  }

  void acceptClients() {
    _listening.async_wait(Descriptor::wait_read, [this](error_code) {
      bool outOfDescriptors = false;
      while (!_isEnding) {
        FileDescriptor accepted = _socket.accept();
        if (accepted.isOpen()) {
          addClient(std::move(accepted));
          continue;
        }
        outOfDescriptors = errno == EMFILE || errno == ENFILE;
        if (!outOfDescriptors || !endSlowest()) break;
      }
      if (_isEnding) return;
      if (!outOfDescriptors) return acceptClients();
      _pause.expires_after(kNoDescriptorPause);
      _pause.async_wait([this](error_code) {
        if (!_isEnding) acceptClients();
      });
    });
  }

  void addClient(FileDescriptor accepted) {
    const auto client =
        std::make_shared<Client>(_loop, std::move(accepted), _handlers, _limits, _memory);
    _clients.insert(client);
    goOn(client, client->session.advance());
  }

  /// Makes room for another client: ends the connection that has been waiting for its client for
  /// the longest time. False if there is none.
  bool endSlowest() {
    ClientPointer slowest;
    for (const ClientPointer& client : _clients) {
      if (!client->waiting.is_open()) continue;
      if (!slowest || client->session.since() < slowest->session.since()) slowest = client;
    }
    if (!slowest) return false;
    end(slowest);
    return true;
  }

  void end(const ClientPointer& client) {
    client->stopWaiting();
    client->session.close();
    _clients.erase(client);
  }

  void goOn(const ClientPointer& client, Next next) {
    while (next == Next::kHandler) {
      if (handOver(client)) return;
      client->session.refuse({status::kUnavailable, "too many clients are waiting"});
      next = client->session.advance();
    }
    if (next == Next::kEnd) {
      _clients.erase(client);
    } else {
      wait(client, next == Next::kReadable ? Descriptor::wait_read : Descriptor::wait_write);
    }
  }

  void wait(const ClientPointer& client, Descriptor::wait_type type) {
    error_code error;
    client->waiting.assign(client->session.connection().socket(), error);
    if (error) return end(client);
    client->waiting.async_wait(type, [this, client](error_code failed) {
      if (!client->waiting.is_open()) return;
      client->stopWaiting();
      goOn(client, failed ? client->session.timeOut() : client->session.advance());
    });
    client->timer.expires_at(client->session.deadline());
    client->timer.async_wait([client, wait = client->waits](error_code) {
      if (client->waits == wait) client->waiting.cancel();
    });
  }

  /// False if too many clients are waiting, or the machine has no thread for it.
  bool handOver(const ClientPointer& client) {
    const bool waits = _handlers.waits(client->session.request());
    if (waits && _waiting == _limits.waitingClients) return false;
    auto job = [this, client, waits, work = asio::make_work_guard(_loop)] {
      const Next next = serve(client->session);
      asio::post(_loop, [this, client, waits, next] {
        if (waits) --_waiting;
        goOn(client, next);
      });
    };
    if (!(waits ? _waiters : _workers).run(std::move(job))) return false;
    if (waits) ++_waiting;
    return true;
  }

  /// Runs in a thread of a pool.
  Next serve(Session& session) const {
    for (;;) {
      session.handle();
      const auto end = Session::Clock::now() + kPatience;
      Next next = session.advance();
      while (next == Next::kReadable && !_workers.areBusy()) {
        const auto left = std::chrono::ceil<milliseconds>(end - Session::Clock::now());
        if (left <= milliseconds::zero() || !session.connection().isReadableWithin(left)) break;
        next = session.advance();
      }
      const bool isNextHere = next == Next::kHandler && !_workers.areBusy();
      if (!isNextHere || _handlers.waits(session.request())) return next;
    }
  }

  const ListeningSocket& _socket;
  const HttpHandlers& _handlers;
  const HttpLimits& _limits;
  MemoryBudget _memory;
  asio::io_context _loop;
  Descriptor _listening;
  asio::steady_timer _pause;
  std::unordered_set<ClientPointer> _clients;
  std::size_t _waiting = 0;  ///< clients in _waiters
  bool _isEnding = false;
  // Last, because their threads use everything above.
  Workers _workers;
  Workers _waiters;
};

}  // namespace

void serveHttp(const ListeningSocket& socket, const HttpHandlers& handlers,
               const HttpLimits& limits, int stopDescriptor) {
  Loop(socket, handlers, limits).run(stopDescriptor);
}

}  // namespace zt::inbox
