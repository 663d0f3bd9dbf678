// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "TestPaths.h"
#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/support/Inbox.h"
#include "tests/support/SessionBus.h"

// `ztreport listen` on a private session bus, with programs that report.

namespace zt::test {
namespace {

using nlohmann::json;

constexpr const char* kPath = "/com/kelvane/ZtPortal";
constexpr const char* kName = "com.kelvane.ZtPortal.ZtPortalGhostNotification";
constexpr const char* kGreeting = "ztreport: listening on the session bus\n";

class ListenTest : public testing::Test {
 protected:
  ListenTest() { program.setVariable("DBUS_SESSION_BUS_ADDRESS=" + bus.address()); }

  /// The program, once it listens.
  std::unique_ptr<Subprocess> listen() const {
    auto child = std::make_unique<Subprocess>(
        std::vector<std::string>{paths::kReportProgram, "listen"},
        zt::test::SubprocessOptions{.environment = program.environment()});
    EXPECT_EQ(child->waitForErrorLines(1), kGreeting);
    return child;
  }
  /// Emits another signal on the same bus.
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

TEST_F(ListenTest, PrintsEachBroadcastAsALineOfJson) {
  Inbox inbox;
  const auto child = listen();
  const std::string file = program.write("report.json", describedReport(inbox.configurationUrl()));
  // On a busy machine the session bus may take too long for a report to be broadcast.
  std::size_t sent = 0;
  const auto lineOfOne = [&](const std::vector<std::string>& command) {
    std::optional<std::string> line;
    while (!line && sent < 20) {
      EXPECT_EQ(program.run(command).status, 0);
      ++sent;
      line = child->readLine(std::chrono::seconds(5));
    }
    return line.value_or("");
  };
  const std::string line =
      lineOfOne({"send", file, "--app-name", "Setup \"of\" Ä", "--app-version", "2.1"});
  const json broadcast = json::parse(line);
  EXPECT_EQ(broadcast.size(), 2U);
  EXPECT_EQ(broadcast.at("object"), "Setup \"of\" Ä");
  const json& userInfo = broadcast.at("userInfo");
  EXPECT_EQ(userInfo.size(), 3U);
  EXPECT_EQ(userInfo.at("version"), "2.1");
  EXPECT_EQ(userInfo.at("request"), inbox.raw(sent));
  EXPECT_FALSE(userInfo.at("date").get<std::string>().empty());
  EXPECT_TRUE(line.starts_with("{\"object\":\"Setup \\\"of\\\" Ä\",\"userInfo\":{")) << line;

  const std::string second = lineOfOne({"send", file});
  EXPECT_EQ(json::parse(second).at("userInfo").at("request"), inbox.raw(sent));
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

TEST_F(ListenTest, IgnoresOtherSignals) {
  const auto child = listen();
  emit("/com/kelvane/Other", kName, {"string:path", "dict:string:string:a,b"});
  emit(kPath, "com.kelvane.Other.ZtPortalGhostNotification",
       {"string:interface", "dict:string:string:a,b"});
  emit(kPath, "com.kelvane.ZtPortal.Other", {"string:member", "dict:string:string:a,b"});
  emit(kPath, kName, {});
  emit(kPath, kName, {"string:one"});
  emit(kPath, kName, {"dict:string:string:a,b", "string:swapped"});
  emit(kPath, kName, {"string:numbers", "dict:string:int32:a,1"});
  emit(kPath, kName, {"string:right", "dict:string:string:z,1,a,2"});
  EXPECT_EQ(child->waitForLines(1),
            "{\"object\":\"right\",\"userInfo\":{\"z\":\"1\",\"a\":\"2\"}}\n");
}

TEST_F(ListenTest, SaysWhenThereIsNoSessionBus) {
  EXPECT_EQ(ReportProgram().run({"listen"}),
            refused(3,
                    "no session bus: No medium found; neither DBUS_SESSION_BUS_ADDRESS nor "
                    "XDG_RUNTIME_DIR is set"));
  program.setVariable("DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/bus");
  EXPECT_EQ(program.run({"listen"}),
            refused(3,
                    "no session bus: No such file or directory; DBUS_SESSION_BUS_ADDRESS is "
                    "unix:path=/nonexistent/bus"));
  const SilentBus silent;
  program.setVariable("DBUS_SESSION_BUS_ADDRESS=" + silent.address());
  EXPECT_EQ(
      program.run({"listen"}),
      refused(3, "no session bus: no response within 2 seconds; DBUS_SESSION_BUS_ADDRESS is " +
                     silent.address()));
}

TEST_F(ListenTest, SaysWhenTheConnectionIsLost) {
  const auto child = listen();
  bus.process().signal(SIGTERM);
  EXPECT_EQ(child->wait(), 3);
  EXPECT_EQ(child->waitForOutput(), "");
  EXPECT_THAT(child->waitForErrors(),
              testing::MatchesRegex(
                  std::string(kGreeting) +
                  "ztreport: the connection to the session bus was lost: [A-Z][a-z ]+\n"));
}

TEST_F(ListenTest, SaysWhenItsOutputCannotBeWritten) {
  Subprocess child({paths::kReportProgram, "listen"},
                   {.environment = program.environment(), .output = "/dev/full"});
  ASSERT_EQ(child.waitForErrorLines(1), kGreeting);
  emit(kPath, kName, {"string:object", "dict:string:string:a,b"});
  EXPECT_EQ(child.wait(), 3);
  EXPECT_EQ(child.waitForErrors(),
            std::string(kGreeting) + "ztreport: standard output cannot be written\n");
}

}  // namespace
}  // namespace zt::test
