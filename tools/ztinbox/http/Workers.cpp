// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/http/Workers.h"

#include <system_error>
#include <utility>

namespace zt::inbox {

Workers::~Workers() {
  {
    const std::lock_guard lock(_mutex);
    _ending = true;
  }
  _changed.notify_all();
  for (std::thread& thread : _threads) thread.join();
}

bool Workers::run(Job job) {
  const std::lock_guard lock(_mutex);
  _jobs.push_back(std::move(job));
  if (_idle >= _jobs.size() || _threads.size() == _most) {
    _changed.notify_one();
    return true;
  }
  try {
    _threads.emplace_back([this] { work(); });
  } catch (const std::system_error&) {
    // No further thread can be started, so the job waits for an existing one.
    if (_threads.empty()) {
      _jobs.pop_back();
      return false;
    }
  }
  return true;
}

bool Workers::areBusy() const {
  const std::lock_guard lock(_mutex);
  return !_jobs.empty();
}

void Workers::work() {
  std::unique_lock lock(_mutex);
  for (;;) {
    ++_idle;
    _changed.wait(lock, [this] { return _ending || !_jobs.empty(); });
    --_idle;
    if (_jobs.empty()) return;
    const Job job = std::move(_jobs.front());
    _jobs.pop_front();
    lock.unlock();
    job();
    lock.lock();
  }
}

}  // namespace zt::inbox
