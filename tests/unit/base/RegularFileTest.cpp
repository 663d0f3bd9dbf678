// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

#include "tests/support/OpenDescriptors.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/base/RegularFile.h"

// Regression: a FIFO in a file's place was waited for without end, and /dev/zero or an enormous
// file was read until the memory was exhausted.

namespace zt::test {
namespace {

using testing::Optional;

constexpr std::size_t kLimit = 10'000;

TEST(RegularFileTest, IsReadUpToTheLimit) {
  const TemporaryFolder folder;
  for (const std::size_t size : {0U, 1U, 4'095U, 4'096U, 4'097U, 9'999U, 10'000U}) {
    const std::string content(size, 'x');
    EXPECT_THAT(regularFile(folder.write("file", content), kLimit), Optional(content)) << size;
  }
  for (const std::size_t size : {10'001U, 20'000U, 100'000U}) {
    EXPECT_EQ(regularFile(folder.write("file", std::string(size, 'x')), kLimit), std::nullopt)
        << size;
  }
}

TEST(RegularFileTest, LimitsFilesWhoseSizeTheSystemDoesNotTell) {
  const auto status = regularFile("/proc/self/status", kLimit);
  ASSERT_TRUE(status.has_value());
  EXPECT_TRUE(status->starts_with("Name:\t")) << *status;
  EXPECT_EQ(regularFile("/proc/self/status", 100), std::nullopt);
}

TEST(RegularFileTest, AnythingElseIsUnreadable) {
  const TemporaryFolder folder;
  ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
  std::filesystem::create_symlink("/dev/zero", folder.path("device"));
  std::filesystem::create_symlink("fifo", folder.path("link"));
  std::filesystem::create_symlink("missing", folder.path("nowhere"));
  folder.write("enormous", "");
  std::filesystem::resize_file(folder.path("enormous"), std::uintmax_t{8} << 30U);
  const std::ptrdiff_t before = openDescriptors();
  for (const char* name : {"", "fifo", "link", "device", "nowhere", "enormous", "missing"}) {
    EXPECT_EQ(regularFile(folder.path(name), kLimit), std::nullopt) << name;
  }
  EXPECT_EQ(regularFile("", kLimit), std::nullopt);
  EXPECT_EQ(openDescriptors(), before);
}

TEST(RegularFileTest, APathEndsAtNoNulByte) {
  const TemporaryFolder folder;
  EXPECT_EQ(regularFile(folder.write("file", "x") + '\0', kLimit), std::nullopt);
}

}  // namespace
}  // namespace zt::test
