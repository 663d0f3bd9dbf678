// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/support/Subprocess.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/platform/broadcast/LinuxBroadcast.h"
#include "ztportal/platform/desktop/LinuxInstalledApplications.h"
#include "ztportal/platform/desktop/LinuxRunningApplications.h"
#include "ztportal/platform/files/LinuxFiles.h"
#include "ztportal/platform/http/CurlHttpTransport.h"
#include "ztportal/platform/identity/LinuxGestalt.h"
#include "ztportal/platform/identity/LinuxMachineIdentity.h"
#include "ztportal/platform/locale/IcuUserLocale.h"
#include "ztportal/platform/process/LinuxSubprocesses.h"

namespace {

using zt::Platform;
using zt::systemPlatform;

template <class Answer, class Question>
bool isA(Question& question) {
  return dynamic_cast<Answer*>(&question) != nullptr;
}

TEST(LinuxPlatformTest, UsesTheOperatingSystem) {
  Platform& platform = systemPlatform();
  EXPECT_TRUE(isA<zt::CurlHttpTransport>(platform.http()));
  EXPECT_TRUE(isA<zt::LinuxFiles>(platform.files()));
  EXPECT_TRUE(isA<zt::LinuxSupportFolder>(platform.supportFolder()));
  EXPECT_TRUE(isA<zt::LinuxRunningApplications>(platform.runningApplications()));
  EXPECT_TRUE(isA<zt::LinuxBroadcast>(platform.broadcast()));
  EXPECT_TRUE(isA<zt::LinuxGestalt>(platform.gestalt()));
  EXPECT_TRUE(isA<zt::LinuxMachineIdentity>(platform.machineIdentity()));
  EXPECT_TRUE(isA<zt::BundleLocalizations>(platform.localizations()));
  EXPECT_TRUE(isA<zt::IcuUserLocale>(platform.userLocale()));
  EXPECT_TRUE(isA<zt::LinuxInstalledApplications>(platform.installedApplications()));
  EXPECT_TRUE(isA<zt::LinuxSubprocesses>(platform.subprocesses()));
}

TEST(LinuxPlatformTest, IsASingleObjectAndTheCurrentPlatform) {
  EXPECT_EQ(&systemPlatform(), &systemPlatform());
  EXPECT_EQ(&Platform::current(), &systemPlatform());
  EXPECT_EQ(&systemPlatform().files(), &systemPlatform().files());
}

void endWithWhatThePlatformSays() {
  const bool answers = Platform::current().files().isFolder("/") &&
                       Platform::current().runningApplications().list().size() < 1'000'000;
  ::_exit(answers ? 0 : 1);
}

TEST(LinuxPlatformTest, WorksWhileTheProgramEnds) {
  const int failed = zt::test::inForkedProcess([] {
    // Runs after the destructors of everything that is created after this line.
    std::atexit(endWithWhatThePlatformSays);
    systemPlatform();
    std::exit(2);
    return 3;
  });
  EXPECT_EQ(failed, 0);
}

}  // namespace
