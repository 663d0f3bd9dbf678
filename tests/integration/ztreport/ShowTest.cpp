// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/support/Terminal.h"
#include "tests/unit/tools/common/ReportText.h"

namespace zt::test {
namespace {

using testing::HasSubstr;

const std::string kReport = crlf(plainLines(plainPool(plainField("EDITION", "Home"))));

const std::string kTree =
    "report       {R}\nmachine      {M}\ncustomer     Kelvane\napplication  {A}\n"
    "version      2.1.77\nform         plain XML\n\n"
    "CUSTOM  2026-11-21T12:00:00.000UTC\n  EDITION  string   Home\n";

class ShowTest : public testing::Test {
 protected:
  ReportProgram program;
};

TEST_F(ShowTest, ShowsAFileAndStandardInput) {
  const std::string file = program.write("report.txt", kReport);
  EXPECT_EQ(program.run({"show", file}), done(kTree));
  EXPECT_EQ(program.run({"show", "-"}, {.input = file}), done(kTree));
}

// A file without an end filled the memory.
TEST_F(ShowTest, RefusesAFileLargerThanAnyReport) {
  for (const char* command : {"show", "render"}) {
    EXPECT_EQ(program.run({command, "/dev/zero"}), refused(3, "/dev/zero: File too large"));
  }
}

TEST_F(ShowTest, ShowsADescription) {
  const std::string file = program.write("report.txt", kReport);
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"show", file, "--json"}, {"show", "--json", file}}) {
    EXPECT_EQ(program.run(arguments), done(R"({
  "customerId": "Kelvane",
  "applicationId": "{A}",
  "applicationVersion": "2.1.77",
  "pools": [
    {
      "kind": "generic",
      "poolType": "CUSTOM",
      "timeStamp": "2026-11-21T12:00:00.000Z",
      "fields": [
        {
          "name": "EDITION",
          "type": "string",
          "value": "Home"
        }
      ]
    }
  ]
}
)"));
  }
}

TEST_F(ShowTest, FindsASavedReportByItsName) {
  const std::string description = program.write("report.json", describedFlatReport());
  const Finished saved = program.run({"--app-name", "Setup", "save", description});
  ASSERT_EQ(saved.status, 0) << saved.errors;
  const std::string path = saved.output.substr(0, saved.output.size() - 1);
  const std::string name = path.substr(path.rfind('/') + 1);
  const std::string id = name.substr(0, name.size() - 4);
  const std::string tree = program.run({"show", path}).output;
  EXPECT_THAT(tree, HasSubstr("report       " + id + "\n"));
  for (const std::string& shown : {name, id, id.substr(1, id.size() - 2)}) {
    EXPECT_EQ(program.run({"--app-name", "Setup", "show", shown}).output, tree) << shown;
  }
  EXPECT_EQ(program.run({"--app-name", "Other", "show", name}),
            refused(3, name + ": No such file or directory"));
}

TEST_F(ShowTest, TellsWhatItCannotRead) {
  std::string damaged = kReport;
  damaged.replace(damaged.find("</Name>"), 7, "</Nome>");
  const std::string file = program.write("damaged.txt", damaged);
  const std::string fault = ": line 13, column 31: expected \"</Name>\"";
  EXPECT_EQ(program.run({"show", file}), refused(2, file + fault));
  EXPECT_EQ(program.run({"show", "--json", file}), refused(2, file + fault));
  EXPECT_EQ(program.run({"show", "-"}, {.input = file}), refused(2, "standard input" + fault));

  const std::string number =
      program.write("number.txt", crlf(plainLines(plainPool(plainField("A", "x", "integer")))));
  EXPECT_EQ(program.run({"show", number}).status, 0);
  EXPECT_EQ(program.run({"show", "--json", number}),
            refused(2, number + ": line 14, column 18: expected a 32-bit integer"));

  const std::string absent = program.path("absent.txt");
  EXPECT_EQ(program.run({"show", absent}), refused(3, absent + ": No such file or directory"));
  EXPECT_EQ(program.run({"show", program.folder()}),
            refused(3, program.folder() + ": Is a directory"));
  EXPECT_EQ(program.run({"show", ""}), refused(3, ": No such file or directory"));
  EXPECT_EQ(program.run({"show"}), refused(2, "FILE is required; see ztreport show --help"));
}

class ShowOnATerminalTest : public ShowTest {
 protected:
  std::string shown(const std::string& value, unsigned short columns) {
    const std::string file =
        program.write("report.txt", crlf(plainLines(plainPool(plainField("EDITION", value)))));
    const Terminal terminal(columns);
    const Finished result = program.run({"show", file}, {.output = terminal.name()});
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.status, 0);
    return terminal.shown();
  }
};

TEST_F(ShowOnATerminalTest, HasColoursAndFitsTheWindow) {
  program.setVariable("TERM=xterm");
  const std::string text = shown("0123456789abcdefghijklmnopqrstuvwxyz", 50);
  EXPECT_THAT(text, HasSubstr("\x1b[1mCUSTOM\x1b[0m"));
  EXPECT_THAT(text, HasSubstr("   0123456789abcdefghijklmnopqrst"
                              "\n                    uvwxyz\n"));
}

TEST_F(ShowOnATerminalTest, HasColoursUnlessTheEnvironmentSaysNo) {
  const std::pair<std::vector<std::string>, bool> rows[] = {
      {{"TERM=xterm"}, true},
      {{"TERM=xterm", "NO_COLOR="}, true},
      {{"TERM=dumb", "NO_COLOR="}, false},
      {{"TERM=xterm", "NO_COLOR=1"}, false},
  };
  for (const auto& [variables, hasColours] : rows) {
    for (const std::string& variable : variables) program.setVariable(variable);
    const std::string text = shown("Home", 80);
    EXPECT_EQ(text.find("\x1b[") != std::string::npos, hasColours)
        << testing::PrintToString(variables);
    if (!hasColours) {
      EXPECT_EQ(text, kTree);
    }
  }
}

}  // namespace
}  // namespace zt::test
