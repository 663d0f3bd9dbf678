// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "TestPaths.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"

// script/docs with a Doxygen that writes a page without reading anything.

namespace {

namespace fs = std::filesystem;

using zt::test::ProgramResult;
using zt::test::TemporaryFolder;

class ScriptDocsTest : public testing::Test {
 protected:
  ScriptDocsTest() {
    _folder.write("bin/doxygen", "#!/bin/sh\necho new >\"$ZT_FOLDER/index.html\"\n");
    fs::permissions(_folder.path("bin/doxygen"), fs::perms::owner_all);
  }

  ProgramResult run(const std::string& name) const {
    return zt::test::runProgram(zt::test::paths::kSource + "/script/docs", {_folder.path(name)},
                                {.environment = std::vector<std::string>{
                                     "PATH=" + _folder.path("bin") + ":/usr/bin:/bin"}});
  }
  bool has(const std::string& name) const { return fs::exists(_folder.path(name)); }

  TemporaryFolder _folder;
};

// It once removed whatever folder it was given, with everything in it.
TEST_F(ScriptDocsTest, LeavesWhatItDidNotMake) {
  _folder.write("home/letter.txt", "dear");
  _folder.write("hidden/.profile", "x");
  _folder.write("file", "x");
  for (const char* name : {"home", "hidden", "file"}) {
    const ProgramResult result = run(name);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "script/docs: " + _folder.path(name) +
                  " is neither empty nor made by this script; give another folder\n");
  }
  EXPECT_TRUE(has("home/letter.txt"));
  EXPECT_TRUE(has("hidden/.profile"));
  EXPECT_TRUE(has("file"));
}

TEST_F(ScriptDocsTest, FillsAnEmptyFolderAndItsOwn) {
  fs::create_directory(_folder.path("empty"));
  for (const char* name : {"empty", "new/below"}) {
    EXPECT_EQ(run(name), (ProgramResult{0, _folder.path(name) + "/index.html\n", ""}));
    _folder.write(std::string(name) + "/outdated.html", "old");
    EXPECT_EQ(run(name).status, 0);
    EXPECT_TRUE(has(std::string(name) + "/index.html"));
    EXPECT_FALSE(has(std::string(name) + "/outdated.html"));
  }
}

}  // namespace
