#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace zt::inbox {

/// Counts new reports and changes of existing ones, for threads that wait for them. Thread-safe.
class Arrivals {
 public:
  explicit Arrivals(std::uint64_t lastNumber) : _lastNumber(lastNumber) {}

  /// The order of the numbers does not matter.
  void add(std::uint64_t number);
  /// Restarts count() at 0.
  void clear();
  /// Call it when reports were deleted or marked.
  void addChange();

  /// The number of new reports since the start or the last clear().
  std::uint64_t count() const;
  /// The highest number of a report.
  std::uint64_t lastNumber() const;
  std::uint64_t changes() const;

  // These wait; they return false after the timeout.

  bool waitForCount(std::uint64_t count, std::chrono::milliseconds timeout) const;
  /// Until there is a report with a higher number, or there are more changes.
  bool waitForNews(std::uint64_t number, std::uint64_t changes,
                   std::chrono::milliseconds timeout) const;

 private:
  mutable std::mutex _mutex;
  mutable std::condition_variable _changed;
  std::uint64_t _lastNumber;
  std::uint64_t _count = 0;
  std::uint64_t _changes = 0;
};

}  // namespace zt::inbox
