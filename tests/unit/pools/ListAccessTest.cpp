#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include "tests/support/Printing.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/pools/ListAccess.h"

namespace {

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

TEST(ListAccessTest, AWrongIndexIsOutOfBoundsAndNamedWithoutASign) {
  struct Row {
    std::int32_t index;
    std::size_t count;
    const char* reason;
  };
  const Row table[] = {
      {-1, 3, "Index (4294967295) out of bounds"},
      {-1, 0, "Index (4294967295) out of bounds"},
      {-2, 1, "Index (4294967294) out of bounds"},
      {kLowest, 3, "Index (2147483648) out of bounds"},
      {kLowest, 0, "Index (2147483648) out of bounds"},
      {1, 1, "Index (1) out of bounds"},
      {3, 3, "Index (3) out of bounds"},
      {4, 3, "Index (4) out of bounds"},
      {kHighest, 3, "Index (2147483647) out of bounds"},
      {kHighest, std::size_t{2147483647}, "Index (2147483647) out of bounds"},
  };
  for (const Row& row : table) {
    try {
      zt::checkedPosition(row.index, row.count);
      ADD_FAILURE() << "nothing raised for " << row.index << " of " << row.count;
    } catch (const ZtException& error) {
      EXPECT_EQ(error.name(), "OUT_OF_BOUNDS") << row.index << " of " << row.count;
      EXPECT_EQ(error.reason(), row.reason);
    }
  }
}

TEST(ListAccessTest, AnEmptyListRaisesARangeErrorOfItsOwn) {
  struct Row {
    std::int32_t index;
    const char* reason;
  };
  const Row table[] = {{0, "Index 0 in an empty list"},
                       {1, "Index 1 in an empty list"},
                       {kHighest, "Index 2147483647 in an empty list"}};
  for (const Row& row : table) {
    try {
      zt::checkedPosition(row.index, 0);
      ADD_FAILURE() << "nothing raised for " << row.index;
    } catch (const ZtException& error) {
      EXPECT_EQ(error.name(), "LIST_RANGE") << row.index;
      EXPECT_EQ(error.reason(), row.reason);
    }
  }
}

TEST(ListAccessTest, GivesTheEntryItself) {
  const std::vector<std::shared_ptr<int>> list{std::make_shared<int>(1), nullptr,
                                               std::make_shared<int>(3)};
  EXPECT_EQ(zt::entryAt(list, 0), list[0]);
  EXPECT_EQ(zt::entryAt(list, 1), nullptr);
  EXPECT_EQ(zt::entryAt(list, 2), list[2]);
  EXPECT_THROW(zt::entryAt(list, 3), ZtException);
  EXPECT_THROW(zt::entryAt(list, -1), ZtException);
}

}  // namespace
