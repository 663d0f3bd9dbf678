// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

#include "tests/support/ScopedEnvironment.h"
#include "tests/support/Subprocess.h"
#include "ztportal/platform/files/LinuxFiles.h"
#include "ztportal/platform/files/SupportFolder.h"

namespace {

using zt::homeFolder;
using zt::kUserDomain;
using zt::LinuxSupportFolder;
using zt::test::inForkedProcess;
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
  const int failed = inForkedProcess([] {
    constexpr uid_t kUnknown = 3'999'999'999;
    if (::getpwuid(kUnknown) != nullptr || ::setuid(kUnknown) != 0) return kNotPermitted;
    return homeFolder().empty() ? 0 : 1;
  });
  if (failed == kNotPermitted) GTEST_SKIP() << "an unknown user cannot be taken";
  EXPECT_EQ(failed, 0);
}

const char* printed(const char* value) { return value == nullptr ? "(unset)" : value; }

TEST(LinuxSupportFolderTest, FollowsTheEnvironment) {
  const struct {
    const char* dataHome;
    const char* home;
    const char* expected;
  } rows[] = {
      {"/data", "/home/a", "/data"},
      {"/data/", nullptr, "/data/"},
      {"/", "/home/a", "/"},
      {nullptr, "/home/a", "/home/a/.local/share"},
      {nullptr, "/home/a/", "/home/a/.local/share"},
      {nullptr, "/", "/.local/share"},
      {"", "/home/a", "/home/a/.local/share"},
      {"data", "/home/a", "/home/a/.local/share"},
      {"./data", "/home/a", "/home/a/.local/share"},
      {"~/data", "/home/a", "/home/a/.local/share"},
      {nullptr, "/home/\xc3\xa4 b", "/home/\xc3\xa4 b/.local/share"},
  };
  for (const auto& row : rows) {
    const ScopedEnvironment dataHome("XDG_DATA_HOME", row.dataHome);
    const ScopedEnvironment home("HOME", row.home);
    EXPECT_EQ(LinuxSupportFolder().path(kUserDomain), row.expected)
        << "XDG_DATA_HOME " << printed(row.dataHome) << ", HOME " << printed(row.home);
  }
}

TEST(LinuxSupportFolderTest, AsksTheUserDatabaseWithoutAHome) {
  const struct passwd* user = ::getpwuid(::getuid());
  ASSERT_NE(user, nullptr);
  const std::string expected = std::string(user->pw_dir) + "/.local/share";
  const ScopedEnvironment dataHome("XDG_DATA_HOME", nullptr);
  const ScopedEnvironment home("HOME", nullptr);
  EXPECT_EQ(LinuxSupportFolder().path(kUserDomain), expected);
}

TEST(LinuxSupportFolderTest, IsMissingForAUserThatTheDatabaseDoesNotKnow) {
  const ScopedEnvironment dataHome("XDG_DATA_HOME", nullptr);
  const ScopedEnvironment home("HOME", nullptr);
  const int failed = inForkedProcess([] {
    constexpr uid_t kUnknown = 3'999'999'999;
    if (::getpwuid(kUnknown) != nullptr || ::setuid(kUnknown) != 0) return kNotPermitted;
    return LinuxSupportFolder().path(kUserDomain) ? 1 : 0;
  });
  if (failed == kNotPermitted) GTEST_SKIP() << "an unknown user cannot be taken";
  EXPECT_EQ(failed, 0);
}

TEST(LinuxSupportFolderTest, OtherDomainsHaveNone) {
  const ScopedEnvironment dataHome("XDG_DATA_HOME", "/data");
  for (const int domain : {-32768, -32767, -32766, -32765, -32764, -32762, -1, 0, 1, 32767}) {
    EXPECT_EQ(LinuxSupportFolder().path(static_cast<std::int16_t>(domain)), std::nullopt) << domain;
  }
}

}  // namespace
