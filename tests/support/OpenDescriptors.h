// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fcntl.h>

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <set>

namespace zt::test {

/// How many file descriptors this process has open, including the one that this function opens.
inline std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                       std::filesystem::directory_iterator());
}

/// Their numbers, of those below 1024.
inline std::set<int> openNumbers() {
  std::set<int> numbers;
  for (int number = 0; number < 1024; ++number) {
    if (::fcntl(number, F_GETFD) != -1) numbers.insert(number);
  }
  return numbers;
}

}  // namespace zt::test
