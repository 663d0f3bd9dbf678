// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace zt::inbox {

/// Counts new reports and changes of existing ones, for threads that wait for them. Thread-safe.
class Arrivals {
 public:
  /// All reports up to `number` can be read. The order of the calls does not matter.
  void add(std::uint64_t number) {
    const std::lock_guard lock(_mutex);
    _lastNumber = std::max(_lastNumber, number);
    _changed.notify_all();
  }
  /// Restarts count() at 0.
  void clear() {
    const std::lock_guard lock(_mutex);
    _countedFrom = _lastNumber;
  }
  /// Call it when reports were deleted or marked.
  void addChange() {
    const std::lock_guard lock(_mutex);
    ++_changes;
    _changed.notify_all();
  }

  /// The number of new reports since the start or the last clear().
  std::uint64_t count() const {
    const std::lock_guard lock(_mutex);
    return _lastNumber - _countedFrom;
  }
  /// The highest number of a report.
  std::uint64_t lastNumber() const { return read(_lastNumber); }
  std::uint64_t changes() const { return read(_changes); }

  // These wait; they return false after the timeout.

  bool waitForCount(std::uint64_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock lock(_mutex);
    return _changed.wait_for(lock, timeout, [&] { return _lastNumber - _countedFrom >= count; });
  }
  bool waitForNumber(std::uint64_t number, std::chrono::milliseconds timeout) const {
    std::unique_lock lock(_mutex);
    return _changed.wait_for(lock, timeout, [&] { return _lastNumber >= number; });
  }
  /// Until there is a report with a higher number, or there are more changes.
  bool waitForNews(std::uint64_t number, std::uint64_t changes,
                   std::chrono::milliseconds timeout) const {
    std::unique_lock lock(_mutex);
    return _changed.wait_for(lock, timeout,
                             [&] { return _lastNumber > number || _changes > changes; });
  }

 private:
  std::uint64_t read(const std::uint64_t& value) const {
    const std::lock_guard lock(_mutex);
    return value;
  }

  mutable std::mutex _mutex;
  mutable std::condition_variable _changed;
  std::uint64_t _lastNumber = 0;
  std::uint64_t _countedFrom = 0;
  std::uint64_t _changes = 0;
};

}  // namespace zt::inbox
