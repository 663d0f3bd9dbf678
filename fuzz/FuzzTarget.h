// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

// Each target of this folder defines this function, which passes the bytes to one parser. It must
// not crash, trigger a sanitizer, throw, or fail a `require`. libFuzzer's main and the one in
// Replay.cpp call it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace zt::fuzz {

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// Checks a promise of the parser: aborts if it is false.
inline void require(bool isKept) {
  if (!isKept) std::abort();
}

}  // namespace zt::fuzz
