// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/Printing.h"
#include "ztportal/base/ZtAtomic.h"
#include "ztportal/base/ZtDate.h"
#include "ztportal/base/ZtString.h"

namespace {

constexpr int kRounds = 2000;

TEST(ZtAtomicTest, BeginsWithTheDefaultValue) {
  EXPECT_TRUE(ZtAtomic<ZtString>().load().isNull());
  EXPECT_TRUE(ZtAtomic<ZtDate>().load().isNull());
  EXPECT_EQ(ZtAtomic<std::shared_ptr<int>>().load(), nullptr);
  EXPECT_EQ(ZtAtomic<int>().load(), 0);
}

TEST(ZtAtomicTest, BeginsWithTheGivenValue) {
  EXPECT_EQ(ZtAtomic<ZtString>("given").load(), "given");
  EXPECT_EQ(ZtAtomic<ZtDate>(ZtDate::fromMilliseconds(7)).load(), ZtDate::fromMilliseconds(7));
  const auto pointer = std::make_shared<int>(3);
  EXPECT_EQ(ZtAtomic<std::shared_ptr<int>>(pointer).load(), pointer);
  EXPECT_EQ(ZtAtomic<int>(5).load(), 5);
}

TEST(ZtAtomicTest, HasTheLastStoredValue) {
  ZtAtomic<ZtString> text("first");
  text.store("second");
  EXPECT_EQ(text.load(), "second");
  text.store(nullptr);
  EXPECT_TRUE(text.load().isNull());

  ZtAtomic<ZtDate> date(ZtDate::fromMilliseconds(1));
  date.store(ZtDate::fromMilliseconds(2));
  EXPECT_EQ(date.load(), ZtDate::fromMilliseconds(2));
  date.store(ZtDate());
  EXPECT_TRUE(date.load().isNull());
}

TEST(ZtAtomicTest, GivesAccessToItsValueWithoutACopy) {
  ZtAtomic<ZtString> text("first");
  text.store("second");
  const ZtString& seen = text.unguarded();
  EXPECT_EQ(seen, "second");
  EXPECT_EQ(seen.view().data(), text.load().view().data());
  text.store("third");
  EXPECT_EQ(text.unguarded(), "third");
}

TEST(ZtAtomicTest, SharesTextsInsteadOfCopyingThem) {
  const ZtString text = "shared";
  const ZtAtomic<ZtString> holder(text);
  EXPECT_EQ(holder.load().view().data(), text.view().data());
}

TEST(ZtAtomicTest, ReleasesTheOldValueWhenANewOneIsStored) {
  auto old = std::make_shared<int>(1);
  const std::weak_ptr<int> watch = old;
  ZtAtomic<std::shared_ptr<int>> holder(std::move(old));
  EXPECT_FALSE(watch.expired());
  holder.store(std::make_shared<int>(2));
  EXPECT_TRUE(watch.expired());
  EXPECT_EQ(*holder.load(), 2);
}

TEST(ZtAtomicTest, TheReleasedValueMayUseTheHolderAgain) {
  ZtAtomic<std::shared_ptr<int>> holder;
  int seen = 0;
  holder.store(std::shared_ptr<int>(new int(1), [&](const int* number) {
    delete number;
    seen = *holder.load();
  }));
  holder.store(std::make_shared<int>(2));
  EXPECT_EQ(seen, 2);
}

TEST(ZtAtomicTest, DatesAreSingleWords) {
  static_assert(std::atomic<ZtDate>::is_always_lock_free);
  static_assert(sizeof(ZtAtomic<ZtDate>) == sizeof(ZtDate));
  static_assert(!std::is_copy_constructible_v<ZtAtomic<ZtString>>);
  static_assert(!std::is_copy_assignable_v<ZtAtomic<ZtString>>);
}

TEST(ZtAtomicTest, ReadersOfAPointerSeeAWholeObject) {
  using Pair = std::pair<int, int>;
  ZtAtomic<std::shared_ptr<Pair>> holder(std::make_shared<Pair>(0, 0));
  std::thread writer([&] {
    for (int round = 1; round <= kRounds; ++round) {
      holder.store(std::make_shared<Pair>(round, -round));
    }
  });
  int mixtures = 0;
  int backwardSteps = 0;
  int last = 0;
  for (int round = 0; round < kRounds; ++round) {
    const std::shared_ptr<Pair> seen = holder.load();
    if (seen->first != -seen->second) ++mixtures;
    if (seen->first < last) ++backwardSteps;
    last = seen->first;
  }
  writer.join();
  EXPECT_EQ(mixtures, 0);
  EXPECT_EQ(backwardSteps, 0);
  EXPECT_EQ(holder.load()->first, kRounds);
}

TEST(ZtAtomicTest, ManyWritersLeaveExactlyOneValueAlive) {
  const auto watched = std::make_shared<int>(1);
  ZtAtomic<std::shared_ptr<int>> holder;
  std::vector<std::thread> writers;
  writers.reserve(4);
  for (int i = 0; i < 4; ++i) {
    writers.emplace_back([&holder, watched] {
      for (int round = 0; round < kRounds; ++round) holder.store(watched);
    });
  }
  for (std::thread& writer : writers) writer.join();
  writers.clear();
  EXPECT_EQ(watched.use_count(), 2);
}

}  // namespace
