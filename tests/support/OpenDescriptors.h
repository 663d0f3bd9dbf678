#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace zt::test {

/// How many descriptors this process has open, the one that counts them included.
inline std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                       std::filesystem::directory_iterator());
}

}  // namespace zt::test
