// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "TestPaths.h"
#include "tests/support/Inbox.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/Markdown.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"

// The programs of examples/, built against the installed library. They reach the customer's
// configuration host only through a proxy, which is an inbox.

namespace zt::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;

using Pools = std::vector<std::string>;

class ExamplesTest : public testing::Test {
 protected:
  ProgramResult run(const std::string& example, const std::vector<std::string>& arguments = {}) {
    return runFile(paths::kExamples + "." + example + "/" + example, arguments);
  }
  /// Runs a program that finds the installed library and its programs.
  ProgramResult runFile(const std::string& program, const std::vector<std::string>& arguments) {
    return runProgram(program, arguments,
                      {.environment = std::vector<std::string>{
                           "XDG_DATA_HOME=" + _data.path(), "http_proxy=" + _inbox.url(),
                           "PATH=" + paths::kInstalled + "/bin:/usr/bin:/bin", "HOME=/home/ada",
                           "USER=" + _user, "QT_QPA_PLATFORM=offscreen", "no_proxy=127.0.0.1",
                           "PKG_CONFIG_PATH=" + paths::kInstalledLibraries + "/pkgconfig",
                           "LD_LIBRARY_PATH=" + paths::kInstalledLibraries,
                           "DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/bus"}});
  }

  /// Pool types of every report that the inbox has, oldest first.
  std::vector<Pools> receivedPools() {
    std::vector<Pools> pools;
    for (const auto& report : _inbox.reports()) pools.push_back(report.pools);
    std::ranges::reverse(pools);
    return pools;
  }

  std::size_t savedReports(const std::string& host) const {
    const std::filesystem::path folder = _data.path("Kelvane/" + host + "/reports");
    if (!std::filesystem::exists(folder)) return 0;
    const std::filesystem::directory_iterator files(folder);
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
  }

  std::string _user = "nobody-known";
  Inbox _inbox;
  TemporaryFolder _data;
};

TEST_F(ExamplesTest, InstallerSendsItsRun) {
  const ProgramResult installer = run("installer");
  EXPECT_EQ(installer.output,
            "The server accepted the report.\n"
            "Saved reports of earlier runs: 0 sent, 0 left.\n");
  EXPECT_EQ(installer.status, 0);
  EXPECT_THAT(receivedPools(), ElementsAre(Pools{"COMPUTER_SYSTEM", "EXECUTION"}));
  const auto report = _inbox.reports().at(0);
  EXPECT_EQ(report.customerId, "Kelvane");
  EXPECT_EQ(report.applicationVersion, "2.1.77");
  const std::string request = _inbox.raw(report.number);
  EXPECT_THAT(request, HasSubstr(">42 files<"));
  EXPECT_THAT(request, HasSubstr(">DESKTOP_ICON<"));
}

TEST_F(ExamplesTest, InstallerReportsToTheCustomerThatItIsToldAbout) {
  EXPECT_EQ(run("installer", {"Norvantel"}).status, 0);
  EXPECT_EQ(_inbox.reports().at(0).customerId, "Norvantel");

  const ProgramResult unknown = run("installer", {"norvantel"});
  EXPECT_EQ(unknown.errors, "installer: there is no customer \"norvantel\"\n");
  EXPECT_EQ(unknown.status, 2);
  EXPECT_EQ(_inbox.reports().size(), 1U);
}

TEST_F(ExamplesTest, InstallerSavesWhatIsRefusedAndSendsItTheNextTime) {
  _inbox.behave(R"({"answer": "refuse"})");
  const ProgramResult refused = run("installer");
  EXPECT_THAT(refused.output,
              MatchesRegex("The server did not accept the report. It is saved as\n"
                           "  .*/Kelvane/Example Installer/reports/\\{.*\\}.ztr\n"));
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(savedReports("Example Installer"), 1U);

  _inbox.behave(R"({"answer": "accept"})");
  const ProgramResult accepted = run("installer");
  EXPECT_EQ(accepted.output,
            "The server accepted the report.\n"
            "Saved reports of earlier runs: 1 sent, 0 left.\n");
  EXPECT_EQ(accepted.status, 0);
  EXPECT_EQ(savedReports("Example Installer"), 0U);
}

