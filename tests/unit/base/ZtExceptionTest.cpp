#include <gtest/gtest.h>

#include <exception>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "tests/support/Printing.h"
#include "ztportal/base/ZtException.h"

namespace {

TEST(ZtExceptionTest, HasANameAndAReason) {
  const ZtException error("OUT_OF_BOUNDS", "Index (7) out of bounds");
  EXPECT_EQ(error.name(), "OUT_OF_BOUNDS");
  EXPECT_EQ(error.reason(), "Index (7) out of bounds");
}

TEST(ZtExceptionTest, ShowsItsReasonAsWhat) {
  const ZtException error("NAME", "the reason");
  EXPECT_STREQ(error.what(), "the reason");
}

TEST(ZtExceptionTest, ShowsAMissingReasonAsNull) {
  const ZtException error(nullptr, nullptr);
  EXPECT_TRUE(error.name().isNull());
  EXPECT_TRUE(error.reason().isNull());
  EXPECT_STREQ(error.what(), "(null)");
}

TEST(ZtExceptionTest, IsCaughtAsARuntimeErrorAndAsAnyException) {
  EXPECT_THROW(throw ZtException("NAME", "reason"), std::runtime_error);
  EXPECT_THROW(throw ZtException("NAME", "reason"), std::exception);
  try {
    throw ZtException("NAME", "reason");
  } catch (const std::exception& error) {
    EXPECT_STREQ(error.what(), "reason");
  }
}

TEST(ZtExceptionTest, CopiesAndMovesKeepNameAndReason) {
  static_assert(std::is_nothrow_copy_constructible_v<ZtException>);
  static_assert(std::is_nothrow_copy_assignable_v<ZtException>);
  const ZtException original("NAME", "reason");
  const ZtException copy(original);  // NOLINT(performance-unnecessary-copy-initialization)
  EXPECT_EQ(copy.name(), "NAME");
  EXPECT_EQ(copy.reason(), "reason");
  EXPECT_STREQ(copy.what(), "reason");

  ZtException assigned("OTHER", "other");
  assigned = original;
  EXPECT_EQ(assigned.name(), "NAME");
  EXPECT_EQ(assigned.reason(), "reason");
  EXPECT_STREQ(assigned.what(), "reason");

  const ZtException moved(std::move(assigned));
  EXPECT_EQ(moved.name(), "NAME");
  EXPECT_EQ(moved.reason(), "reason");
  EXPECT_STREQ(moved.what(), "reason");
}

}  // namespace
