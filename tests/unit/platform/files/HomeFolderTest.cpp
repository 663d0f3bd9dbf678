#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <string>

#include "tests/support/ForkedChild.h"
#include "tests/support/ScopedEnvironment.h"
#include "ztportal/platform/files/SupportFolder.h"

namespace {

using zt::homeFolder;
using zt::test::inForkedChild;
using zt::test::kNotPermitted;
using zt::test::ScopedEnvironment;

TEST(HomeFolderTest, IsThatOfTheEnvironmentAsItIsWritten) {
  for (const char* value : {"/home/a", "/home/a/", "/", "/nowhere", "/home/a b", "/home/o'neill",
                            "/home/\xc3\xa4", "/home/../a"}) {
    const ScopedEnvironment home("HOME", value);
    EXPECT_EQ(homeFolder(), value);
  }
}

TEST(HomeFolderTest, IsThatOfTheUserDatabaseWithoutAnAbsolutePath) {
  const struct passwd* user = ::getpwuid(::getuid());
  ASSERT_NE(user, nullptr);
  for (const char* value : {static_cast<const char*>(nullptr), "", "relative", "./a", "~"}) {
    const ScopedEnvironment home("HOME", value);
    EXPECT_EQ(homeFolder(), user->pw_dir) << (value == nullptr ? "(unset)" : value);
  }
}

TEST(HomeFolderTest, IsEmptyForAUserThatTheDatabaseDoesNotKnow) {
  const ScopedEnvironment home("HOME", nullptr);
  const int failed = inForkedChild([] {
    constexpr uid_t kUnknown = 3'999'999'999;
    if (::getpwuid(kUnknown) != nullptr || ::setuid(kUnknown) != 0) return kNotPermitted;
    return homeFolder().empty() ? 0 : 1;
  });
  if (failed == kNotPermitted) GTEST_SKIP() << "an unknown user cannot be taken";
  EXPECT_EQ(failed, 0);
}

}  // namespace
