#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ztportal/pools/EachEntry.h"

namespace {

using Sizes = std::vector<std::shared_ptr<std::size_t>>;

Sizes sizes(std::size_t count, std::size_t size) {
  Sizes list;
  for (std::size_t i = 0; i < count; ++i) list.push_back(std::make_shared<std::size_t>(size));
  return list;
}

TEST(EachEntryTest, WritesEveryEntryInItsOrder) {
  std::string text = "old";
  zt::eachEntry(Sizes{std::make_shared<std::size_t>(3), std::make_shared<std::size_t>(1),
                      std::make_shared<std::size_t>(2)},
                text, [&](std::size_t size) { text += std::to_string(size); });
  EXPECT_EQ(text, "old312");
}

TEST(EachEntryTest, LeavesNullEntriesOut) {
  std::string text;
  zt::eachEntry(
      Sizes{nullptr, std::make_shared<std::size_t>(1), nullptr, std::make_shared<std::size_t>(2)},
      text, [&](std::size_t size) { text += std::to_string(size); });
  EXPECT_EQ(text, "12");
}

TEST(EachEntryTest, WritesNothingForAnEmptyList) {
  std::string text = "old";
  zt::eachEntry(Sizes{}, text, [&](std::size_t) { text += "never"; });
  EXPECT_EQ(text, "old");
}

TEST(EachEntryTest, ALongListMovesTheTextNoMoreAfterItsFirstEntry) {
  std::string text(1000, 'o');
  std::vector<const char*> places;
  zt::eachEntry(sizes(1000, 100), text, [&](std::size_t size) {
    text.append(size, 'x');
    places.push_back(text.data());
  });
  EXPECT_EQ(text, std::string(1000, 'o') + std::string(100'000, 'x'));
  for (std::size_t i = 2; i < places.size(); ++i) EXPECT_EQ(places[i], places[1]) << i;
}

TEST(EachEntryTest, ALargeFirstEntryMakesNoRoomForAsManyMore) {
  constexpr std::size_t kLarge = 1'000'000;
  std::string text;
  zt::eachEntry(sizes(100, kLarge), text, [&](std::size_t size) {
    if (text.empty()) text.append(size, 'x');
  });
  EXPECT_EQ(text.size(), kLarge);
  EXPECT_LT(text.capacity(), 4 * kLarge);
}

// With 32 bits the room that was made for such a list was more than a text can have, which raised
// std::length_error for a text that has room, or was a remainder modulo 4 GiB.
TEST(EachEntryTest, AListTooLongForTheRoomThatItMightNeedIsWritten) {
  if (sizeof(std::size_t) > 4) GTEST_SKIP() << "Larger addresses have room for it";
  for (const std::size_t count : {600'000U, 950'000U, 1'800'000U}) {
    std::string text;
    Sizes list(count);
    list.front() = std::make_shared<std::size_t>(5000);
    list.back() = std::make_shared<std::size_t>(1);
    zt::eachEntry(list, text, [&](std::size_t size) { text.append(size, 'x'); });
    EXPECT_EQ(text.size(), 5001U) << count;
    EXPECT_LT(text.capacity(), std::size_t{1} << 29U) << count;
  }
}

TEST(EachEntryTest, ATextWithEnoughRoomStaysWhereItIs) {
  std::string text;
  text.reserve(10'000);
  const auto place = reinterpret_cast<std::uintptr_t>(text.data());
  zt::eachEntry(sizes(10, 100), text, [&](std::size_t size) { text.append(size, 'x'); });
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(text.data()), place);
  EXPECT_EQ(text.capacity(), 10'000U);
}

}  // namespace
