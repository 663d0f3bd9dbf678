// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "TestPaths.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/Markdown.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"

// docs/own-servers.md: its reporting server and the answers that it shows.

namespace zt::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// Runs ztreport with a user's folders of its own.
ProgramResult ztreport(const TemporaryFolder& home, std::vector<std::string> arguments) {
  return runProgram(paths::kBuild + "/bin/ztreport", arguments,
                    {.environment = std::vector<std::string>{
                         "HOME=" + home.path(), "PATH=/usr/bin:/bin",
                         "DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/bus"}});
}

TEST(OwnServersTest, TheServerInPythonPassesEveryCheckAndKeepsTheReport) {
  const TemporaryFolder home;
  Subprocess server(
      {"python3", paths::kSource + "/examples/server/server.py", "0", home.path("reports")});
  const auto url = server.readLine();
  ASSERT_TRUE(url.has_value());
  const std::string configuration = *url + "reporting/example.xml";

  const ProgramResult doctor = ztreport(home, {"doctor", "--config-url", configuration});
  EXPECT_EQ(doctor.status, 0);
  EXPECT_THAT(doctor.output,
              AllOf(HasSubstr("ok       report URL"), HasSubstr("ok       version answer     1.0"),
                    Not(HasSubstr("failed "))));

  const ProgramResult sent = ztreport(
      home,
      {"send", paths::kSource + "/examples/reports/repair.json", "--config-url", configuration});
  EXPECT_THAT(sent.output, HasSubstr("accepted: {"));
  const std::string id = sent.output.substr(sent.output.find('{') + 1, 36);
  EXPECT_TRUE(std::filesystem::exists(home.path("reports/" + id + ".xml"))) << id;
}

TEST(OwnServersTest, TheAnswersOfThePageMeanWhatItSays) {
  const auto blocks = markdownBlocks(paths::kSource + "/docs/own-servers.md");
  const auto answer = [&blocks](const std::string& name) {
    const auto block = std::ranges::find(blocks, name, &MarkdownBlock::name);
    EXPECT_NE(block, blocks.end()) << name;
    return block == blocks.end() ? "" : block->content;
  };
  for (const bool isAccepted : {true, false}) {
    const TemporaryFolder home;
    LoopbackServer server([&](const std::string& request) {
      switch (kindOf(request)) {
        case RequestKind::Configuration: {
          std::string text = answer("configuration");
          const std::string documented = "https://reports.example.com/soap";
          return success(
              text.replace(text.find(documented), documented.size(), server.url("/soap")));
        }
        case RequestKind::Version:
          return success(answer("version"));
        case RequestKind::Report:
          break;
      }
      return success(answer(isAccepted ? "accepted" : "refused"));
    });
    const ProgramResult sent =
        ztreport(home, {"send", paths::kSource + "/examples/reports/repair.json", "--config-url",
                        server.url("/reporting/example.xml")});
    EXPECT_EQ(sent.status, isAccepted ? 0 : 1) << sent.errors;
  }
}

}  // namespace
}  // namespace zt::test
