#include <gtest/gtest.h>

#include "ztportal/base/AnyCase.h"

namespace {

TEST(AnyCaseTest, AWordIsItselfInAnyLetterCaseAndNothingElse) {
  EXPECT_TRUE(zt::equalsAnyCase("yes", "yes"));
  EXPECT_TRUE(zt::equalsAnyCase("YeS", "yes"));
  EXPECT_TRUE(zt::equalsAnyCase("", ""));
  EXPECT_FALSE(zt::equalsAnyCase("ye", "yes"));
  EXPECT_FALSE(zt::equalsAnyCase("yes ", "yes"));
  EXPECT_FALSE(zt::equalsAnyCase("y\x45\x33", "yes"));
  EXPECT_FALSE(zt::equalsAnyCase("@", "`")) << "no letters, though as far apart as letters are";
}

TEST(AnyCaseTest, AWordIsFoundAnywhere) {
  EXPECT_TRUE(zt::containsAnyCase("<return>TRUE</return>", "true"));
  EXPECT_TRUE(zt::containsAnyCase("true", "true"));
  EXPECT_FALSE(zt::containsAnyCase("tru e", "true"));
  EXPECT_FALSE(zt::containsAnyCase("", "true"));
}

}  // namespace
