#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "tools/inbox/Report.h"

namespace zt::inbox {

struct ReportQuery {
  std::size_t limit = 100;
  std::uint64_t before = std::numeric_limits<std::uint64_t>::max();  ///< only smaller numbers
  std::optional<std::string> customer = std::nullopt;                ///< only this customer ID
};

/// The reports, in memory: the newest `most` of them. Any thread may call it.
class ReportStore {
 public:
  using Kept = std::shared_ptr<const Report>;

  explicit ReportStore(std::size_t most) : _most(most) {}

  /// Keeps `report` under the next number, and finds out whether it is a duplicate. The oldest
  /// one goes when there are too many.
  Kept add(Report report);

  /// Newest first.
  std::vector<Kept> list(const ReportQuery& query) const;
  /// Null when there is none.
  Kept find(std::uint64_t number) const;
  bool remove(std::uint64_t number);
  /// How many there were.
  std::size_t clear();

  /// How many reports came in since the start or the last clear(), those included that are no
  /// longer kept.
  std::uint64_t arrivals() const;
  /// Waits until `count` came in; false when `timeout` is over first.
  bool waitForArrivals(std::uint64_t count, std::chrono::milliseconds timeout) const;

 private:
  void forget(std::map<std::uint64_t, Kept>::iterator entry);

  const std::size_t _most;
  mutable std::mutex _mutex;
  mutable std::condition_variable _arrived;
  std::uint64_t _lastNumber = 0;
  std::uint64_t _arrivals = 0;
  std::map<std::uint64_t, Kept> _reports;
  std::unordered_map<std::string, std::set<std::uint64_t>> _numbersOfId;
};

}  // namespace zt::inbox
