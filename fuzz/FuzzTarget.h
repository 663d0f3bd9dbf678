#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

// What each target of this folder defines: one parser, given any bytes whatever. A fault is a
// crash, a sanitizer's complaint, an exception that gets out, or a `require` that does not hold.
// Both the fuzzer's own main and the one in Replay.cpp call it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace zt::fuzz {

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// Ends the program unless what a parser promises holds.
inline void require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace zt::fuzz
