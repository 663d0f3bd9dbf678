// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
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

  /// Returns false, and drops the job, if no thread can be started and there is none yet.
  bool run(Job job);
  /// Whether jobs are waiting for a thread.
  bool areBusy() const;

 private:
  void work();

  const std::size_t _most;
  mutable std::mutex _mutex;
  std::condition_variable _changed;
  std::deque<Job> _jobs;
  std::vector<std::thread> _threads;
  std::size_t _idle = 0;
  bool _ending = false;
};

}  // namespace zt::inbox
