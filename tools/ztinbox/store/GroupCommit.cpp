// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/store/GroupCommit.h"

#include <exception>
#include <utility>

#include "tools/ztinbox/Fault.h"

namespace zt::inbox {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kQuietTime{20};
constexpr std::chrono::milliseconds kLongestBackgroundPause{1'000};

}  // namespace

GroupCommit::GroupCommit(Hooks hooks) : _hooks(std::move(hooks)), _thread([this] { serve(); }) {}

GroupCommit::~GroupCommit() {
  {
    const std::lock_guard lock(_mutex);
    _ending = true;
  }
  _changed.notify_all();
  _thread.join();
}

std::future<void> GroupCommit::add(Job job) {
  Entry entry{std::move(job), {}};
  std::future<void> done = entry.done.get_future();
  {
    const std::lock_guard lock(_mutex);
    _waiting.push_back(std::move(entry));
  }
  _changed.notify_one();
  return done;
}

bool GroupCommit::isEnding() const {
  const std::lock_guard lock(_mutex);
  return _ending;
}

void GroupCommit::serve() {
  Batch batch;
  while (waitForBatch(batch)) {
    if (!batch.empty()) {
      commit(batch);
      _backgroundIsLeft = true;
      _pause = kQuietTime;
    }
    if (batch.empty() || Clock::now() - _lastBackground > kLongestBackgroundPause) runBackground();
  }
}

/// `batch` is empty if no job was added for a while and there is background work. Returns false at
/// the end.
bool GroupCommit::waitForBatch(Batch& batch) {
  const auto hasToGoOn = [this] { return _ending || !_waiting.empty(); };
  std::unique_lock lock(_mutex);
  if (_backgroundIsLeft) {
    _changed.wait_for(lock, _pause, hasToGoOn);
  } else {
    _changed.wait(lock, hasToGoOn);
  }
  batch = std::exchange(_waiting, {});
  return !batch.empty() || !_ending;
}

void GroupCommit::runBackground() {
  try {
    _hooks.transact([this] { _backgroundIsLeft = _hooks.background(); });
    if (!_backgroundIsLeft) _hooks.settled();
  } catch (const StoreFault&) {
    // The next job triggers another attempt.
    _backgroundIsLeft = false;
  }
  _lastBackground = Clock::now();
  _pause = std::chrono::milliseconds::zero();
}

void GroupCommit::commit(Batch& batch) {
  try {
    _hooks.transact([&batch] {
      for (const Entry& entry : batch) entry.job.work();
    });
  } catch (...) {
    // A failing job, such as one that is too large for the disk, must not make the others fail.
    for (Entry& entry : batch) commitAlone(entry);
    _hooks.committed();
    return;
  }
  for (Entry& entry : batch) finish(entry);
  _hooks.committed();
}

void GroupCommit::commitAlone(Entry& entry) {
  try {
    _hooks.transact(entry.job.work);
  } catch (...) {
    entry.done.set_exception(std::current_exception());
    return;
  }
  finish(entry);
}

void GroupCommit::finish(Entry& entry) {
  if (entry.job.committed) entry.job.committed();
  entry.done.set_value();
}

}  // namespace zt::inbox
