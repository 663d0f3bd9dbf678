// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/support/FailingFiles.h"
#include "tests/support/Printing.h"
#include "ztportal/platform/FakePlatform.h"
#include "ztportal/system/HostFolder.h"
#include "ztportal/system/ZtHost.h"

namespace zt::test {
namespace {

using Operation = FailingFiles::Operation;

constexpr const char* kSupport = "/home/user/.local/share";

class HostFolderTest : public ::testing::Test {
 protected:
  HostFolderTest() { ZtHost::setBundleInfo({{"CFBundleName", "Setup"}}); }
  ~HostFolderTest() override { ZtHost::setBundleInfo({}); }

  FakePlatform platform;
};

TEST_F(HostFolderTest, ASupportFolderIsCreatedUnlessSomethingExistsThere) {
  EXPECT_EQ(supportFolder(kUserDomain, "One/Two"), "/home/user/.local/share/One/Two");
  EXPECT_TRUE(platform.files_.isFolder("/home/user/.local/share/One/Two"));
  EXPECT_EQ(supportFolder(kUserDomain, "One"), "/home/user/.local/share/One");
  ASSERT_TRUE(platform.files_.write("/home/user/.local/share/File", "not a folder"));
  EXPECT_EQ(supportFolder(kUserDomain, "File"), "/home/user/.local/share/File");
  EXPECT_FALSE(platform.files_.isFolder("/home/user/.local/share/File"));
}

TEST_F(HostFolderTest, ThereIsNoSupportFolderWhenOneCannotBeCreated) {
  for (const int failing : {1, 2}) {
    FailingFiles files(platform.files_);
    files.failOnce(Operation::CreateFolders, failing);
    platform.replacedFiles = &files;
    EXPECT_EQ(supportFolder(kUserDomain, "One"), std::nullopt) << failing;
    EXPECT_EQ(platform.files_.isFolder(kSupport), failing == 2);
    EXPECT_FALSE(platform.files_.exists("/home/user/.local/share/One"));
  }
}

TEST_F(HostFolderTest, TheHostsFolderHasTheNamesOfVendorAndHost) {
  EXPECT_EQ(hostFolder(), "/home/user/.local/share/Kelvane/Setup");
  EXPECT_TRUE(platform.files_.isFolder("/home/user/.local/share/Kelvane/Setup"));
}

// Regression: a name like "../../x" put the store outside the vendor's folder.
TEST_F(HostFolderTest, ANameThatLeadsElsewhereIsReplacedByThatOfTheExecutable) {
  for (const std::string name : {"../../x", "/x", "a/b", ".", "..", "a\nb", "\x7F"}) {
    ZtHost::setBundleInfo({{"CFBundleName", name}});
    EXPECT_EQ(hostFolder(), "/home/user/.local/share/Kelvane/ztportal_unit_test") << name;
  }
  for (const std::string name : {"...", "..x", "Setup 2.1", "\xC3\x84", "a\\b"}) {
    ZtHost::setBundleInfo({{"CFBundleName", name}});
    EXPECT_EQ(hostFolder(), "/home/user/.local/share/Kelvane/" + name);
  }
}

}  // namespace
}  // namespace zt::test
