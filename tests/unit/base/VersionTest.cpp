// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "TestPaths.h"
#include "ztportal/Version.h"

namespace zt::test {
namespace {

TEST(VersionTest, IsThatOfTheBuild) {
  EXPECT_EQ(ZTPORTAL_VERSION, paths::kVersion);
  EXPECT_EQ(std::to_string(ZTPORTAL_VERSION_MAJOR) + "." + std::to_string(ZTPORTAL_VERSION_MINOR) +
                "." + std::to_string(ZTPORTAL_VERSION_PATCH),
            paths::kVersion);
}

TEST(VersionTest, CanBeComparedByThePreprocessor) {
#if ZTPORTAL_VERSION_NUMBER < 10100 || ZTPORTAL_VERSION_NUMBER >= 20000
  FAIL() << "the version of the binary interface is 1";
#endif
  EXPECT_EQ(ZTPORTAL_VERSION_NUMBER / 10000, ZTPORTAL_VERSION_MAJOR);
  EXPECT_EQ(ZTPORTAL_VERSION_NUMBER % 100, ZTPORTAL_VERSION_PATCH);
}

}  // namespace
}  // namespace zt::test
