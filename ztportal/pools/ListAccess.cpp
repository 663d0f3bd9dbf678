#include "ztportal/pools/ListAccess.h"

#include <string>

#include "ztportal/base/ZtException.h"

namespace zt {

std::size_t checkedPosition(std::int32_t index, std::size_t count) {
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

}  // namespace zt
