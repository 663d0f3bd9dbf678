#pragma once

#include <sys/mman.h>

#include <atomic>
#include <chrono>
#include <new>
#include <optional>

namespace zt::torture {

/// How long a campaign goes on: until the time is over, or until one of the processes that share
/// the work stops it. Made before they are forked; each of them asks its own copy.
class Budget {
 public:
  using Clock = std::chrono::steady_clock;

  /// Without `time` there is as much as the work takes.
  explicit Budget(std::optional<std::chrono::seconds> time) : _stopped(makeShared()) {
    if (time) _end = Clock::now() + *time;
  }
  Budget(const Budget&) = delete;
  Budget& operator=(const Budget&) = delete;
  ~Budget() { ::munmap(_stopped, sizeof(*_stopped)); }

  bool isSpent() const { return _stopped->load() || (_end && Clock::now() >= *_end); }
  void stop() { _stopped->store(true); }

 private:
  using Flag = std::atomic<bool>;

  static Flag* makeShared() {
    void* const memory =
        ::mmap(nullptr, sizeof(Flag), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    return new (memory) Flag(false);
  }

  Flag* _stopped;
  std::optional<Clock::time_point> _end;
};

}  // namespace zt::torture
