#include <optional>

#include "tests/integration/library/CompanionBundle.h"
#include "tests/integration/ztreport/DoctorTest.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/SessionBus.h"

// Session bus, companion and test mode, each in its good and its bad case. A program of its own,
// which runs while no other test does: where the companion cannot be hidden, all programs of the
// machine are in test mode.

namespace zt::test {
namespace {

using testing::MatchesRegex;
using testing::StartsWith;

std::string ghostList(const std::string& value) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
         "<key>ztTestMode</key><string>" +
         value + "</string></dict></plist>\n";
}

class DoctorDesktopTest : public DoctorTest {
 protected:
  ReportingServer _server;
};

TEST_F(DoctorDesktopTest, FindsTheSessionBus) {
  const SessionBus bus;
  program.setVariable("DBUS_SESSION_BUS_ADDRESS=" + bus.address());
  EXPECT_EQ(examine(_server.configurationUrl()).findings.at("session bus"), "ok: there");
}

TEST_F(DoctorDesktopTest, FindsThatThereIsNoSessionBus) {
  constexpr const char* kEnd =
      "; reports are sent all the same, but no companion sees them -> run the program within the "
      "user's desktop session if a companion shall see them";
  EXPECT_EQ(examine(_server.configurationUrl()).findings.at("session bus"),
            std::string("warning: none: No medium found; neither DBUS_SESSION_BUS_ADDRESS nor "
                        "XDG_RUNTIME_DIR is set") +
                kEnd);
  program.setVariable("XDG_RUNTIME_DIR=/nonexistent");
  const Diagnosis diagnosis = examine(_server.configurationUrl());
  EXPECT_EQ(diagnosis.status, 0);
  EXPECT_EQ(diagnosis.findings.at("session bus"),
            std::string("warning: none: No such file or directory; XDG_RUNTIME_DIR is "
                        "/nonexistent") +
                kEnd);
}

TEST_F(DoctorDesktopTest, SeesNoCompanion) {
  const CompanionBundle companion(ghostList("1"));  // does not run
  const Diagnosis diagnosis = examine(_server.configurationUrl());
  EXPECT_EQ(diagnosis.findings.at("companion"), "ok: none runs");
  EXPECT_EQ(diagnosis.findings.at("test mode"), "ok: off");
}

TEST_F(DoctorDesktopTest, SeesACompanionThatKeepsTheTestModeOff) {
  CompanionBundle companion(ghostList("0"));
  companion.start();
  const Diagnosis diagnosis = examine(_server.configurationUrl());
  EXPECT_EQ(diagnosis.status, 0);
  EXPECT_THAT(diagnosis.findings.at("companion"), MatchesRegex("ok: /.*/Ghost runs"));
  EXPECT_EQ(diagnosis.findings.at("test mode"), "ok: off");
  EXPECT_EQ(diagnosis.findings.at("report URL"), "ok: http://" + _server.host() + "/soap");
}

TEST_F(DoctorDesktopTest, FindsACompanionWithoutItsList) {
  CompanionBundle companion(std::nullopt);
  companion.start();
  const Diagnosis diagnosis = examine(_server.configurationUrl());
  EXPECT_EQ(diagnosis.status, 0);
  EXPECT_THAT(diagnosis.findings.at("companion"),
              MatchesRegex("warning: /.*/Ghost runs, but has no Contents/Resources/ghost.plist and "
                           "so cannot switch the test mode on -> install the companion again if "
                           "the test mode is wanted"));
  EXPECT_EQ(diagnosis.findings.at("test mode"), "ok: off");
}

TEST_F(DoctorDesktopTest, FindsTheTestMode) {
  CompanionBundle companion(ghostList("1"));
  companion.start();
  const Diagnosis diagnosis = examine(_server.configurationUrl());
  EXPECT_EQ(diagnosis.status, 0);
  EXPECT_THAT(diagnosis.findings.at("companion"), MatchesRegex("ok: /.*/Ghost runs"));
  EXPECT_EQ(diagnosis.findings.at("test mode"),
            "warning: on: every report of this user is a test, its customer ends in _Test, and it "
            "goes to the test URL -> quit the companion, or switch its test mode off, before real "
            "reports are sent");
  EXPECT_EQ(diagnosis.findings.at("report URL"),
            "ok: http://" + _server.host() + "/soap-test (test mode)");
  ASSERT_EQ(_server.requests().size(), 2U);
  EXPECT_THAT(_server.requests()[1], StartsWith("POST /soap-test "));
}

TEST_F(DoctorDesktopTest, FindsATestModeWithoutATestUrl) {
  CompanionBundle companion(ghostList("1"));
  companion.start();
  _server.setResponse(RequestKind::Configuration,
                      success("<c><defSOAP>http://127.0.0.1:1/</defSOAP></c>"));
  const Diagnosis diagnosis = examine(_server.configurationUrl());
  EXPECT_EQ(diagnosis.status, 1);
  EXPECT_EQ(diagnosis.findings.at("report URL"),
            "failed: the configuration names none for the test mode -> have the customer's "
            "configuration document mended");
  EXPECT_EQ(diagnosis.findings.at("version answer"),
            "warning: skipped: there is no report URL -> mend what failed above");
}

}  // namespace
}  // namespace zt::test
