// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <string>
#include <vector>

#include "TestPaths.h"
#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/BroadcastReceiver.h"
#include "tests/support/Inbox.h"
#include "tests/support/SessionBus.h"

// A host inside a bundle is identified by the bundle.

namespace zt::test {
namespace {

using ::testing::Optional;
using ::testing::SizeIs;
using ::testing::StartsWith;

class BundledHostTest : public RealPortalTest {
 protected:
  /// Copies the host to `place` in a new folder.
  std::string installHost(const std::string& place) const {
    const std::string program = folder.path(place);
    std::filesystem::create_directories(std::filesystem::path(program).parent_path());
    std::filesystem::copy_file(zt::test::paths::kBundledHost, program);
    return program;
  }

  int run(const std::string& program) {
    return Subprocess({program, inbox.configurationUrl()}).wait();
  }

  static std::string beginningOfBroadcast(const std::string& object) {
    const std::string line = broadcastLine("ZtPortalGhostNotification", object, {});
    return line + countedText("date");
  }

  const TemporaryFolder folder;
  Inbox inbox;
  SessionBus bus;
  ScopedEnvironment address{"DBUS_SESSION_BUS_ADDRESS", bus.address().c_str()};
  BroadcastReceiver receiver;
};

TEST_F(BundledHostTest, ItsBroadcastAndStoreHaveTheNameOfItsBundle) {
  folder.write("Made-up.app/Contents/Info.plist",
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
               "<key>CFBundleName</key><string>Gl\xc3\xbc"
               "ck &amp; Co</string>"
               "<key>CFBundleShortVersionString</key><string>3.2</string></dict></plist>\n");
  const std::string program = installHost("Made-up.app/Contents/Linux/deeper/host");
  inbox.behave(R"({"answer": "refuse"})");
  EXPECT_EQ(run(program), 1);
  const std::string line = receiver.next().value_or("");
  EXPECT_THAT(line, StartsWith(beginningOfBroadcast("Gl\xc3\xbc"
                                                    "ck & Co")));
  EXPECT_TRUE(line.ends_with(countedText("version") + countedText("3.2"))) << line;
  const auto report = inbox.reports().at(0);
  EXPECT_EQ(content(data.path("Kelvane/Gl\xc3\xbc"
                              "ck & Co/reports/" +
                              report.reportId + ".ztr")),
            inbox.raw(report.number));
}

TEST_F(BundledHostTest, OutsideABundleTheNameIsThatOfTheProgram) {
  const std::string program = installHost("installed/tool");
  inbox.behave(R"({"answer": "refuse"})");
  EXPECT_EQ(run(program), 1);
  const std::string line = receiver.next().value_or("");
  EXPECT_THAT(line, StartsWith(beginningOfBroadcast("tool")));
  EXPECT_TRUE(line.ends_with(countedText("version") + countedText("(null)"))) << line;
  EXPECT_THAT(LinuxFiles().list(data.path("Kelvane/tool/reports")), Optional(SizeIs(1)));
}

}  // namespace
}  // namespace zt::test
