#include <filesystem>
#include <string>
#include <vector>

#include "TestPaths.h"
#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/BroadcastReceiver.h"
#include "tests/support/Inbox.h"
#include "tests/support/SessionBus.h"

// A host that stands in a bundle is known by it.

namespace zt::test {
namespace {

using ::testing::Optional;
using ::testing::SizeIs;
using ::testing::StartsWith;

class BundledHostTest : public RealPortalTest {
 protected:
  /// A copy of the host at `place` in a fresh folder.
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

TEST_F(BundledHostTest, TellsTheNameAndVersionOfItsBundle) {
  folder.write("Made-up.app/Contents/Info.plist",
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
               "<key>CFBundleName</key><string>Gl\xc3\xbc"
               "ck &amp; Co</string>"
               "<key>CFBundleShortVersionString</key><string>3.2</string></dict></plist>\n");
  const std::string program = installHost("Made-up.app/Contents/Linux/host");
  EXPECT_EQ(run(program), 0);
  const std::string told = receiver.next().value_or("");
  EXPECT_THAT(told, StartsWith(beginningOfBroadcast("Gl\xc3\xbc"
                                                    "ck & Co")));
  EXPECT_TRUE(told.ends_with(countedText("version") + countedText("3.2"))) << told;
  EXPECT_THAT(inbox.reports(), SizeIs(1));
}

TEST_F(BundledHostTest, ItsStoreCarriesTheNameOfItsBundle) {
  folder.write("Made-up.app/Contents/Info.plist",
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
               "<key>CFBundleName</key><string>Made up</string></dict></plist>\n");
  const std::string program = installHost("Made-up.app/Contents/Linux/deeper/host");
  inbox.behave(R"({"answer": "refuse"})");
  EXPECT_EQ(run(program), 1);
  EXPECT_THAT(LinuxFiles().list(data.path("Kelvane/Made up/reports")), Optional(SizeIs(1)));
  const auto report = inbox.reports().at(0);
  EXPECT_EQ(content(data.path("Kelvane/Made up/reports/" + report.reportId + ".ztr")),
            inbox.raw(report.number));
}

TEST_F(BundledHostTest, OutsideABundleTheProgramsNameServes) {
  const std::string program = installHost("installed/tool");
  inbox.behave(R"({"answer": "refuse"})");
  EXPECT_EQ(run(program), 1);
  const std::string told = receiver.next().value_or("");
  EXPECT_THAT(told, StartsWith(beginningOfBroadcast("tool")));
  EXPECT_TRUE(told.ends_with(countedText("version") + countedText("(null)"))) << told;
  EXPECT_THAT(LinuxFiles().list(data.path("Kelvane/tool/reports")), Optional(SizeIs(1)));
}

}  // namespace
}  // namespace zt::test
