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

/// Runs pieces of work on a database in a thread of its own, one after another in the order they
/// came. What comes while the disk is busy shares the next commit, so that many clients at once do
/// not wait for a commit each. Any thread may call it.
class GroupCommit {
 public:
  struct Job {
    std::function<void()> work;       ///< inside a transaction; may run again after a failure
    std::function<void()> committed;  ///< once it is committed, before its future is ready
  };

  /// `database` outlives it and is its thread's alone. In that thread, too:
  struct Hooks {
    std::function<void()> rolledBack;  ///< whenever work was undone
    /// Work that can wait, a portion of it inside a transaction; false when nothing was left. It
    /// gets its turn when no job has come for a moment, and a share of the time otherwise.
    std::function<bool()> background;
    std::function<void()> settled;  ///< once nothing is left, outside of a transaction
  };
  GroupCommit(Database& database, Hooks hooks);
  GroupCommit(const GroupCommit&) = delete;
  GroupCommit& operator=(const GroupCommit&) = delete;
  /// Does all that was asked for.
  ~GroupCommit();

  /// The future is ready once the work is committed. It throws what kept it from being so; other
  /// work is not affected.
  std::future<void> add(Job job);

  /// Whether it only finishes what it was asked for: no time for work that can wait.
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
  std::chrono::milliseconds _pause{0};  ///< before work in the background
  std::chrono::steady_clock::time_point _lastBackground;
  mutable std::mutex _mutex;
  std::condition_variable _changed;
  Batch _waiting;
  bool _ending = false;
  std::thread _thread;
};

}  // namespace zt::inbox
