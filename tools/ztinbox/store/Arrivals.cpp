#include "tools/ztinbox/store/Arrivals.h"

#include <algorithm>

namespace zt::inbox {

void Arrivals::add(std::uint64_t number) {
  {
    const std::lock_guard lock(_mutex);
    _lastNumber = std::max(_lastNumber, number);
    ++_count;
  }
  _changed.notify_all();
}

void Arrivals::clear() {
  const std::lock_guard lock(_mutex);
  _count = 0;
}

void Arrivals::addChange() {
  {
    const std::lock_guard lock(_mutex);
    ++_changes;
  }
  _changed.notify_all();
}

std::uint64_t Arrivals::count() const {
  const std::lock_guard lock(_mutex);
  return _count;
}

std::uint64_t Arrivals::lastNumber() const {
  const std::lock_guard lock(_mutex);
  return _lastNumber;
}

std::uint64_t Arrivals::changes() const {
  const std::lock_guard lock(_mutex);
  return _changes;
}

bool Arrivals::waitForCount(std::uint64_t count, std::chrono::milliseconds timeout) const {
  std::unique_lock lock(_mutex);
  return _changed.wait_for(lock, timeout, [&] { return _count >= count; });
}

bool Arrivals::waitForNews(std::uint64_t number, std::uint64_t changes,
                           std::chrono::milliseconds timeout) const {
  std::unique_lock lock(_mutex);
  return _changed.wait_for(lock, timeout,
                           [&] { return _lastNumber > number || _changes > changes; });
}

}  // namespace zt::inbox
