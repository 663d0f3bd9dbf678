// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ListAccess.h"

namespace {

using zt::test::thrownBy;

constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

TEST(ListAccessTest, EveryPositionInTheListIsItself) {
  EXPECT_EQ(zt::checkedPosition(0, 1), 0U);
  EXPECT_EQ(zt::checkedPosition(0, 3), 0U);
  EXPECT_EQ(zt::checkedPosition(1, 3), 1U);
  EXPECT_EQ(zt::checkedPosition(2, 3), 2U);
  EXPECT_EQ(zt::checkedPosition(kHighest, std::size_t{2147483648}), 2147483647U);
  EXPECT_EQ(zt::checkedPosition(5, std::numeric_limits<std::size_t>::max()), 5U);
}

TEST(ListAccessTest, AWrongIndexIsOutOfBoundsAndAnEmptyListHasARangeErrorOfItsOwn) {
  const struct {
    std::int32_t index;
    std::size_t count;
    const char* thrown;
  } rows[] = {
      {-1, 3, "OUT_OF_BOUNDS: Index (4294967295) out of bounds"},
      {kLowest, 3, "OUT_OF_BOUNDS: Index (2147483648) out of bounds"},
      {1, 1, "OUT_OF_BOUNDS: Index (1) out of bounds"},
      {3, 3, "OUT_OF_BOUNDS: Index (3) out of bounds"},
      {kHighest, 3, "OUT_OF_BOUNDS: Index (2147483647) out of bounds"},
      {kHighest, std::size_t{2147483647}, "OUT_OF_BOUNDS: Index (2147483647) out of bounds"},
      {0, 0, "LIST_RANGE: Index 0 in an empty list"},
      {kHighest, 0, "LIST_RANGE: Index 2147483647 in an empty list"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(thrownBy([&row] { zt::checkedPosition(row.index, row.count); }), row.thrown)
        << row.index << " of " << row.count;
  }
}

}  // namespace
