// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/Printing.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/FakePlatform.h"
#include "ztportal/system/ZtHost.h"

namespace {

constexpr const char* kNamed = "ZT_TEST_HOST_NAMED";
constexpr const char* kAsked = "ZT_TEST_HOST_ASKED";

/// The identity of a host depends on the path of its executable and is read once per process. So
/// with the variable `kAsked` set, this program is not a test but such a host: it names itself
/// `kNamed`, if that is set, prints a line for each key in `kAsked`, and exits. It does so in a
/// static initialiser, since hosts may use the library there.
bool runsAsAHost() {
  const char* const asked = std::getenv(kAsked);
  if (asked == nullptr) return false;
  if (const char* const named = std::getenv(kNamed)) {
    ZtHost::setBundleInfo({{"CFBundleName", named}});
  }
  std::istringstream keys(asked);
  for (std::string key; std::getline(keys, key, ' ');) {
    const ZtString value = ZtHost::bundleInfo(key);
    std::cout << key << '=' << (value.isNull() ? "missing" : value.view()) << '\n';
  }
  std::cout.flush();
  std::exit(0);
}

const bool kIsHost = runsAsAHost();

constexpr const char* kInfoPlist = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0">
<dict>
  <key>CFBundleName</key><string>Sch)"
                                   "\xC3\xB6"
                                   R"(n &amp; Gut</string>
  <key>CFBundleShortVersionString</key><string>2.1</string>
  <key>CFBundleVersion</key><string>77</string>
  <key>ANumber</key><integer>7</integer>
</dict>
</plist>
)";

constexpr const char* kInfoPlistWithoutName = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0">
<dict>
  <key>CFBundleVersion</key><string>78</string>
</dict>
</plist>
)";

/// Copies this program to `path`.
void copyThisProgramTo(const std::string& path) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::filesystem::copy_file("/proc/self/exe", path);
}

/// The lines that the program at `path` prints as a host.
std::vector<std::string> linesOf(const std::string& path, const std::string& keys,
                                 const std::optional<std::string>& named = std::nullopt) {
  std::vector<std::string> environment{std::string(kAsked) + "=" + keys};
  if (named) environment.push_back(std::string(kNamed) + "=" + *named);
  zt::test::Subprocess host({path}, {.environment = environment});
  std::vector<std::string> lines;
  while (const auto line = host.readLine(std::chrono::seconds(60))) lines.push_back(*line);
  return lines;
}

TEST(ZtHostTest, AHostOutsideAnyBundleHasTheNameOfItsExecutableAndNothingElse) {
  const zt::test::TemporaryFolder folder;
  copyThisProgramTo(folder.path("bin/my setup"));
  EXPECT_EQ(linesOf(folder.path("bin/my setup"),
                    "CFBundleName CFBundleShortVersionString CFBundleVersion CFBundleNam"),
            (std::vector<std::string>{"CFBundleName=my setup", "CFBundleShortVersionString=missing",
                                      "CFBundleVersion=missing", "CFBundleNam=missing"}));
}

TEST(ZtHostTest, AHostInABundleIsIdentifiedByIt) {
  const zt::test::TemporaryFolder folder;
  folder.write("Setup.app/Contents/Info.plist", kInfoPlist);
  copyThisProgramTo(folder.path("Setup.app/Contents/Linux/bin/setup"));
  EXPECT_EQ(
      linesOf(folder.path("Setup.app/Contents/Linux/bin/setup"),
              "CFBundleName CFBundleShortVersionString CFBundleVersion ANumber Other"),
      (std::vector<std::string>{"CFBundleName=Sch\xC3\xB6n & Gut", "CFBundleShortVersionString=2.1",
                                "CFBundleVersion=77", "ANumber=missing", "Other=missing"}));
}

TEST(ZtHostTest, AHostInABundleWithoutANameHasThatOfItsExecutable) {
  const zt::test::TemporaryFolder folder;
  folder.write("Setup.app/Contents/Info.plist", kInfoPlistWithoutName);
  copyThisProgramTo(folder.path("Setup.app/Contents/Linux/setup"));
  EXPECT_EQ(linesOf(folder.path("Setup.app/Contents/Linux/setup"),
                    "CFBundleName CFBundleShortVersionString CFBundleVersion"),
            (std::vector<std::string>{"CFBundleName=setup", "CFBundleShortVersionString=missing",
                                      "CFBundleVersion=78"}));
}

