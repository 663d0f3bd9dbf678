#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <string_view>
#include <utility>

#include "ztportal/base/ZtAtomic.h"
#include "ztportal/base/ZtString.h"

namespace {

/// Pieces of memory that this thread got and has not given back.
thread_local long held = 0;

}  // namespace

// Of the whole test program, so that the memory of texts can be counted. Not inlined, or
// the compiler takes the pairs apart and warns that they do not match.
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* const memory = std::malloc(size != 0 ? size : 1);
  if (memory == nullptr) throw std::bad_alloc();
  ++held;
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  if (memory != nullptr) --held;
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
  ::operator delete(memory);
}

namespace {

using namespace std::string_view_literals;

TEST(TextMemoryTest, ATextTakesOnePieceAndItsLastHolderGivesItBack) {
  const long before = held;
  {
    const ZtString text = "text"sv;
    EXPECT_EQ(held, before + 1);
    {
      const ZtString copy = text;  // NOLINT(performance-unnecessary-copy-initialization)
      EXPECT_EQ(held, before + 1);
    }
    EXPECT_EQ(held, before + 1);
    EXPECT_EQ(text, "text");
  }
  EXPECT_EQ(held, before);
}

TEST(TextMemoryTest, TheLastHolderNeedNotBeTheFirst) {
  const long before = held;
  {
    ZtString last;
    {
      const ZtString first = "text"sv;
      const ZtString second = first;  // NOLINT(performance-unnecessary-copy-initialization)
      last = second;
    }
    EXPECT_EQ(held, before + 1);
    EXPECT_EQ(last, "text");
    last = nullptr;
    EXPECT_EQ(held, before);
  }
  EXPECT_EQ(held, before);
}

TEST(TextMemoryTest, MovesTakeNothingAndReplacedTextsAreGivenBack) {
  const long before = held;
  ZtString first = "first"sv;
  ZtString second = "second"sv;
  EXPECT_EQ(held, before + 2);
  ZtString third = std::move(first);
  EXPECT_EQ(held, before + 2);
  third = second;
  EXPECT_EQ(held, before + 1);
  third = std::move(second);
  second = nullptr;
  EXPECT_EQ(held, before + 1);
  third = nullptr;
  EXPECT_EQ(held, before);
}

TEST(TextMemoryTest, MissingAndConstantTextsTakeNothing) {
  const long before = held;
  const ZtString missing;
  const ZtString constant = ZtString::constant<"constant">();
  const ZtString copy = constant;  // NOLINT(performance-unnecessary-copy-initialization)
  EXPECT_EQ(held, before);
  EXPECT_TRUE(missing.isNull());
  EXPECT_EQ(copy, "constant");
}

TEST(TextMemoryTest, AnAtomicTextGivesBackWhatItReplaces) {
  const long before = held;
  {
    ZtAtomic<ZtString> text{ZtString("first"sv)};
    for (int round = 0; round < 10; ++round) text.store("next"sv);
    const ZtString seen = text.load();
    EXPECT_EQ(held, before + 1);
  }
  EXPECT_EQ(held, before);
}

}  // namespace
