// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <unordered_set>
#include <vector>

namespace zt::inbox {

/// A thread pool. Threads are started when jobs need them, up to a limit; beyond it, jobs wait.
class Workers {
 public:
  using Job = std::function<void()>;

  explicit Workers(std::size_t most) : _most(most) {}
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;
  /// Waits until every job is done.
  ~Workers();

  void run(Job job);

 private:
  void work();

  const std::size_t _most;
  std::mutex _mutex;
  std::condition_variable _changed;
  std::deque<Job> _jobs;
  std::vector<std::thread> _threads;
  std::size_t _idle = 0;
  bool _ending = false;
};

/// The sockets of the open connections, so that all of them can be ended, whatever their threads
/// are waiting for. Thread-safe.
class OpenConnections {
 public:
  /// Keeps a socket in the list; must be destroyed before the socket is closed.
  class Entry {
   public:
    Entry(OpenConnections& all, int socket);
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    ~Entry();

   private:
    OpenConnections& _all;
    int _socket;
  };

  /// Ends all present and future connections: reads see their end, writes fail.
  void endAll();

 private:
  std::mutex _mutex;
  std::unordered_set<int> _sockets;
  bool _ended = false;
};

}  // namespace zt::inbox
