// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ztportal/base/ZtException.h"

namespace zt {

/// Position in a list of `count` entries.
///
/// Throws "OUT_OF_BOUNDS" for a negative index and for one above the last. The last index is the
/// unsigned `count - 1`, so for an empty list every other index passes this check, and "LIST_RANGE"
/// is thrown instead: callers distinguish an empty list from a wrong index by the name.
inline std::size_t checkedPosition(std::int32_t index, std::size_t count) {
  const std::uint64_t last = std::uint64_t{count} - 1;
  if (index < 0 || static_cast<std::uint64_t>(index) > last) {
    throw ZtException(
        "OUT_OF_BOUNDS",
        "Index (" + std::to_string(static_cast<std::uint32_t>(index)) + ") out of bounds");
  }
  if (count == 0) {
    throw ZtException("LIST_RANGE", "Index " + std::to_string(index) + " in an empty list");
  }
  return static_cast<std::size_t>(index);
}

/// The entry at `index`; throws like `checkedPosition`.
template <class T>
const std::shared_ptr<T>& entryAt(const std::vector<std::shared_ptr<T>>& list, std::int32_t index) {
  return list[checkedPosition(index, list.size())];
}

}  // namespace zt
