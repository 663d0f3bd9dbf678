#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace zt::test {

/// How many file descriptors this process has open, including the one that this function opens.
inline std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                       std::filesystem::directory_iterator());
}

}  // namespace zt::test
