#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace zt::inbox {

/// Counts the reports that come in and the changes of those that are there, for those who wait for
/// them. Any thread may call it.
class Arrivals {
 public:
  explicit Arrivals(std::uint64_t lastNumber) : _lastNumber(lastNumber) {}

  /// In any order of the numbers.
  void add(std::uint64_t number);
  /// Counts from 0 again.
  void clear();
  /// Reports were deleted or marked.
  void addChange();

  /// Since the start or the last clear().
  std::uint64_t count() const;
  /// The highest number that a report has got.
  std::uint64_t lastNumber() const;
  std::uint64_t changes() const;

  // Waiting: false when `timeout` is over first.

  bool waitForCount(std::uint64_t count, std::chrono::milliseconds timeout) const;
  /// Until a report with a higher number is in, or there are more changes.
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
