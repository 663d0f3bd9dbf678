// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "TestPaths.h"
#include "tests/support/Markdown.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"

// Ships the program of docs/shipping.md in each of the ways that the page shows, and runs it.

namespace {

using testing::HasSubstr;
using zt::test::ProgramResult;
using zt::test::runProgram;
namespace paths = zt::test::paths;

constexpr const char* kComplete = "setup is complete\n";

class ShippingTest : public testing::Test {
 protected:
  /// What the programs write, without CMake; what went wrong if anything did.
  std::string run(const std::string& commands) const {
    const std::string script = _folder.write(
        "script.sh", "set -eu\ncd " + _folder.path() +
                         "\ncmake() { command cmake \"$@\" >/dev/null; }\n" + commands);
    const std::vector<std::string> environment = {"PATH=/usr/bin:/bin", "LC_ALL=C", "HOME=/nowhere",
                                                  "ZTPORTAL=" + paths::kBuild,
                                                  "PREFIX=" + _folder.path("prefix")};
    const ProgramResult result = runProgram("/bin/bash", {script}, {.environment = environment});
    if (result.status == 0) return result.output;
    return commands + result.output + result.errors;
  }

  const zt::test::TemporaryFolder _folder;
};

// One test, since all ways start with the same build.
TEST_F(ShippingTest, EveryWayOfThePageLeadsToACompleteProgram) {
  std::vector<std::string> commands;
  for (const auto& block : zt::test::markdownBlocks(paths::kSource + "/docs/shipping.md")) {
    if (!block.name.empty()) _folder.write(block.name, block.content);
    if (block.language == "sh") commands.push_back(block.content);
  }
  ASSERT_EQ(commands.size(), 5U) << "to build, and one for each way";
  ASSERT_EQ(run("cmake --install " + paths::kBuild + " --prefix \"$PREFIX\""), "");
  ASSERT_EQ(run(commands[0]), "");

  EXPECT_EQ(run(commands[1]), kComplete) << "a folder that is moved";
  std::filesystem::remove(_folder.path("second/place/libexec/ztportal-1/dscl"));
  EXPECT_THAT(run("second/place/bin/setup"), HasSubstr("/libexec/ztportal-1/dscl is missing\n"));

  EXPECT_EQ(run(commands[2]), kComplete) << "an AppDir";

  EXPECT_THAT(run(commands[3]), HasSubstr("libztportal1 (>= 1.0)")) << "a Debian package";
  // The package of the library has the component "runtime" in the same folders.
  EXPECT_EQ(run("dpkg-deb -x packages/setup_1.0_*.deb root\n"
                "cmake --install \"$ZTPORTAL\" --component runtime --prefix root/usr\n"
                "root/usr/bin/setup\n"),
            kComplete);

  EXPECT_EQ(run(commands[4]), kComplete) << "linked statically";
  EXPECT_EQ(run("readelf --dynamic static/bin/setup | grep -c libztportal || true"), "0\n");
}

}  // namespace
