#include <gtest/gtest.h>

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

TEST_F(ApplicationsHelperTest, TellsPathNameAndWords) {
  const std::string file =
      _desktop.entry("usr/share/applications/some.desktop",
                     "Name=Some \"thing\"\nExec=\"some program\" --name \"a b\" '' %u\n");
  EXPECT_EQ(run({"entry", file}),
            answer({file, "Some \"thing\"", "some program", "--name", "a b", "", "%u"}));
  _desktop.write("home/.config/mimeapps.list",
                 "[Default Applications]\nx-scheme-handler/http=some.desktop\n");
  EXPECT_EQ(run({"default", "http"}), run({"entry", file}));
}

TEST_F(ApplicationsHelperTest, TakesTheFirstUsableEntryUpToAHiddenOne) {
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

TEST_F(ApplicationsHelperTest, SaysNothingWhenThereIsNoDefault) {
  EXPECT_EQ(run({"default", "http"}), _none);
}

TEST_F(ApplicationsHelperTest, AnswersNothingElse) {
  const ProgramResult usage{
      2, "",
      "ztportal-applications: usage: ztportal-applications default SCHEME [FOLDER...]\n"
      "                              ztportal-applications entry FILE...\n"};
  const std::vector<std::string> rows[] = {{},          {"--help"},      {"entry"},
                                           {"default"}, {"default", ""}, {"other", "http"}};
  for (const auto& row : rows) EXPECT_EQ(run(row), usage) << testing::PrintToString(row);
}

TEST_F(ApplicationsHelperTest, SaysWhenItCannotWrite) {
  const std::string file = _desktop.entry("some.desktop", "Name=Some\n");
  const ProgramResult result = zt::test::runProgram(zt::libexecFolder() + "/ztportal-applications",
                                                    {"entry", file}, {.output = "/dev/full"});
  EXPECT_EQ(result.errors, "ztportal-applications: cannot write the answer\n");
  EXPECT_EQ(result.status, 3);
}

}  // namespace
