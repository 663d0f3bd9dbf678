#include "benchmarks/figures/Allocations.h"

#include <stdlib.h>

#include <new>

namespace {

zt::bench::Allocations soFar{0, 0};

/// In front of each block, so that whoever gives it back need not say how large it is.
struct alignas(std::max_align_t) Header {
  std::size_t size;
};

}  // namespace

zt::bench::Allocations zt::bench::allocations() { return soFar; }

void* operator new(std::size_t size) {
  auto* const header = static_cast<Header*>(malloc(sizeof(Header) + size));
  if (header == nullptr) throw std::bad_alloc();
  header->size = size;
  ++soFar.count;
  soFar.bytesInUse += static_cast<std::int64_t>(size);
  return header + 1;
}

void operator delete(void* memory) noexcept {
  if (memory == nullptr) return;
  Header* const header = static_cast<Header*>(memory) - 1;
  soFar.bytesInUse -= static_cast<std::int64_t>(header->size);
  free(header);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept { operator delete(memory); }