TEST(ZtHostTest, SetBundleInfoReplacesAllOfTheBundle) {
  const zt::test::TemporaryFolder folder;
  folder.write("Setup.app/Contents/Info.plist", kInfoPlist);
  copyThisProgramTo(folder.path("Setup.app/Contents/Linux/setup"));
  EXPECT_EQ(linesOf(folder.path("Setup.app/Contents/Linux/setup"),
                    "CFBundleName CFBundleShortVersionString CFBundleVersion", "Mine"),
            (std::vector<std::string>{"CFBundleName=Mine", "CFBundleShortVersionString=missing",
                                      "CFBundleVersion=missing"}));
}

// setBundleInfo, in this process.

class ZtHostThatNamesItselfTest : public ::testing::Test {
 protected:
  static std::string executableName() {
    return std::filesystem::read_symlink("/proc/self/exe").filename().string();
  }

  // Information cannot be unset, so this sets empty information.
  ~ZtHostThatNamesItselfTest() override { ZtHost::setBundleInfo({}); }
};

TEST_F(ZtHostThatNamesItselfTest, IsIdentifiedByTheGivenInformation) {
  ZtHost::setBundleInfo({{"CFBundleName", "Setup"},
                         {"CFBundleShortVersionString", "2.1"},
                         {"CFBundleVersion", "77"},
                         {"Other", ""}});
  EXPECT_EQ(ZtHost::bundleInfo("CFBundleName"), "Setup");
  EXPECT_EQ(ZtHost::bundleInfo("CFBundleShortVersionString"), "2.1");
  EXPECT_EQ(ZtHost::bundleInfo("CFBundleVersion"), "77");
  EXPECT_EQ(ZtHost::bundleInfo("Other"), "");
  EXPECT_TRUE(ZtHost::bundleInfo("CFBundleIdentifier").isNull());
  EXPECT_TRUE(ZtHost::bundleInfo("").isNull());
}

TEST_F(ZtHostThatNamesItselfTest, HasTheNameOfItsExecutableByDefault) {
  ZtHost::setBundleInfo({{"CFBundleVersion", "77"}});
  EXPECT_EQ(ZtHost::bundleInfo("CFBundleName"), executableName());
  EXPECT_EQ(ZtHost::bundleInfo("CFBundleVersion"), "77");
  ZtHost::setBundleInfo({});
  EXPECT_EQ(ZtHost::bundleInfo("CFBundleName"), executableName());
  EXPECT_TRUE(ZtHost::bundleInfo("CFBundleVersion").isNull());
}

TEST_F(ZtHostThatNamesItselfTest, MayHaveNoName) {
  ZtHost::setBundleInfo({{"CFBundleName", nullptr}});
  EXPECT_TRUE(ZtHost::bundleInfo("CFBundleName").isNull());
  ZtHost::setBundleInfo({{"CFBundleName", ""}});
  EXPECT_EQ(ZtHost::bundleInfo("CFBundleName"), "");
}

TEST_F(ZtHostThatNamesItselfTest, TheLastInformationReplacesAllBeforeIt) {
  ZtHost::setBundleInfo({{"CFBundleName", "First"}, {"CFBundleVersion", "1"}});
  ZtHost::setBundleInfo({{"CFBundleName", "Second"}});
  EXPECT_EQ(ZtHost::bundleInfo("CFBundleName"), "Second");
  EXPECT_TRUE(ZtHost::bundleInfo("CFBundleVersion").isNull());
}

TEST_F(ZtHostThatNamesItselfTest, MayBeReadWhileAnotherThreadSetsIt) {
  ZtHost::setBundleInfo({{"CFBundleName", "First"}});
  std::thread writer([] {
    for (int round = 0; round < 500; ++round) {
      ZtHost::setBundleInfo({{"CFBundleName", round % 2 != 0 ? "First" : "Second"}});
    }
  });
  int mixtures = 0;
  for (int round = 0; round < 500; ++round) {
    const ZtString seen = ZtHost::bundleInfo("CFBundleName");
    if (seen != "First" && seen != "Second") ++mixtures;
  }
  writer.join();
  EXPECT_EQ(mixtures, 0);
}

TEST(ZtHostTest, ClosesTheConnectionsToTheServerAndToTheBus) {
  zt::test::FakePlatform platform;
  ZtHost::closeConnections();
  EXPECT_EQ(platform.http_.closings, 1);
  EXPECT_EQ(platform.broadcast_.closings, 1);
}

}  // namespace
