#pragma once

#include <malloc.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>

// The leak sanitizer's own function, where there is a leak sanitizer.
// NOLINTNEXTLINE(bugprone-reserved-identifier): its name
extern "C" __attribute__((weak)) int __lsan_do_recoverable_leak_check();

namespace zt::torture {

/// Whether the leak sanitizer finds memory that nobody knows any more; it prints what it finds.
/// Without the sanitizer: no.
inline bool leakIsFound() {
  return __lsan_do_recoverable_leak_check != nullptr && __lsan_do_recoverable_leak_check() != 0;
}

/// What this process holds.
struct Usage {
  std::size_t descriptors = 0;
  std::size_t bytes = 0;  ///< of memory that was not given back; 0 under a sanitizer's allocator
};

inline Usage usageNow() {
  // The walk itself holds one, which is counted each time.
  const auto open = std::filesystem::directory_iterator("/proc/self/fd");
  const struct mallinfo2 memory = ::mallinfo2();
  const auto descriptors = static_cast<std::size_t>(std::distance(begin(open), end(open)));
  return {descriptors, memory.uordblks + memory.hblkhd};
}

/// What grows from each round to the next, in words; empty when nothing does. A cache that fills up
/// stops growing within the rounds; what leaks does not.
inline std::string growingWithEachRound(const std::function<void()>& round) {
  constexpr int kRounds = 12;
  bool descriptors = true;
  bool bytes = true;
  round();
  for (int i = 1; i < kRounds && (descriptors || bytes); ++i) {
    const Usage before = usageNow();
    round();
    const Usage after = usageNow();
    descriptors = descriptors && after.descriptors > before.descriptors;
    bytes = bytes && after.bytes > before.bytes;
  }
  if (descriptors) return "open descriptors";
  return bytes ? "memory in use" : "";
}

}  // namespace zt::torture
