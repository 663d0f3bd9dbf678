// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "TestPaths.h"
#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/support/Subprocess.h"

// Tests of the manual pages, and of the completions in the real shells.

namespace zt::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

const std::string kPackaging = paths::kSource + "/packaging";
const std::string kScripts = paths::kSource + "/tests/package/manual";
const std::string kCompletion = kPackaging + "/completions/ztportal";

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// Output and errors of a command that succeeds, with the project's programs in its PATH.
std::string outputOf(std::vector<std::string> command) {
  const std::string programs = paths::kReportProgram.substr(0, paths::kReportProgram.rfind('/'));
  command.insert(command.begin(),
                 {"/usr/bin/env", "PATH=" + programs + ":/usr/bin:/bin", "HOME=/nonexistent"});
  Subprocess child(command);
  std::string text = child.waitForOutput() + child.waitForErrors();
  EXPECT_EQ(child.wait(), 0) << testing::PrintToString(command) << text;
  return text;
}

/// The completions that bash offers for the last of `words`.
std::vector<std::string> inBash(std::vector<std::string> words) {
  words.insert(words.begin(), {"bash", kScripts + "/complete.bash", kCompletion + ".bash"});
  auto lines = linesOf(outputOf(words));
  std::erase(lines, "");
  return lines;
}
/// The output of zsh for each line and a tab; the completed line is between "<<" and ">>".
std::string inZsh(std::vector<std::string> lines) {
  lines.insert(lines.begin(), {"zsh", kScripts + "/complete.zsh", kPackaging + "/completions"});
  return outputOf(lines);
}
/// The completions that fish offers at the end of a line, without their descriptions.
std::vector<std::string> inFish(const std::string& line) {
  auto lines = linesOf(outputOf({"fish", "--no-config", "-c",
                                 "source '" + kCompletion + ".fish'; complete -C '" + line + "'"}));
  for (std::string& text : lines) text.resize(std::min(text.find('\t'), text.size()));
  return lines;
}

std::string page(const std::string& name) { return paths::kManualFolder + "/" + name; }

TEST(ManualTest, ThePagesAreWellFormed) {
  for (const std::string& file :
       {page("ztreport.1"), page("ztinbox.1"), kPackaging + "/manual/ztportal.3"}) {
    EXPECT_EQ(outputOf({"mandoc", "-T", "lint", "-W", "error", file}), "");
  }
}

TEST(ManualTest, ThePagesHaveTheirSections) {
  const auto headings = [](const std::string& file) {
    std::vector<std::string> found;
    for (const std::string& line : linesOf(contentOf(file))) {
      if (line.starts_with(".SH ") || line.starts_with(".Sh ")) found.push_back(line.substr(4));
    }
    return found;
  };
  EXPECT_THAT(headings(page("ztreport.1")),
              ElementsAre("NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "\"EXIT STATUS\"",
                          "COMMANDS", "ENVIRONMENT", "FILES", "EXAMPLES", "\"SEE ALSO\""));
  EXPECT_THAT(headings(page("ztinbox.1")),
              ElementsAre("NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "\"EXIT STATUS\"",
                          "ENVIRONMENT", "FILES", "EXAMPLES", "\"SEE ALSO\""));
  EXPECT_THAT(headings(kPackaging + "/manual/ztportal.3"),
              ElementsAre("NAME", "SYNOPSIS", "DESCRIPTION", "ENVIRONMENT", "FILES", "EXIT STATUS",
                          "EXAMPLES", "SEE ALSO"));
}

/// The words at the start of the lines of a help that match `pattern`.
std::set<std::string> wordsOf(const std::string& help, const char* pattern) {
  const std::regex regex(pattern);
  std::set<std::string> found;
  for (std::sregex_iterator match(help.begin(), help.end(), regex), end; match != end; ++match) {
    found.insert((*match)[1]);
  }
  return found;
}

TEST(ManualTest, EveryCommandAndOptionIsInThePageAndIsCompleted) {
  for (const std::string program : {"ztreport", "ztinbox"}) {
    // A bold or underlined letter is written twice, with a backspace.
    const std::string text = std::regex_replace(
        outputOf({"mandoc", "-T", "ascii", "-O", "width=200", page(program + ".1")}),
        std::regex(".\b"), "");
    const std::string main = outputOf({program, "--help"});
    const std::set<std::string> commands = wordsOf(main, R"(\n  ([a-z]+)  )");
    EXPECT_EQ(commands.size(), program == "ztreport" ? 11U : 0U);

    std::vector<std::vector<std::string>> lines{{program}};
    for (const std::string& command : commands) lines.push_back({program, command});
    for (const std::vector<std::string>& line : lines) {
      const std::string typed = line.size() == 1 ? line[0] : line[0] + " " + line[1];
      EXPECT_TRUE(text.find(typed + " [OPTIONS]") != std::string::npos) << typed;
      std::vector<std::string> words = line;
      words.emplace_back("--help");
      const std::set<std::string> options =
          wordsOf(outputOf(words), R"(\n  (?:-[a-z],)?(--[a-z-]+))");
      EXPECT_FALSE(options.empty()) << typed;
      for (const std::string& option : options) {
        EXPECT_TRUE(text.find(option) != std::string::npos) << typed << " " << option;
      }
      words.back() = "--";
      EXPECT_THAT(inBash(words), testing::IsSupersetOf(options)) << typed;
      EXPECT_THAT(inFish(typed + " --"), testing::IsSupersetOf(options)) << typed;
    }
  }
}

