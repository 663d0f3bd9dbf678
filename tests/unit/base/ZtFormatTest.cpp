// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "ztportal/base/ZtFormat.h"
#include "ztportal/base/ZtString.h"

namespace {

TEST(ZtFormatTest, FormatsAStringWithTheOptionsOfAString) {
  EXPECT_EQ(fmt::format("{}", ZtString("Home")), "Home");
  EXPECT_EQ(fmt::format("{:>6}|{:.2}", ZtString("Home"), ZtString("Home")), "  Home|Ho");
  EXPECT_EQ(fmt::format("[{}]", ZtString("")), "[]");
}

TEST(ZtFormatTest, FormatsAMissingStringAsWritersPrintIt) {
  EXPECT_EQ(fmt::format("{}", ZtString()), "(null)");
}

}  // namespace
