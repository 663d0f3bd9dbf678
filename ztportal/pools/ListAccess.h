#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace zt {

/// Position in a list of `count` entries.
///
/// Raises "OUT_OF_BOUNDS" for a negative index and for one above the last. The last index is
/// `count - 1` without a sign, so that an empty list lets every index pass to the list itself,
/// which raises its own range error instead: callers tell an empty list from a wrong index by it.
std::size_t checkedPosition(std::int32_t index, std::size_t count);

/// The entry at `index`; raises as `checkedPosition`.
template <class T>
const std::shared_ptr<T>& entryAt(const std::vector<std::shared_ptr<T>>& list, std::int32_t index) {
  return list[checkedPosition(index, list.size())];
}

}  // namespace zt