TEST_F(ExamplesTest, PrivacyReportsOnlyWithConsentAndWithoutTheUser) {
  const ProgramResult asked = run("privacy", {"ask"});
  EXPECT_THAT(asked.output, HasSubstr("May this program report its runs?"));
  EXPECT_EQ(asked.status, 1);
  EXPECT_EQ(run("privacy", {"yes"}).output, "The server has accepted the report.\n");
  ASSERT_EQ(_inbox.reports().size(), 1U);
  const std::string request = _inbox.raw(_inbox.reports().at(0).number);
  EXPECT_THAT(request, HasSubstr("<MachineID xsi:type=\"xsd:string\"></MachineID>"));
  EXPECT_THAT(request, HasSubstr(">LOG &amp; FOLDER<"));
  EXPECT_THAT(request, HasSubstr(">~/Documents<"));

  _user = "Documents";
  EXPECT_EQ(run("privacy", {"ask"}).output, "The host's request hook has dropped the report.\n");
  EXPECT_EQ(run("privacy", {"no"}).output,
            "Deleted 0 saved reports.\nThe user has revoked the consent to reports.\n");
  EXPECT_EQ(_inbox.reports().size(), 1U);
}

TEST_F(ExamplesTest, ResenderSendsWhatTheInstallerHasSaved) {
  const std::string url = "http://config.kelvane.example/reporting/kelvane.xml";
  _inbox.behave(R"({"answer": "refuse"})");
  run("installer");
  const ProgramResult refused = run("resender", {url});
  EXPECT_THAT(refused.output, MatchesRegex("\\{.*\\}: The response is not the expected one.\n"
                                           "0 sent, 1 left\n"));
  EXPECT_THAT(refused.errors, HasSubstr("report: not accepted by "));
  EXPECT_EQ(refused.status, 1);

  _inbox.behave(R"({"answer": "accept"})");
  const ProgramResult accepted = run("resender", {url});
  EXPECT_THAT(accepted.output, MatchesRegex("\\{.*\\}: The server has accepted the report.\n"
                                            "1 sent, 0 left\n"));
  EXPECT_EQ(accepted.errors, "");
  EXPECT_EQ(accepted.status, 0);
}

TEST_F(ExamplesTest, DiagnoseSendsWhatItFound) {
  const ProgramResult diagnose = run("diagnose");
  EXPECT_THAT(diagnose.output, HasSubstr(" Route: "));
  EXPECT_THAT(diagnose.output, HasSubstr(" Disk: "));
  EXPECT_THAT(diagnose.output, HasSubstr("ok      Report folder: reports are saved in " +
                                         _data.path("Kelvane/Example Diagnose/reports\n")));
  EXPECT_THAT(diagnose.output, HasSubstr("\nThe server accepted the report.\n"));
  EXPECT_EQ(diagnose.status, 0);
  EXPECT_THAT(receivedPools(), ElementsAre(Pools{"DIAGNOSE"}));
  const std::string request = _inbox.raw(_inbox.reports().at(0).number);
  EXPECT_THAT(request, HasSubstr(">AUTOMATIC<"));
}

TEST_F(ExamplesTest, DiagnoseSavesWhatIsRefused) {
  _inbox.behave(R"({"answer": "refuse"})");
  const ProgramResult diagnose = run("diagnose");
  EXPECT_THAT(diagnose.output, HasSubstr("\nThe server did not accept the report; it is saved.\n"));
  EXPECT_EQ(diagnose.status, 1);
  EXPECT_EQ(savedReports("Example Diagnose"), 1U);
}

TEST_F(ExamplesTest, ConnectionManagerCountsEachPeriodFromZero) {
  const ProgramResult manager = run("connection-manager");
  EXPECT_EQ(manager.output,
            "Connections: 2, messages: 1. The server accepted the report.\n"
            "Connections: 1, messages: 0. The server accepted the report.\n");
  EXPECT_EQ(manager.status, 0);
  EXPECT_THAT(receivedPools(), ElementsAre(Pools{"CONNECTIONMANAGER"}, Pools{"CONNECTIONMANAGER"}));
  for (const auto& report : _inbox.reports()) {
    EXPECT_THAT(_inbox.raw(report.number), HasSubstr(">356938035643809<"))
        << "the device stays the same";
  }
}

TEST_F(ExamplesTest, ConnectionManagerSavesEachPeriodThatIsRefused) {
  _inbox.behave(R"({"answer": "refuse"})");
  EXPECT_EQ(run("connection-manager").status, 1);
  EXPECT_EQ(savedReports("Example Connection Manager"), 2U);
}

/// The number after `label` in a line of `output`; a large one if there is no such line.
double numberAfter(const std::string& label, const std::string& output) {
  const std::size_t begin = output.find(label);
  return begin == output.npos ? 1e9 : std::stod(output.substr(begin + label.size()));
}

