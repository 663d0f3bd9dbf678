// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace zt::inbox {

/// A pool of a few connections for reading, each opened when it is first needed. Thread-safe.
template <class Connection>
class ConnectionPool {
 public:
  using Open = std::function<std::unique_ptr<Connection>()>;
  explicit ConnectionPool(Open open) : _open(std::move(open)) {}

  /// Holds a connection of the pool for a scope. Waits for a free one; throws what opening throws.
  class Lease {
   public:
    explicit Lease(ConnectionPool& pool) : _pool(pool), _connection(pool.take()) {}
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    ~Lease() { _pool.giveBack(std::move(_connection)); }

    Connection& operator*() { return *_connection; }
    /// Closes the connection, which is useless.
    void drop() { _connection.reset(); }

   private:
    ConnectionPool& _pool;
    std::unique_ptr<Connection> _connection;
  };

 private:
  static constexpr std::size_t kMost = 4;

  std::unique_ptr<Connection> take() {
    std::unique_lock lock(_mutex);
    _changed.wait(lock, [this] { return _taken < kMost; });
    ++_taken;
    if (!_free.empty()) {
      auto connection = std::move(_free.back());
      _free.pop_back();
      return connection;
    }
    lock.unlock();
    try {
      return _open();
    } catch (...) {
      giveBack(nullptr);
      throw;
    }
  }
  void giveBack(std::unique_ptr<Connection> connection) {
    {
      const std::lock_guard lock(_mutex);
      --_taken;
      if (connection) _free.push_back(std::move(connection));
    }
    _changed.notify_one();
  }

  const Open _open;
  std::mutex _mutex;
  std::condition_variable _changed;
  std::vector<std::unique_ptr<Connection>> _free;
  std::size_t _taken = 0;
};

}  // namespace zt::inbox
