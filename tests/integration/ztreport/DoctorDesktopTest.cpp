// SPDX-License-Identifier: Apache-2.0
#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

#include "TestPaths.h"
#include "tests/integration/library/CompanionBundle.h"
#include "tests/integration/ztreport/DoctorTest.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/SessionBus.h"
#include "tests/support/TemporaryFolder.h"

// The checks of session bus, companion and test mode. They run while no other test does: a running
// companion switches test mode on for all programs of the machine.

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

TEST_F(DoctorDesktopTest, FindsTheSessionBusOrSaysWhyThereIsNone) {
  constexpr const char* kEnd =
      "; reports are sent anyway, but no companion sees them -> run the program in the user's "
      "desktop session if a companion should see them";
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
  const SessionBus bus;
  program.setVariable("DBUS_SESSION_BUS_ADDRESS=" + bus.address());
  EXPECT_EQ(examine(_server.configurationUrl()).findings.at("session bus"), "ok: available");
}

// The check waited for such a bus as long as sd-bus does, 25 seconds.
TEST_F(DoctorDesktopTest, SaysWhenTheSessionBusDoesNotAnswer) {
  const SilentBus bus;
  program.setVariable("DBUS_SESSION_BUS_ADDRESS=" + bus.address());
  const auto start = std::chrono::steady_clock::now();
  const Diagnosis diagnosis = examine(_server.configurationUrl());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_EQ(diagnosis.status, 0);
  EXPECT_THAT(
      diagnosis.findings.at("session bus"),
      StartsWith("warning: none: no response within 2 seconds; DBUS_SESSION_BUS_ADDRESS is " +
                 bus.address() + "; "));
}

TEST_F(DoctorDesktopTest, IgnoresACompanionThatDoesNotRun) {
  const CompanionBundle companion(ghostList("1"));
  const Diagnosis diagnosis = examine(_server.configurationUrl());
  EXPECT_EQ(diagnosis.findings.at("companion"), "ok: none is running");
  EXPECT_EQ(diagnosis.findings.at("test mode"), "ok: off");
}

TEST_F(DoctorDesktopTest, FindsTheCompanionAndItsTestMode) {
  const std::string url = "ok: http://" + _server.host();
  const struct {
    std::optional<std::string> list;
    const char* companion;
    std::string testMode;
    std::string reportUrl;
  } rows[] = {
      {ghostList("0"), "ok: /.*/Ghost is running", "ok: off", url + "/soap"},
      {std::nullopt,
       "warning: /.*/Ghost is running, but has no Contents/Resources/ghost.plist, so it cannot "
       "switch test mode on -> reinstall the companion if you need test mode",
       "ok: off", url + "/soap"},
      {ghostList("1"), "ok: /.*/Ghost is running",
       "warning: on: every report of this user is a test: its customer ends in _Test, and it goes "
       "to the test URL -> quit the companion or switch its test mode off before sending real "
       "reports",
       url + "/soap-test (test mode)"},
  };
  for (const auto& row : rows) {
    CompanionBundle companion(row.list);
    companion.start();
    const Diagnosis diagnosis = examine(_server.configurationUrl());
    EXPECT_EQ(diagnosis.status, 0);
    EXPECT_THAT(diagnosis.findings.at("companion"), MatchesRegex(row.companion));
    EXPECT_EQ(diagnosis.findings.at("test mode"), row.testMode);
    EXPECT_EQ(diagnosis.findings.at("report URL"), row.reportUrl);
  }
  EXPECT_THAT(_server.requests().back(), StartsWith("POST /soap-test "));
}

// A host that was installed without the helper programs reported no browsers, and nothing said why.
TEST_F(DoctorDesktopTest, NamesTheHelperProgramsThatAreMissing) {
  EXPECT_EQ(examine(_server.configurationUrl()).findings.at("helper programs"), "ok: installed");
  if (std::filesystem::is_directory(paths::kLibexecFolder)) {
    GTEST_SKIP() << "the library is installed here";
  }
  const TemporaryFolder prefix;
  std::filesystem::create_directories(prefix.path("lib"));
  std::filesystem::copy_file(
      std::filesystem::path(paths::kReportProgram).parent_path() / "../lib/libztportal.so.1",
      prefix.path("lib/libztportal.so.1"));
  program.setVariable("LD_LIBRARY_PATH=" + prefix.path("lib"));
  const Diagnosis diagnosis = examine(_server.configurationUrl());
  EXPECT_EQ(diagnosis.status, 0);
  const std::string folder = prefix.path("libexec/ztportal-1/");
  EXPECT_EQ(diagnosis.findings.at("helper programs"),
            "warning: missing: " + folder + "dscl, " + folder +
                "ztportal-applications; reports do not list the browsers and e-mail clients of "
                "this machine, or never say that the user is an administrator -> install the "
                "library with them, see docs/shipping.md");
}

TEST_F(DoctorDesktopTest, FindsATestModeWithoutATestUrl) {
  CompanionBundle companion(ghostList("1"));
  companion.start();
  _server.setResponse(RequestKind::Configuration,
                      success("<c><defSOAP>http://127.0.0.1:1/</defSOAP></c>"));
  const Diagnosis diagnosis = examine(_server.configurationUrl());
  EXPECT_EQ(diagnosis.status, 1);
  EXPECT_EQ(diagnosis.findings.at("report URL"),
            "failed: the configuration has none for test mode -> correct the customer's "
            "configuration document");
  EXPECT_EQ(diagnosis.findings.at("version answer"),
            "warning: skipped: there is no report URL -> fix the failed check above");
}

}  // namespace
}  // namespace zt::test
