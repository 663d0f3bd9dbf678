#pragma once

#include <cstddef>
#include <cstdint>

namespace zt::bench {

/// The memory that `new` gave out to this program so far. One thread at a time.
struct Allocations {
  std::uint64_t count;
  std::int64_t bytesInUse;  // as asked for; the allocator adds to each what it needs itself
};

Allocations allocations();

}  // namespace zt::bench