// A blocking call would stop the frames for two seconds: the server accepts connections, and says
// nothing. What a busy machine adds to the usual gap is less.
TEST_F(ExamplesTest, EventLoopsKeepDrawingWhileTheServerHangs) {
  const LoopbackPort silent(LoopbackPort::Listens);
  for (const std::string example : {"glib-loop", "qt-window"}) {
    if (!std::filesystem::exists(paths::kExamples + "." + example)) continue;
    const ProgramResult loop = run(example, {"3", silent.url("/configuration.xml")});
    EXPECT_EQ(loop.status, 0) << loop.errors;
    EXPECT_LT(numberAfter("Longest time between two frames: ", loop.output), 1500) << example;
    EXPECT_GE(numberAfter("left for the next run: ", loop.output), 1) << example;
  }
  EXPECT_EQ(run("glib-loop", {"2"}).status, 0);
  EXPECT_FALSE(receivedPools().empty());
}

TEST_F(ExamplesTest, CHostSendsItsRunAndThenWhatWasSaved) {
  _inbox.behave(R"({"answer": "refuse"})");
  const ProgramResult refused = run("c-host", {_inbox.configurationUrl()});
  EXPECT_THAT(refused.output, MatchesRegex("The response is not the expected one.\nIt is saved as\n"
                                           "  .*/Kelvane/Example C Host/reports/\\{.*\\}.ztr\n"));
  EXPECT_THAT(refused.errors, HasSubstr("c-host: report: not accepted by "));
  EXPECT_EQ(refused.status, 1);

  _inbox.behave(R"({"answer": "accept"})");
  const ProgramResult accepted = run("c-host", {_inbox.configurationUrl()});
  EXPECT_THAT(accepted.output, MatchesRegex("The server has accepted the report.\n"
                                            "\\{.*\\}: The server has accepted the report.\n"
                                            "Saved reports of earlier runs: 1 sent, 0 left.\n"));
  EXPECT_EQ(accepted.status, 0);
  const Pools pools{"COMPUTER_SYSTEM", "EXECUTION"};
  EXPECT_THAT(receivedPools(), ElementsAre(pools, pools, pools));
  const std::string request = _inbox.raw(_inbox.reports().at(0).number);
  EXPECT_THAT(request, HasSubstr(">42 files<"));
  EXPECT_THAT(request, HasSubstr(">COPIED<"));
}

TEST_F(ExamplesTest, RustReportsThroughTheCInterface) {
  if (!std::filesystem::exists(paths::kExamples + ".rust")) GTEST_SKIP() << "rustc is missing";
  const ProgramResult accepted = run("rust", {_inbox.configurationUrl()});
  EXPECT_EQ(accepted.output, "The server accepted the report.\n");
  EXPECT_EQ(accepted.status, 0) << accepted.errors;
  EXPECT_THAT(receivedPools(), ElementsAre(Pools{"EXECUTION"}));

  _inbox.behave(R"({"answer": "refuse"})");
  const ProgramResult refused = run("rust", {_inbox.configurationUrl()});
  EXPECT_EQ(refused.errors, "Error: \"The response is not the expected one.\"\n");
  EXPECT_EQ(refused.status, 1);
}

TEST_F(ExamplesTest, PostInstallReportsTheInstallationAndKeepsItsResult) {
  const std::string hook = paths::kSource + "/examples/post-install/post-install configure";
  const auto runHook = [&](const std::string& root, const std::string& oldVersion) {
    return runFile("/bin/sh", {"-c", "DPKG_ROOT=" + root + " exec sh " + hook + oldVersion});
  };
  EXPECT_EQ(runHook(_data.path(), ""), (ProgramResult{0, "", ""}));
  EXPECT_THAT(_inbox.raw(1), HasSubstr(">installation<"));
  EXPECT_EQ(runHook("/proc", " 2.0").status, 1) << "no folder can be created there";
  EXPECT_THAT(_inbox.raw(2), AllOf(HasSubstr(">upgrade<"), HasSubstr(">EXIT_STATUS<")));

  _inbox.behave(R"({"answer": "refuse"})");
  EXPECT_EQ(runHook(_data.path(), " 2.0").status, 0);
  EXPECT_EQ(savedReports("Example Package"), 1U);
}

// The page starts with a program in C, which is built with the commands that follow it.
TEST_F(ExamplesTest, ProgramOfTheBindingsPageReports) {
  const TemporaryFolder folder;
  std::string commands = "set -e; cd " + folder.path() + "\n";
  for (const MarkdownBlock& block : markdownBlocks(paths::kSource + "/docs/bindings.md")) {
    if (block.language == "c") folder.write(block.name, block.content);
    if (block.language == "sh") commands += block.content;
  }
  const std::string port = ":8025";
  commands.replace(commands.find(port), port.size(), ":" + std::to_string(_inbox.port()));
  const ProgramResult hello = runFile("/bin/sh", {"-c", commands});
  EXPECT_EQ(hello, (ProgramResult{0, "", ""}));
  EXPECT_THAT(receivedPools(), ElementsAre(Pools{"EXECUTION"}));
}

}  // namespace
}  // namespace zt::test
