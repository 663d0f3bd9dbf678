// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <iomanip>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include "ztportal/base/ZtString.h"

namespace {

TEST(ZtStringTest, IsMissingWhenMadeFromNothing) {
  EXPECT_TRUE(ZtString().isNull());
  EXPECT_TRUE(ZtString(nullptr).isNull());
  const char* const none = nullptr;
  EXPECT_TRUE(ZtString(none).isNull());
}

TEST(ZtStringTest, IsNotMissingWhenEmpty) {
  EXPECT_FALSE(ZtString("").isNull());
  EXPECT_FALSE(ZtString(std::string()).isNull());
  EXPECT_FALSE(ZtString(std::string_view()).isNull());
  EXPECT_TRUE(ZtString("").empty());
  EXPECT_TRUE(ZtString().empty());
  EXPECT_FALSE(ZtString("a").empty());
}

TEST(ZtStringTest, KeepsEveryByte) {
  const std::string bytes("a\0\xff\xc3\xa4z", 6);
  EXPECT_EQ(ZtString(bytes).view(), bytes);
  EXPECT_EQ(ZtString(std::string_view(bytes)).view(), bytes);
  EXPECT_EQ(ZtString("plain").view(), "plain");
}

TEST(ZtStringTest, CopiesShareOneText) {
  const ZtString first = "shared";
  const ZtString second = first;  // NOLINT(performance-unnecessary-copy-initialization)
  ZtString third;
  third = second;
  EXPECT_EQ(first.view().data(), second.view().data());
  EXPECT_EQ(first.view().data(), third.view().data());
}

TEST(ZtStringTest, AssigningItselfKeepsTheText) {
  ZtString text = "self";
  const ZtString& same = text;
  text = same;
  EXPECT_EQ(text, "self");
}

TEST(ZtStringTest, AMovedFromStringIsMissing) {
  ZtString from = "moved";
  ZtString to = std::move(from);
  EXPECT_EQ(to, "moved");
  EXPECT_TRUE(from.isNull());  // NOLINT(bugprone-use-after-move): that is what is tested
  to = ZtString("assigned");
  EXPECT_EQ(to, "assigned");
}

TEST(ZtStringTest, AMissingTextEqualsOnlyAMissingOne) {
  EXPECT_EQ(ZtString(), ZtString(nullptr));
  EXPECT_EQ(ZtString(), nullptr);
  EXPECT_NE(ZtString(), ZtString(""));
  EXPECT_NE(ZtString(""), ZtString());
  EXPECT_NE(ZtString(), std::string_view());
  EXPECT_NE(ZtString(), "");
  EXPECT_NE(ZtString(""), nullptr);
}

TEST(ZtStringTest, ComparesByItsBytes) {
  EXPECT_EQ(ZtString("same"), ZtString(std::string("same")));
  EXPECT_NE(ZtString("same"), ZtString("other"));
  EXPECT_EQ(ZtString("same"), "same");
  EXPECT_EQ(ZtString("same"), std::string("same"));
  EXPECT_EQ(ZtString("same"), std::string_view("same"));
  EXPECT_NE(ZtString("same"), "Same");
}

TEST(ZtStringTest, OrdersMissingBeforeEmptyBeforeOthers) {
  const std::set<ZtString> ordered{"b", "", nullptr, "a", "ab"};
  const std::vector<ZtString> expected{nullptr, "", "a", "ab", "b"};
  EXPECT_TRUE(std::equal(ordered.begin(), ordered.end(), expected.begin(), expected.end()));
}

TEST(ZtStringTest, HashesEqualTextsEqually) {
  const std::unordered_set<ZtString> set{"a", ZtString(std::string("a")), "b"};
  EXPECT_EQ(set.size(), 2U);
}

TEST(ZtStringTest, PrintsAMissingTextAsNull) {
  EXPECT_EQ(ZtString().printed(), "(null)");
  EXPECT_EQ(ZtString("").printed(), "");
  EXPECT_EQ(ZtString("text").printed(), "text");
  EXPECT_EQ(ZtString().view(), "");
}

TEST(ZtStringTest, PrintsToAStreamWithItsFormat) {
  std::ostringstream stream;
  stream << std::setw(6) << std::setfill('.') << ZtString("Home") << ZtString() << ZtString("");
  EXPECT_EQ(stream.str(), "..Home(null)");
}

TEST(ZtStringTest, ConvertsToAStandardStringOnlyWhenAsked) {
  const std::string bytes("a\0z", 3);
  EXPECT_EQ(std::string(ZtString(bytes)), bytes);
  EXPECT_EQ(static_cast<std::string>(ZtString()), "");
  static_assert(!std::is_convertible_v<ZtString, std::string>);
}

constinit const ZtString kMadeByTheCompiler = ZtString::constant<"compiled">();

TEST(ZtStringTest, ConstantsShareTheirTextAndAreNeverFreed) {
  ZtString copy;
  {
    const ZtString constant = ZtString::constant<"constant">();
    copy = constant;
    EXPECT_EQ(copy.view().data(), constant.view().data());
  }
  EXPECT_EQ(copy, "constant");
  EXPECT_EQ(ZtString::constant<"">(), "");
  EXPECT_EQ(kMadeByTheCompiler, "compiled");
}

TEST(ZtStringTest, CopiesMayBeHeldByManyThreads) {
  const ZtString shared = "shared by all";
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([shared] {
      for (int round = 0; round < 1000; ++round) {
        const ZtString copy = shared;  // NOLINT(performance-unnecessary-copy-initialization)
        ASSERT_EQ(copy, "shared by all");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
