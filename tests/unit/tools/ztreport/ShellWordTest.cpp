// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tests/support/Subprocess.h"
#include "tools/ztreport/doctor/ShellWord.h"

namespace zt::test {
namespace {

// Commands that doctor suggests once put names between single quotes as they were: a file named
// "a'b c.ztr" gave a command that was broken, and one named "';reboot;'" a dangerous one.
TEST(ShellWordTest, IsTheTextForAShell) {
  const std::pair<std::string, std::string> rows[] = {
      {"", "''"},
      {"{A}.ztr", "'{A}.ztr'"},
      {"a'b c.ztr", R"('a'\''b c.ztr')"},
      {"';reboot;'", R"(''\'';reboot;'\''')"},
      {"$HOME `id` \\ \"", "'$HOME `id` \\ \"'"},
      {"Ä", "'Ä'"},
      {"a\nb'\\", R"($'a\012b\047\134')"},
      {"\x1b[31m1", R"($'\033[31m1')"},
      {"\xff", R"($'\377')"},
      {"a\u202eb", R"($'a\342\200\256b')"},
  };
  for (const auto& [text, word] : rows) {
    EXPECT_EQ(tools::shellWord(text), word);
    const ProgramResult printed = runProgram("/bin/bash", {"-c", "printf %s " + word});
    EXPECT_EQ(printed.output, text);
    EXPECT_EQ(printed.status, 0);
  }
}

// A shell without this form, such as dash, ended the word at an escaped quote, and ran the rest.
TEST(ShellWordTest, RunsNothingInAShellWithoutTheForm) {
  const std::string word = tools::shellWord("a\n'; echo pwned; #");
  EXPECT_EQ(word, R"($'a\012\047; echo pwned; #')");
  EXPECT_EQ(runProgram("/bin/sh", {"-c", ": " + word}).output, "");
}

}  // namespace
}  // namespace zt::test
