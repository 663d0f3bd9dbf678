// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/base/CountedMemory.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace zt::test {

thread_local long allocationsLeft = -1;
thread_local long allocationsHeld = 0;

}  // namespace zt::test

// Not inlined, because the compiler would warn that malloc() and operator delete do not match.
[[gnu::noinline]] void* operator new(std::size_t size) {
  if (zt::test::allocationsLeft == 0) throw std::bad_alloc();
  if (zt::test::allocationsLeft > 0) --zt::test::allocationsLeft;
  void* const memory = std::malloc(size != 0 ? size : 1);
  if (memory == nullptr) throw std::bad_alloc();
  ++zt::test::allocationsHeld;
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  if (memory != nullptr) --zt::test::allocationsHeld;
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
  ::operator delete(memory);
}
