#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <thread>

#include "tools/ztinbox/store/Database.h"

namespace zt::inbox {

/// Runs jobs on a database in a thread of its own, one after another in their order. Jobs that come
/// while the disk is busy share the next commit, so that many simultaneous clients do not wait for
/// one commit each. Thread-safe.
class GroupCommit {
 public:
  struct Job {
    std::function<void()> work;       ///< inside a transaction; may run again after a failure
    std::function<void()> committed;  ///< once it is committed, before its future is ready
  };

  /// `database` outlives it and is used by its thread only, which also runs the hooks:
  struct Hooks {
    std::function<void()> rolledBack;  ///< after a rollback
    /// One portion of low-priority work, inside a transaction; false if nothing was left. It runs
    /// when no job has come for some milliseconds, and regularly between jobs.
    std::function<bool()> background;
    std::function<void()> settled;  ///< once nothing is left; outside a transaction
  };
  GroupCommit(Database& database, Hooks hooks);
  GroupCommit(const GroupCommit&) = delete;
  GroupCommit& operator=(const GroupCommit&) = delete;
  /// Finishes all jobs.
  ~GroupCommit();

  /// The future is ready once the work is committed. It throws if that failed; other jobs are not
  /// affected.
  std::future<void> add(Job job);

  /// Whether it only finishes its jobs: low-priority work should not be added.
  bool isEnding() const;

  /// Waits for `job`.
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
  void transact(const std::function<void()>& work);
  void finish(Entry& entry);

  Database& _database;
  Hooks _hooks;
  bool _backgroundIsLeft = true;
  std::chrono::milliseconds _pause{0};  ///< before background work
  std::chrono::steady_clock::time_point _lastBackground;
  mutable std::mutex _mutex;
  std::condition_variable _changed;
  Batch _waiting;
  bool _ending = false;
  std::thread _thread;
};

}  // namespace zt::inbox
