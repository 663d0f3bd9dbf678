// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <thread>

namespace zt::inbox {

/// Runs jobs in transactions of a database in a separate thread, one after another, in the order in
/// which they were added. Jobs that are added during a commit share the next one, so that
/// simultaneous clients do not wait for one commit each. Thread-safe.
class GroupCommit {
 public:
  struct Job {
    std::function<void()> work;       ///< inside a transaction; may run again after a failure
    std::function<void()> committed;  ///< after the commit, before the future is ready
  };

  /// Functions that the thread calls.
  struct Hooks {
    /// Runs `work` in a transaction; throws if that failed.
    std::function<void(const std::function<void()>& work)> transact;
    std::function<void()> committed;  ///< after a commit, when all its futures are ready
    /// Does one portion of low-priority work, inside a transaction; false if nothing was left.
    /// Called when no job has been added for some milliseconds, and regularly between jobs.
    std::function<bool()> background;
    std::function<void()> settled;  ///< when no such work is left; outside a transaction
  };
  explicit GroupCommit(Hooks hooks);
  GroupCommit(const GroupCommit&) = delete;
  GroupCommit& operator=(const GroupCommit&) = delete;
  /// Finishes all jobs.
  ~GroupCommit();

  /// The future is ready once the work is committed. It throws if the work or the commit failed;
  /// other jobs are not affected.
  std::future<void> add(Job job);

  /// Whether only the existing jobs are being finished, so that none should be added.
  bool isEnding() const;

  /// Adds `job` and waits for it.
  void run(Job job) { add(std::move(job)).get(); }

 private:
  struct Entry {
    Job job;
    std::promise<void> done;
  };
  using Batch = std::deque<Entry>;

  void serve();
  bool waitForBatch(Batch& batch);
  void runBackground();
  void commit(Batch& batch);
  void commitAlone(Entry& entry);
  void finish(Entry& entry);

  Hooks _hooks;
  bool _backgroundIsLeft = true;
  std::chrono::milliseconds _pause{0};  ///< time to wait for jobs before background work
  std::chrono::steady_clock::time_point _lastBackground;
  mutable std::mutex _mutex;
  std::condition_variable _changed;
  Batch _waiting;
  bool _ending = false;
  std::thread _thread;
};

}  // namespace zt::inbox
