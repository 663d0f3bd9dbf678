#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "TestPaths.h"
#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/support/Inbox.h"
#include "tests/support/SessionBus.h"

// `ztreport listen` on a session bus of the test's own, beside programs that report.

namespace {

using nlohmann::json;
using zt::test::contentOf;
using zt::test::describedFlatReport;
using zt::test::describedReport;
using zt::test::Finished;
using zt::test::Inbox;
using zt::test::ReportProgram;
using zt::test::SessionBus;
using zt::test::Subprocess;

constexpr const char* kGreeting = "ztreport: listening on the session bus\n";

class ListenTest : public testing::Test {
 protected:
  ListenTest() { program.setVariable("DBUS_SESSION_BUS_ADDRESS=" + bus.address()); }

  /// The program, once it listens.
  std::unique_ptr<Subprocess> listen() const {
    auto child = std::make_unique<Subprocess>(
        std::vector<std::string>{zt::test::paths::kReportProgram, "listen"},
        zt::test::SubprocessOptions{.environment = program.environment()});
    EXPECT_EQ(child->waitForErrorLines(1), kGreeting);
    return child;
  }
  /// Somebody else's signal on the same bus.
  void emit(const std::string& path, const std::string& name,
            const std::vector<std::string>& values) const {
    std::vector<std::string> arguments{"dbus-send", "--bus=" + bus.address(), "--type=signal", path,
                                       name};
    arguments.insert(arguments.end(), values.begin(), values.end());
    ASSERT_EQ(Subprocess(arguments).wait(), 0);
  }

  SessionBus bus;
  ReportProgram program;
};

TEST_F(ListenTest, TellsEachBroadcastAsALineOfJson) {
  Inbox inbox;
  const auto child = listen();
  const std::string file = program.write("report.json", describedReport(inbox.configurationUrl()));
  ASSERT_EQ(
      program.run({"send", file, "--app-name", "Setup \"of\" Ä", "--app-version", "2.1"}).status,
      0);
  const std::string lines = child->waitForLines(1);
  const json told = json::parse(lines);
  EXPECT_EQ(told.size(), 2U);
  EXPECT_EQ(told.at("object"), "Setup \"of\" Ä");
  const json& userInfo = told.at("userInfo");
  EXPECT_EQ(userInfo.size(), 3U);
  EXPECT_EQ(userInfo.at("version"), "2.1");
  EXPECT_EQ(userInfo.at("request"), inbox.raw(1));
  EXPECT_FALSE(userInfo.at("date").get<std::string>().empty());
  EXPECT_TRUE(lines.starts_with("{\"object\":\"Setup \\\"of\\\" Ä\",\"userInfo\":{")) << lines;
  EXPECT_EQ(lines.find('\n'), lines.size() - 1);

  ASSERT_EQ(program.run({"send", file}).status, 0);
  const std::string both = child->waitForLines(2);
  EXPECT_EQ(json::parse(both.substr(lines.size())).at("userInfo").at("request"), inbox.raw(2));
}

TEST_F(ListenTest, EndsWithASignal) {
  for (const int number : {SIGINT, SIGTERM}) {
    const auto child = listen();
    child->signal(number);
    EXPECT_EQ(child->wait(), 0) << number;
    EXPECT_EQ(child->waitForOutput(), "");
    EXPECT_EQ(child->waitForErrors(), kGreeting);
  }
}

TEST_F(ListenTest, LeavesOtherSignalsAlone) {
  constexpr const char* kPath = "/com/kelvane/ZtPortal";
  constexpr const char* kName = "com.kelvane.ZtPortal.ZtPortalGhostNotification";
  const auto child = listen();
  emit("/com/kelvane/Other", kName, {"string:path", "dict:string:string:a,b"});
  emit(kPath, "com.kelvane.Other.ZtPortalGhostNotification",
       {"string:interface", "dict:string:string:a,b"});
  emit(kPath, "com.kelvane.ZtPortal.Other", {"string:member", "dict:string:string:a,b"});
  emit(kPath, kName, {});
  emit(kPath, kName, {"string:one"});
  emit(kPath, kName, {"dict:string:string:a,b", "string:turned"});
  emit(kPath, kName, {"string:numbers", "dict:string:int32:a,1"});
  emit(kPath, kName, {"string:right", "dict:string:string:z,1,a,2"});
  EXPECT_EQ(child->waitForLines(1),
            "{\"object\":\"right\",\"userInfo\":{\"z\":\"1\",\"a\":\"2\"}}\n");
}

TEST_F(ListenTest, SaysWhenThereIsNoSessionBus) {
  const ReportProgram other;
  const Finished unset = other.run({"listen"});
  EXPECT_EQ(unset.status, 3);
  EXPECT_EQ(unset.output, "");
  EXPECT_EQ(unset.errors,
            "ztreport: no session bus: No medium found; neither DBUS_SESSION_BUS_ADDRESS nor "
            "XDG_RUNTIME_DIR is set\n");

  program.setVariable("DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/bus");
  const Finished absent = program.run({"listen"});
  EXPECT_EQ(absent.status, 3);
  EXPECT_EQ(absent.output, "");
  EXPECT_EQ(absent.errors,
            "ztreport: no session bus: No such file or directory; DBUS_SESSION_BUS_ADDRESS is "
            "unix:path=/nonexistent/bus\n");
}

TEST_F(ListenTest, SaysWhenTheBusGoesAway) {
  const auto child = listen();
  bus.process().signal(SIGTERM);
  EXPECT_EQ(child->wait(), 3);
  EXPECT_EQ(child->waitForOutput(), "");
  EXPECT_THAT(child->waitForErrors(),
              testing::MatchesRegex(std::string(kGreeting) +
                                    "ztreport: the session bus went away: [A-Z][a-z ]+\n"));
}

TEST_F(ListenTest, SaysWhenItsOutputCannotBeWritten) {
  Subprocess child({zt::test::paths::kReportProgram, "listen"},
                   {.environment = program.environment(), .output = "/dev/full"});
  ASSERT_EQ(child.waitForErrorLines(1), kGreeting);
  const std::string file = program.write("report.json", describedFlatReport());
  EXPECT_EQ(program.run({"send", file, "--config-url", "http://127.0.0.1:1/"}).status, 1);
  EXPECT_EQ(child.wait(), 3);
  EXPECT_EQ(child.waitForErrors(),
            std::string(kGreeting) + "ztreport: standard output cannot be written\n");
}

}  // namespace