TEST(ManualTest, BashCompletesCommandsOptionsAndValues) {
  const TemporaryFolder folder;
  const std::string report = folder.write("a report.json", "{}");
  const struct {
    std::vector<std::string> words;
    std::vector<std::string> offered;
  } rows[] = {
      {{"ztreport", "re"}, {"render", "resend"}},
      {{"ztreport", "--app-name", "Setup", "do"}, {"doctor"}},
      {{"ztreport", "--app-name", "=", "send", "ren"}, {"render"}},
      {{"ztreport", "zz"}, {}},
      {{"ztreport", "store", "--s"}, {"--set-aside"}},
      {{"ztreport", "doctor", "--c"}, {"--customer", "--config-url", "--ca"}},
      {{"ztreport", "--v"}, {"--version"}},
      {{"ztinbox", "--s"}, {"--store", "--slow", "--seed", "--scenario"}},
      {{"ztreport", "resend", "--customer", ""},
       {"Kelvane", "Norvantel", "Brisalink", "cavomedia", "Quillnet"}},
      {{"ztreport", "run", "--customer", "=", "N"}, {"Norvantel"}},
      {{"ztreport", "run", "--customer", "="},
       {"Kelvane", "Norvantel", "Brisalink", "cavomedia", "Quillnet"}},
      {{"ztreport", "send", "--config-url", ""}, {}},
      {{"ztinbox", "--answer", ""},
       {"accept", "refuse", "garbage", "error", "hang", "drop", "truncate"}},
      {{"ztreport", "render", folder.path("a")}, {report}},
      {{"ztreport", "store", "--set-aside", folder.path("a")}, {report}},
      {{"ztinbox", "--scenario", folder.path("a")}, {report}},
      {{"ztinbox", "--data", folder.path("a")}, {}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(inBash(row.words), row.offered) << testing::PrintToString(row.words);
  }
}

TEST(ManualTest, ZshCompletesCommandsOptionsAndValues) {
  EXPECT_THAT(inZsh({"ztreport re"}), AllOf(HasSubstr("render  -- Print the text of a report"),
                                            HasSubstr("resend  -- Send the saved reports"),
                                            HasSubstr("<<ztreport re>>"), Not(HasSubstr("probe"))));
  const TemporaryFolder folder;
  const std::string report = folder.write("report.json", "{}");
  const std::pair<std::string, std::string> rows[] = {
      {"ztreport do", "ztreport doctor "},
      {"ztreport --app-n", "ztreport --app-name="},
      {"ztreport --app-name Setup do", "ztreport --app-name Setup doctor "},
      {"ztreport render --p", "ztreport render --plain "},
      {"ztreport render --app-n", "ztreport render --app-name="},
      {"ztreport resend --customer K", "ztreport resend --customer Kelvane "},
      {"ztreport resend --customer=N", "ztreport resend --customer=Norvantel "},
      {"ztreport render " + folder.path("rep"), "ztreport render " + report + " "},
      {"ztreport store --set-aside " + folder.path("rep"),
       "ztreport store --set-aside " + report + " "},
      {"ztinbox --answer=re", "ztinbox --answer=refuse "},
      {"ztinbox --sl", "ztinbox --slow="},
      {"ztinbox --li", "ztinbox --listen="},
  };
  std::vector<std::string> lines;
  for (const auto& [line, completed] : rows) lines.push_back(line);
  const std::string shown = inZsh(lines);
  for (const auto& [line, completed] : rows) {
    EXPECT_THAT(shown, HasSubstr("<<" + completed + ">>")) << line;
  }
}

TEST(ManualTest, FishCompletesCommandsOptionsAndValues) {
  const TemporaryFolder folder;
  const std::string report = folder.write("report.json", "{}");
  const std::pair<std::string, std::vector<std::string>> rows[] = {
      {"ztreport re", {"render", "resend"}},
      {"ztreport store --s", {"--set-aside"}},
      {"ztreport render --p", {"--plain"}},
      {"ztreport resend --customer K", {"Kelvane"}},
      {"ztinbox --answer d", {"drop"}},
      {"ztreport render " + folder.path("rep"), {report}},
      {"ztreport listen " + folder.path("rep"), {}},
  };
  for (const auto& [line, offered] : rows) EXPECT_EQ(inFish(line), offered) << line;
}

}  // namespace
}  // namespace zt::test
