// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string_view>
#include <utility>

#include "tests/unit/base/CountedMemory.h"
#include "ztportal/base/ZtAtomic.h"
#include "ztportal/base/ZtString.h"

namespace {

using namespace std::string_view_literals;
using zt::test::allocationsHeld;

TEST(TextMemoryTest, ATextIsOneAllocationThatItsLastHolderFrees) {
  const long before = allocationsHeld;
  {
    const ZtString text = "text"sv;
    EXPECT_EQ(allocationsHeld, before + 1);
    {
      const ZtString copy = text;  // NOLINT(performance-unnecessary-copy-initialization)
      EXPECT_EQ(allocationsHeld, before + 1);
    }
    EXPECT_EQ(allocationsHeld, before + 1);
    EXPECT_EQ(text, "text");
  }
  EXPECT_EQ(allocationsHeld, before);
}

TEST(TextMemoryTest, TheLastHolderNeedNotBeTheFirst) {
  const long before = allocationsHeld;
  {
    ZtString last;
    {
      const ZtString first = "text"sv;
      const ZtString second = first;  // NOLINT(performance-unnecessary-copy-initialization)
      last = second;
    }
    EXPECT_EQ(allocationsHeld, before + 1);
    EXPECT_EQ(last, "text");
    last = nullptr;
    EXPECT_EQ(allocationsHeld, before);
  }
  EXPECT_EQ(allocationsHeld, before);
}

TEST(TextMemoryTest, MovesAllocateNothingAndReplacedTextsAreFreed) {
  const long before = allocationsHeld;
  ZtString first = "first"sv;
  ZtString second = "second"sv;
  EXPECT_EQ(allocationsHeld, before + 2);
  ZtString third = std::move(first);
  EXPECT_EQ(allocationsHeld, before + 2);
  third = second;
  EXPECT_EQ(allocationsHeld, before + 1);
  third = std::move(second);
  second = nullptr;
  EXPECT_EQ(allocationsHeld, before + 1);
  third = nullptr;
  EXPECT_EQ(allocationsHeld, before);
}

TEST(TextMemoryTest, MissingAndConstantTextsAllocateNothing) {
  const long before = allocationsHeld;
  const ZtString missing;
  const ZtString constant = ZtString::constant<"constant">();
  const ZtString copy = constant;  // NOLINT(performance-unnecessary-copy-initialization)
  EXPECT_EQ(allocationsHeld, before);
  EXPECT_TRUE(missing.isNull());
  EXPECT_EQ(copy, "constant");
}

TEST(TextMemoryTest, AnAtomicTextFreesWhatItReplaces) {
  const long before = allocationsHeld;
  {
    ZtAtomic<ZtString> text{ZtString("first"sv)};
    for (int round = 0; round < 10; ++round) text.store("next"sv);
    const ZtString seen = text.load();
    EXPECT_EQ(allocationsHeld, before + 1);
  }
  EXPECT_EQ(allocationsHeld, before);
}

}  // namespace
