#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/ScopedEnvironment.h"
#include "tests/support/Subprocess.h"
#include "tests/unit/platform/desktop/MadeUpDesktop.h"
#include "ztportal/platform/process/ProgramPath.h"

namespace {

using zt::programPath;
using zt::test::inForkedProcess;
using zt::test::MadeUpDesktop;
using zt::test::ScopedEnvironment;

class ProgramPathTest : public testing::Test {
 protected:
  std::string in(const std::string& path, const std::string& name) const {
    const ScopedEnvironment scoped("PATH", path.c_str());
    return programPath(name);
  }

  MadeUpDesktop _desktop;
  std::string _a = _desktop.path("a");
  std::string _b = _desktop.path("b");
};

TEST_F(ProgramPathTest, IsTheFirstInThePath) {
  _desktop.program("a/one");
  _desktop.program("b/one");
  _desktop.program("b/two");
  EXPECT_EQ(in(_a + ":" + _b, "one"), _a + "/one");
  EXPECT_EQ(in(_b + ":" + _a, "one"), _b + "/one");
  EXPECT_EQ(in(_a + ":" + _b, "two"), _b + "/two");
  EXPECT_EQ(in(_a + ":" + _b, "three"), "");
  EXPECT_EQ(in(_a, ""), "");
}

TEST_F(ProgramPathTest, OnlyWhatCanBeRunCounts) {
  _desktop.write("a/one", "no program");
  _desktop.write("a/folder/file", "");
  _desktop.link("a/link", "/nowhere");
  const std::string program = _desktop.program("b/one");
  EXPECT_EQ(in(_a + ":" + _b, "one"), program);
  EXPECT_EQ(in(_a, "one"), "");
  EXPECT_EQ(in(_a, "folder"), "");
  EXPECT_EQ(in(_a, "link"), "");
}

TEST_F(ProgramPathTest, ANameWithASlashIsThePath) {
  const std::string program = _desktop.program("a/one");
  EXPECT_EQ(in("", program), program);
  EXPECT_EQ(in(_a, "b/one"), "");
  EXPECT_EQ(in(_a, _b + "/one"), "");
}

TEST_F(ProgramPathTest, AnEmptyPlaceIsTheWorkingFolder) {
  _desktop.program("a/one");
  const int status = inForkedProcess([this] {
    std::filesystem::current_path(_a);
    for (const std::string& path : {std::string(), ":" + _b, _b + ":", _b + "::" + _b}) {
      if (in(path, "one") != "./one") return 1;
    }
    return in(_b, "one").empty() ? 0 : 2;
  });
  EXPECT_EQ(status, 0);
}

TEST_F(ProgramPathTest, WithoutAPathTheStandardOneIsSearched) {
  const ScopedEnvironment unset("PATH", nullptr);
  EXPECT_TRUE(programPath("sh").ends_with("/sh")) << programPath("sh");
  EXPECT_NE(zt::standardPath(), "");
}

}  // namespace
