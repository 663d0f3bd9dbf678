#include "tools/inbox/store/Arrivals.h"

namespace zt::inbox {

void Arrivals::add(std::uint64_t number) {
  {
    const std::lock_guard lock(_mutex);
    _lastNumber = number;
    ++_count;
  }
  _changed.notify_all();
}

void Arrivals::clear() {
  const std::lock_guard lock(_mutex);
  _count = 0;
}

std::uint64_t Arrivals::count() const {
  const std::lock_guard lock(_mutex);
  return _count;
}

std::uint64_t Arrivals::lastNumber() const {
  const std::lock_guard lock(_mutex);
  return _lastNumber;
}

bool Arrivals::waitForCount(std::uint64_t count, std::chrono::milliseconds timeout) const {
  std::unique_lock lock(_mutex);
  return _changed.wait_for(lock, timeout, [&] { return _count >= count; });
}

bool Arrivals::waitForNumberAfter(std::uint64_t number, std::chrono::milliseconds timeout) const {
  std::unique_lock lock(_mutex);
  return _changed.wait_for(lock, timeout, [&] { return _lastNumber > number; });
}

}  // namespace zt::inbox
