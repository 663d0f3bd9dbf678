// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "tests/support/Printing.h"
#include "ztportal/base/ZtDate.h"

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::system_clock;

system_clock::time_point moment(microseconds sinceEpoch) {
  return system_clock::time_point(
      std::chrono::duration_cast<system_clock::time_point::duration>(sinceEpoch));
}

TEST(ZtDateTest, IsMissingWhenMadeFromNothing) {
  EXPECT_TRUE(ZtDate().isNull());
  constexpr ZtDate kNone;
  static_assert(kNone.isNull());
}

TEST(ZtDateTest, TheEpochIsNotMissing) {
  EXPECT_FALSE(ZtDate::fromMilliseconds(0).isNull());
  EXPECT_FALSE(ZtDate(moment(microseconds(0))).isNull());
  EXPECT_EQ(ZtDate(moment(microseconds(0))).milliseconds(), 0);
}

TEST(ZtDateTest, KeepsEveryMillisecondItIsMadeFrom) {
  const std::int64_t table[] = {std::numeric_limits<std::int64_t>::max(),
                                std::numeric_limits<std::int64_t>::min() + 1,
                                1795262400123,
                                1,
                                0,
                                -1,
                                -62135596800000};
  for (const std::int64_t sinceEpoch : table) {
    const ZtDate date = ZtDate::fromMilliseconds(sinceEpoch);
    EXPECT_EQ(date.milliseconds(), sinceEpoch);
    EXPECT_FALSE(date.isNull()) << sinceEpoch;
  }
}

TEST(ZtDateTest, RoundsDownToMilliseconds) {
  const struct {
    std::int64_t microsecondsSinceEpoch;
    std::int64_t expected;
  } rows[] = {{0, 0},      {999, 0},    {1000, 1},
              {1999, 1},   {-1, -1},    {-999, -1},
              {-1000, -1}, {-1001, -2}, {1795262400123999, 1795262400123}};
  for (const auto& row : rows) {
    EXPECT_EQ(ZtDate(moment(microseconds(row.microsecondsSinceEpoch))).milliseconds(), row.expected)
        << row.microsecondsSinceEpoch << " microseconds";
  }
}

TEST(ZtDateTest, NowIsTheTimeOfTheSystemClock) {
  const ZtDate before(system_clock::now());
  const ZtDate now = ZtDate::now();
  const ZtDate after(system_clock::now());
  EXPECT_FALSE(now.isNull());
  EXPECT_LE(before, now);
  EXPECT_LE(now, after);
}

TEST(ZtDateTest, ComparesByTime) {
  const ZtDate earlier = ZtDate::fromMilliseconds(-1);
  const ZtDate later = ZtDate::fromMilliseconds(1);
  EXPECT_EQ(earlier, ZtDate::fromMilliseconds(-1));
  EXPECT_NE(earlier, later);
  EXPECT_LT(earlier, later);
  EXPECT_GT(later, earlier);
}

TEST(ZtDateTest, MissingDatesAreEqualAndBeforeEveryOther) {
  const ZtDate earliest = ZtDate::fromMilliseconds(std::numeric_limits<std::int64_t>::min() + 1);
  EXPECT_EQ(ZtDate(), ZtDate());
  EXPECT_NE(ZtDate(), ZtDate::fromMilliseconds(0));
  EXPECT_LT(ZtDate(), earliest);
}

TEST(ZtDateTest, IsAValueOfEightBytes) {
  static_assert(sizeof(ZtDate) == 8);
  static_assert(std::is_trivially_copyable_v<ZtDate>);
  static_assert(std::is_nothrow_default_constructible_v<ZtDate>);
  ZtDate date = ZtDate::fromMilliseconds(5);
  const ZtDate copy = date;
  date = ZtDate::fromMilliseconds(6);
  EXPECT_EQ(copy.milliseconds(), 5);
  EXPECT_EQ(date.milliseconds(), 6);
}

}  // namespace
