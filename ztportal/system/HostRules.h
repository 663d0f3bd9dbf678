#pragma once

#include <atomic>

namespace zt {

// How the host wants the reports of its process to be written. Each rule is off at first.

inline constinit std::atomic<bool> valueEscaping = false;

/// Whether values are escaped, see `ZtHost::setValueEscaping`.
inline bool valuesAreEscaped() noexcept { return valueEscaping.load(std::memory_order_relaxed); }

}  // namespace zt
