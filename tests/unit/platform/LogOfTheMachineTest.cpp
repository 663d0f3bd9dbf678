// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/CollectedLog.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/SessionBus.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/broadcast/LinuxBroadcast.h"
#include "ztportal/platform/desktop/LinuxInstalledApplications.h"
#include "ztportal/platform/desktop/LinuxRunningApplications.h"
#include "ztportal/platform/plist/Bundle.h"
#include "ztportal/platform/process/LinuxSubprocesses.h"

// What a host's log handler gets to know about the machine. Each event happens twice: what every
// report would meet again is logged once.

namespace zt::test {

namespace {

using Lines = std::vector<std::string>;

class LogOfTheMachineTest : public testing::Test {
 protected:
  /// What is logged while `happen` is called twice.
  template <class Happen>
  Lines loggedDuring(Happen happen) const {
    const CollectedLog logged;
    happen();
    happen();
    return logged.lines();
  }
  std::string bundle(std::string_view info) const {
    _folder.write("Ghost.app/Contents/Info.plist", info);
    return _folder.path("Ghost.app");
  }

  TemporaryFolder _folder;
};

TEST_F(LogOfTheMachineTest, ABundleThatOthersMayChange) {
  const std::string path = bundle("<plist><dict/></plist>");
  ASSERT_EQ(::chmod(path.c_str(), 0777), 0);
  EXPECT_EQ(
      loggedDuring([&] { Bundle::at(path); }),
      Lines{"warning configuration: " + path + " is ignored, because another user may change it"});
}

TEST_F(LogOfTheMachineTest, ABundleWithoutAReadableInfo) {
  const std::string path = bundle("garbage");
  EXPECT_EQ(loggedDuring([&] { Bundle::at(path); }),
            Lines{"warning configuration: " + path +
                  "/Contents/Info.plist cannot be read as a property list"});
}

TEST_F(LogOfTheMachineTest, NoProcessTable) {
  EXPECT_EQ(loggedDuring([&] { LinuxRunningApplications(_folder.path("none")).list(); }),
            Lines{"warning configuration: " + _folder.path("none") +
                  " cannot be read, so companions are not found"});
}

TEST_F(LogOfTheMachineTest, NoSessionBus) {
  const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/none/bus");
  LinuxBroadcast broadcast;
  EXPECT_EQ(loggedDuring([&] { broadcast.post("Name", "object", {}); }),
            Lines{"info broadcast: there is no session bus: No such file or directory"});
}

TEST_F(LogOfTheMachineTest, ASessionBusThatDoesNotRespond) {
  const SilentBus silent;
  const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", silent.address().c_str());
  LinuxBroadcast broadcast;
  EXPECT_EQ(loggedDuring([&] { broadcast.post("Name", "object", {}); }),
            (Lines{"warning broadcast: the session bus does not respond; it is left alone for 60 "
                   "seconds",
                   "debug broadcast: not broadcast, because the session bus does not respond"}));
}

TEST_F(LogOfTheMachineTest, AProgramThatWritesTooMuch) {
  const std::string message =
      "warning inventory: /usr/bin/yes was killed, because it wrote more than a mebibyte";
  EXPECT_EQ(loggedDuring([] { LinuxSubprocesses("").output("/usr/bin/yes", {"80"}); }),
            (Lines{message, message}));
}

TEST_F(LogOfTheMachineTest, AHelperProgramThatIsMissing) {
  LinuxInstalledApplications applications(_folder.path("libexec"), _folder.path());
  EXPECT_EQ(
      loggedDuring([&] { applications.prepared({}, std::array<std::string_view, 1>{"http:"}); }),
      Lines{"warning inventory: ztportal-applications is not installed, or others may change its "
            "folder: no applications are found"});
}

TEST_F(LogOfTheMachineTest, AHelperProgramThatFails) {
  const std::string program = _folder.write("libexec/ztportal-applications", "#!/bin/sh\nexit 1\n");
  ASSERT_EQ(::chmod(program.c_str(), 0755), 0);
  LinuxInstalledApplications applications(_folder.path("libexec"), _folder.path());
  const std::string message =
      "warning inventory: ztportal-applications did not answer every question";
  EXPECT_EQ(
      loggedDuring([&] {
        applications.prepared({}, std::array<std::string_view, 1>{"http:"})->defaultFor("http:");
      }),
      (Lines{message, message}));
}

}  // namespace

}  // namespace zt::test
