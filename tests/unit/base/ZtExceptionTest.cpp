// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>
#include <utility>

#include "tests/support/Printing.h"
#include "ztportal/base/ZtException.h"

namespace {

TEST(ZtExceptionTest, HasANameAndAReasonWhichIsItsWhat) {
  const ZtException error("OUT_OF_BOUNDS", "Index (7) out of bounds");
  EXPECT_EQ(error.name(), "OUT_OF_BOUNDS");
  EXPECT_EQ(error.reason(), "Index (7) out of bounds");
  EXPECT_STREQ(error.what(), "Index (7) out of bounds");
  const ZtException missing(nullptr, nullptr);
  EXPECT_TRUE(missing.name().isNull());
  EXPECT_TRUE(missing.reason().isNull());
  EXPECT_STREQ(missing.what(), "(null)");
}

TEST(ZtExceptionTest, CopiesAndMovesKeepNameAndReason) {
  static_assert(std::is_base_of_v<std::runtime_error, ZtException>);
  static_assert(std::is_nothrow_copy_constructible_v<ZtException>);
  static_assert(std::is_nothrow_copy_assignable_v<ZtException>);
  const ZtException original("NAME", "reason");
  ZtException assigned("OTHER", "other");
  assigned = original;
  const ZtException moved(std::move(assigned));
  for (const ZtException& error : {ZtException(original), moved}) {
    EXPECT_EQ(error.name(), "NAME");
    EXPECT_EQ(error.reason(), "reason");
    EXPECT_STREQ(error.what(), "reason");
  }
}

}  // namespace
