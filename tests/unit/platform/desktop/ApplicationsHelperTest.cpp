// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/Subprocess.h"
#include "tests/unit/platform/desktop/MadeUpDesktop.h"
#include "ztportal/platform/process/ProgramPath.h"

namespace {

using zt::test::MadeUpDesktop;
using zt::test::ProgramResult;

class ApplicationsHelperTest : public testing::Test {
 protected:
  static ProgramResult run(const std::vector<std::string>& arguments) {
    return zt::test::runProgram(zt::libexecFolder() + "/ztportal-applications", arguments);
  }
  static ProgramResult answer(const std::vector<std::string>& texts) {
    std::string output;
    for (const std::string& text : texts) output += text + '\0';
    return {0, output, ""};
  }

  MadeUpDesktop _desktop;
  std::string _program = _desktop.program("usr/bin/some program");
  const ProgramResult _none{1, "", ""};
};

TEST_F(ApplicationsHelperTest, PrintsPathNameAndWords) {
  const std::string file =
      _desktop.entry("usr/share/applications/some.desktop",
                     "Name=Some \"thing\"\nExec=\"some program\" --name \"a b\" '' %u\n");
  EXPECT_EQ(run({"entry", file}),
            answer({file, "Some \"thing\"", "some program", "--name", "a b", "", "%u"}));
  _desktop.write("home/.config/mimeapps.list",
                 "[Default Applications]\nx-scheme-handler/http=some.desktop\n");
  EXPECT_EQ(run({"default", "http"}), run({"entry", file}));
}

TEST_F(ApplicationsHelperTest, UsesTheFirstUsableEntryUpToAHiddenOne) {
  const std::string name = "Name=Some\nExec=\"some program\"\n";
  const std::string good = _desktop.entry("good.desktop", name);
  const std::string missing = _desktop.path("missing.desktop");
  const std::string unusable = _desktop.entry("unusable.desktop", "Name=Some\nExec=missing\n");
  const std::string hidden = _desktop.entry("hidden.desktop", name + "Hidden=true\n");
  const ProgramResult told = answer({good, "Some", "some program"});
  EXPECT_EQ(run({"entry", missing, unusable, good, hidden}), told);
  EXPECT_EQ(run({"entry", unusable, hidden, good}), _none);
  EXPECT_EQ(run({"entry", missing}), _none);
}

TEST_F(ApplicationsHelperTest, AnEntryMayHaveNeitherNameNorCommand) {
  const std::string file = _desktop.entry("some.desktop", "");
  EXPECT_EQ(run({"entry", file}), answer({file, ""}));
}

TEST_F(ApplicationsHelperTest, PrintsNothingWithoutADefault) {
  EXPECT_EQ(run({"default", "http"}), _none);
}

// Regression: a FIFO in place of one of these files was waited for without end.
TEST_F(ApplicationsHelperTest, WaitsForNoFifo) {
  const std::string file =
      _desktop.entry("usr/share/applications/some.desktop", "Name=Some\nExec=\"some program\"\n");
  _desktop.write("home/.config/mimeapps.list",
                 "[Default Applications]\nx-scheme-handler/http=some.desktop\n");
  ASSERT_EQ(run({"default", "http"}).status, 0);
  for (const char* name :
       {"home/.config/gnome-mimeapps.list", "home/.local/share/applications/mimeapps.list",
        "usr/share/applications/mimeinfo.cache", "usr/share/applications/vendor/other.desktop",
        "home/.local/share/mime/mime.cache", "usr/share/mime/globs2"}) {
    const std::string fifo = _desktop.path(name);
    std::filesystem::create_directories(std::filesystem::path(fifo).parent_path());
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(run({"default", "http"}), _none) << name;
    EXPECT_EQ(run({"entry", fifo}), _none) << name;
    EXPECT_EQ(::unlink(fifo.c_str()), 0);
  }
  EXPECT_EQ(run({"default", "http"}).status, 0);

  const std::string list = _desktop.path("home/.config/mimeapps.list");
  std::filesystem::remove(list);
  ASSERT_EQ(::mkfifo(list.c_str(), 0600), 0);
  EXPECT_EQ(run({"default", "http"}), _none);
  EXPECT_EQ(run({"entry", file}).status, 0);
}

TEST_F(ApplicationsHelperTest, AcceptsNoOtherQuestion) {
  const ProgramResult usage{
      2, "",
      "ztportal-applications: usage: ztportal-applications default SCHEME [FOLDER...]\n"
      "                              ztportal-applications entry FILE...\n"};
  const std::vector<std::string> rows[] = {{},          {"--help"},      {"entry"},
                                           {"default"}, {"default", ""}, {"other", "http"}};
  for (const auto& row : rows) EXPECT_EQ(run(row), usage) << testing::PrintToString(row);
}

TEST_F(ApplicationsHelperTest, ReportsAWriteError) {
  const std::string file = _desktop.entry("some.desktop", "Name=Some\n");
  const ProgramResult result = zt::test::runProgram(zt::libexecFolder() + "/ztportal-applications",
                                                    {"entry", file}, {.output = "/dev/full"});
  EXPECT_EQ(result.errors, "ztportal-applications: cannot write the answer\n");
  EXPECT_EQ(result.status, 3);
}

}  // namespace
