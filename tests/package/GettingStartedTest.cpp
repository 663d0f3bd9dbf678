// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "TestPaths.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/Markdown.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"

// Runs docs/getting-started.md from beginning to end.

namespace {

using testing::HasSubstr;
using zt::test::runProgram;

std::string replaced(std::string text, std::string_view what, const std::string& with) {
  for (std::size_t at = text.find(what); at != std::string::npos;
       at = text.find(what, at + with.size())) {
    text.replace(at, what.size(), with);
  }
  return text;
}

TEST(GettingStartedTest, LeadsToAReportThatIsAcceptedAndOneThatIsSavedAndResent) {
  const zt::test::TemporaryFolder folder;
  using zt::test::LoopbackPort;
  const std::string port = std::to_string(LoopbackPort(LoopbackPort::Refuses).number());
  // The first commands build the library in the clone; the tests use the existing build instead.
  const std::string build = "cmake -B build -G Ninja\ncmake --build build\n";
  std::string script =
      "set -euo pipefail\ntrap 'kill $(jobs -p)' EXIT\ncd " + zt::test::paths::kSource + "\n";
  bool isFirst = true;
  for (const auto& block :
       zt::test::markdownBlocks(zt::test::paths::kSource + "/docs/getting-started.md")) {
    if (!block.name.empty()) {
      folder.write("hello-ztportal/" + block.name, block.content);
    } else if (block.language == "sh") {
      std::string commands = replaced(block.content, ":8025", ":" + port);
      if (isFirst) {
        EXPECT_THAT(commands, HasSubstr(build));
        commands = replaced(commands, build, "");
        commands = replaced(commands, "script/bootstrap", ": script/bootstrap");
        commands =
            replaced(commands, "--install build ", "--install " + zt::test::paths::kBuild + " ");
      }
      isFirst = false;
      script += commands;
    }
  }
  const std::string file = folder.write("script.sh", script);
  const auto [status, output, errors] =
      runProgram("/bin/bash", {file},
                 {.environment = std::vector<std::string>{"PATH=/usr/bin:/bin", "LC_ALL=C",
                                                          "HOME=" + folder.path()}});
  EXPECT_EQ(status, 0) << script << output << errors;
  EXPECT_THAT(output, HasSubstr("Hello\nreported\n"));
  EXPECT_THAT(output, HasSubstr("\"customerId\":\"Kelvane\""));
  EXPECT_THAT(output, HasSubstr("Hello\nkept for later\n{"));
  EXPECT_TRUE(std::regex_search(output, std::regex("\\{[0-9A-F-]{36}\\}\\.ztr\n"))) << output;
  EXPECT_THAT(output, HasSubstr("\n1 sent, 0 left\n"));
}

}  // namespace
