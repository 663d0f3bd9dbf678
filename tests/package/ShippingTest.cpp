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
using zt::test::markdownBlocks;
using zt::test::ProgramResult;
using zt::test::runProgram;
using zt::test::TemporaryFolder;
namespace paths = zt::test::paths;

constexpr const char* kComplete = "setup is complete\n";

class ShippingTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    _folder = new TemporaryFolder;
    const std::string prefix = _folder->path("prefix");
    ASSERT_EQ(run("cmake --install " + paths::kBuild + " --prefix " + prefix), "");
    bool hasProject = false;
    for (const auto& block : markdownBlocks(paths::kSource + "/docs/shipping.md")) {
      if (block.language == "cpp") _folder->write("setup/main.cpp", block.content);
      if (block.language == "cmake" && !hasProject) {
        _folder->write("setup/CMakeLists.txt", block.content);
        hasProject = true;
      }
      if (block.language == "sh") _commands.push_back(block.content);
    }
    ASSERT_EQ(_commands.size(), 5U) << "to build, and one for each way";
    ASSERT_EQ(run(_commands[0]), "");
  }
  static void TearDownTestSuite() {
    delete _folder;
    _folder = nullptr;
  }

  /// The output of a program in it, without that of CMake; what went wrong if anything did.
  static std::string run(const std::string& commands) {
    const std::string script = _folder->write("script.sh", "set -eu\ncd " + _folder->path() +
                                                               "\ncmake() { command cmake \"$@\" "
                                                               ">/dev/null; }\n" +
                                                               commands);
    const ProgramResult result =
        runProgram("/bin/bash", {script},
                   {.environment = std::vector<std::string>{
                        "PATH=/usr/bin:/bin", "LC_ALL=C", "HOME=/nowhere",
                        "ZTPORTAL=" + paths::kBuild, "PREFIX=" + _folder->path("prefix")}});
    if (result.status == 0) return result.output;
    return commands + result.output + result.errors;
  }

  static inline TemporaryFolder* _folder = nullptr;
  static inline std::vector<std::string> _commands;
};

TEST_F(ShippingTest, InAFolderThatIsMoved) {
  EXPECT_EQ(run(_commands.at(1)), kComplete);
  std::filesystem::remove(_folder->path("second/place/libexec/ztportal/dscl"));
  EXPECT_THAT(run("second/place/bin/setup"), HasSubstr("/libexec/ztportal/dscl is missing\n"));
}

TEST_F(ShippingTest, InAnAppDir) { EXPECT_EQ(run(_commands.at(2)), kComplete); }

TEST_F(ShippingTest, InADebianPackage) {
  EXPECT_THAT(run(_commands.at(3)), HasSubstr("libztportal1 (>= 1.0)"));
  // The package of the library has the component "runtime" in the same folders.
  EXPECT_THAT(run("dpkg-deb -x packages/setup_1.0_*.deb root\n"
                  "cmake --install \"$ZTPORTAL\" --component runtime --prefix root/usr\n"
                  "root/usr/bin/setup\n"),
              kComplete);
}

TEST_F(ShippingTest, LinkedStatically) {
  EXPECT_EQ(run(_commands.at(4)), kComplete);
  EXPECT_EQ(run("readelf --dynamic static/bin/setup | grep -c libztportal || true"), "0\n");
}

}  // namespace
