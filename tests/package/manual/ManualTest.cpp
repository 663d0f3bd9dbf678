#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "TestPaths.h"
#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/support/Subprocess.h"

// The manual pages and completions as they are installed, against the programs' --help, and in the
// shells themselves.

namespace zt::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

const std::string kFolder = zt::test::paths::kManualFolder;

std::string file(const std::string& name) { return kFolder + "/" + name; }

struct Program {
  std::string name;
  std::string path;
};
const Program kPrograms[] = {{"ztreport", zt::test::paths::kReportProgram},
                             {"ztinbox", zt::test::paths::kInboxProgram}};

/// What a tool says, both ways; it has to succeed.
std::string said(const std::vector<std::string>& words) {
  zt::test::Subprocess child(words);
  std::string text = child.waitForOutput() + child.waitForErrors();
  EXPECT_EQ(child.wait(), 0) << testing::PrintToString(words) << text;
  return text;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::set<std::string> matchesOf(const std::string& text, const char* pattern) {
  const std::regex regex(pattern);
  std::set<std::string> found;
  for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match) {
    found.insert((*match)[1]);
  }
  return found;
}

/// The options that a help lists, each at the start of its line.
std::set<std::string> optionsOf(const std::string& help) {
  return matchesOf(help, R"(\n +(?:-[a-z],)?(--[a-z-]+))");
}
std::set<std::string> commandsOf(const std::string& help) {
  const std::size_t start = help.find("Subcommands:");
  if (start == std::string::npos) return {};
  return matchesOf(help.substr(start), R"(\n  ([a-z]+) )");
}

/// What bash offers for the last of `words`.
std::vector<std::string> inBash(std::vector<std::string> words) {
  words.insert(words.begin(),
               {"/bin/bash", zt::test::paths::kSource + "/tests/package/manual/complete.bash",
                file("bash/" + words.front())});
  auto lines = linesOf(said(words));
  std::erase(lines, "");
  return lines;
}
/// What zsh shows for each line and the tabulator, the line as it is then in "<<" and ">>".
std::string inZsh(std::vector<std::string> lines) {
  lines.insert(lines.begin(),
               {"/usr/bin/zsh", zt::test::paths::kSource + "/tests/package/manual/complete.zsh",
                kFolder + "/zsh"});
  return said(lines);
}
/// What fish offers at the end of a line, without its explanations.
std::vector<std::string> inFish(const std::string& program, const std::string& line) {
  auto lines =
      linesOf(said({"/usr/bin/env", "HOME=/nonexistent", "/usr/bin/fish", "--no-config", "-c",
                    "source '" + file("fish/" + program) + ".fish'; complete -C '" + line + "'"}));
  for (std::string& text : lines) text.resize(std::min(text.find('\t'), text.size()));
  return lines;
}

TEST(ManualTest, ThePagesAreWellFormed) {
  for (const char* page : {"man1/ztreport.1", "man1/ztinbox.1", "man3/ztportal.3"}) {
    EXPECT_EQ(said({"/usr/bin/mandoc", "-T", "lint", file(page)}), "") << page;
  }
}

TEST(ManualTest, ThePagesHaveTheirSections) {
  const auto headings = [](const char* page) {
    std::vector<std::string> found;
    for (const std::string& line : linesOf(contentOf(file(page)))) {
      if (line.starts_with(".SH ")) found.push_back(line.substr(4));
    }
    return found;
  };
  EXPECT_THAT(headings("man1/ztreport.1"),
              ElementsAre("NAME", "SYNOPSIS", "DESCRIPTION", "COMMANDS", "OPTIONS", "EXIT STATUS",
                          "ENVIRONMENT", "FILES", "EXAMPLES", "SEE ALSO"));
  EXPECT_THAT(headings("man1/ztinbox.1"), ElementsAre("NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS",
                                                      "EXIT STATUS", "EXAMPLES", "SEE ALSO"));
  EXPECT_THAT(headings("man3/ztportal.3"),
              ElementsAre("NAME", "SYNOPSIS", "DESCRIPTION", "HEADERS", "SEE ALSO"));
}

TEST(ManualTest, ThePageOfTheLibraryIsItsHeader) {
  const std::string page =
      said({"/usr/bin/mandoc", "-T", "ascii", "-O", "width=200", file("man3/ztportal.3")});
  EXPECT_THAT(page, AllOf(HasSubstr("       #include <ztportal/ztportal.h>\n"),
                          HasSubstr("document->addPool(\"CUSTOM\", ZtDate::now())->addString("
                                    "\"RESULT\", \"OK\");\n"),
                          HasSubstr("       <ztportal/report/ZtReport.h>\n")));
}

TEST(ManualTest, EveryOptionOfTheHelpIsInThePageAndEachCompletion) {
  for (const Program& program : kPrograms) {
    std::string help = said({program.path, "--help"});
    const std::set<std::string> commands = commandsOf(help);
    for (const std::string& command : commands) help += said({program.path, command, "--help"});
    const std::set<std::string> options = optionsOf(help);
    EXPECT_GE(options.size(), 8U) << help;
    EXPECT_EQ(commands.empty(), program.name == "ztinbox") << help;

    const std::string page = contentOf(file("man1/" + program.name + ".1"));
    const std::string bash = contentOf(file("bash/" + program.name));
    const std::string zsh = contentOf(file("zsh/_" + program.name));
    const std::string fish = contentOf(file("fish/" + program.name + ".fish"));
    for (const std::string& option : options) {
      std::string escaped;
      for (const char letter : option) escaped += letter == '-' ? "\\-" : std::string(1, letter);
      EXPECT_THAT(page, HasSubstr("\n.TP\n\\fB" + escaped + "\\fR")) << option;
      EXPECT_TRUE(std::regex_search(bash, std::regex("[ ']" + option + "[ ']"))) << option;
      EXPECT_TRUE(std::regex_search(zsh, std::regex("'\\*?" + option + "=?\\["))) << option;
      EXPECT_TRUE(std::regex_search(fish, std::regex(" -l " + option.substr(2) + " "))) << option;
    }
    for (const std::string& command : commands) {
      EXPECT_THAT(page, HasSubstr("\n.SS " + command + "\n"));
      EXPECT_THAT(bash, HasSubstr("\n    " + command + ")\n"));
      EXPECT_THAT(zsh, HasSubstr("'" + command + ":"));
      EXPECT_THAT(fish, HasSubstr(" -a " + command + " -d "));
    }
  }
}

TEST(ManualTest, BashCompletesCommands) {
  EXPECT_THAT(inBash({"ztreport", "re"}), ElementsAre("render", "resend"));
  EXPECT_THAT(inBash({"ztreport", "--app-name", "Setup", "do"}), ElementsAre("doctor"));
  EXPECT_THAT(inBash({"ztreport", "--app-name", "=", "send", "ren"}), ElementsAre("render"));
  EXPECT_THAT(inBash({"ztreport", "zz"}), ElementsAre());
}

TEST(ManualTest, BashCompletesOptionsOfTheirCommand) {
  EXPECT_THAT(inBash({"ztreport", "store", "--s"}), ElementsAre("--set-aside"));
  EXPECT_THAT(inBash({"ztreport", "render", "--"}),
              ElementsAre("--help", "--plain", "--version", "--app-name", "--app-version"));
  EXPECT_THAT(inBash({"ztreport", "doctor", "--c"}), ElementsAre("--customer", "--config-url"));
  EXPECT_THAT(inBash({"ztreport", "--v"}), ElementsAre("--version"));
  EXPECT_THAT(inBash({"ztinbox", "--s"}), ElementsAre("--slow", "--seed", "--scenario"));
}

TEST(ManualTest, BashCompletesValues) {
  EXPECT_THAT(inBash({"ztreport", "resend", "--customer", ""}),
              ElementsAre("Kelvane", "Norvantel", "Brisalink", "cavomedia", "Quillnet"));
  EXPECT_THAT(inBash({"ztreport", "run", "--customer", "=", "N"}), ElementsAre("Norvantel"));
  EXPECT_THAT(inBash({"ztreport", "run", "--customer", "="}), testing::SizeIs(5));
  EXPECT_THAT(inBash({"ztreport", "send", "--config-url", ""}), ElementsAre());
  EXPECT_THAT(inBash({"ztinbox", "--answer", ""}),
              ElementsAre("accept", "refuse", "garbage", "error", "hang", "drop", "truncate"));
  const TemporaryFolder folder;
  const std::string report = folder.write("a report.json", "{}");
  EXPECT_THAT(inBash({"ztreport", "render", folder.path("a")}), ElementsAre(report));
  EXPECT_THAT(inBash({"ztreport", "store", "--set-aside", folder.path("a")}), ElementsAre(report));
  EXPECT_THAT(inBash({"ztinbox", "--scenario", folder.path("a")}), ElementsAre(report));
}

TEST(ManualTest, ZshCompletesCommandsOptionsAndValues) {
  EXPECT_THAT(inZsh({"ztreport re"}), AllOf(HasSubstr("render  -- Print the report's text"),
                                            HasSubstr("resend  -- Send the saved reports"),
                                            HasSubstr("<<ztreport re>>"), Not(HasSubstr("probe"))));
  const TemporaryFolder folder;
  folder.write("report.json", "{}");
  const std::pair<std::string, std::string> rows[] = {
      {"ztreport do", "ztreport doctor "},
      {"ztreport --app-n", "ztreport --app-name="},
      {"ztreport --app-name Setup do", "ztreport --app-name Setup doctor "},
      {"ztreport render --p", "ztreport render --plain "},
      {"ztreport render --app-n", "ztreport render --app-name="},
      {"ztreport resend --customer K", "ztreport resend --customer Kelvane "},
      {"ztreport resend --customer=N", "ztreport resend --customer=Norvantel "},
      {"ztreport render " + folder.path("rep"),
       "ztreport render " + folder.path("report.json") + " "},
      {"ztreport store --set-aside " + folder.path("rep"),
       "ztreport store --set-aside " + folder.path("report.json") + " "},
      {"ztinbox --answer=re", "ztinbox --answer=refuse "},
      {"ztinbox --sl", "ztinbox --slow="},
  };
  std::vector<std::string> lines;
  for (const auto& [line, completed] : rows) lines.push_back(line);
  const std::string shown = inZsh(lines);
  for (const auto& [line, completed] : rows) {
    EXPECT_THAT(shown, HasSubstr("<<" + completed + ">>")) << line;
  }
}

TEST(ManualTest, FishCompletesCommandsOptionsAndValues) {
  EXPECT_THAT(inFish("ztreport", "ztreport re"), ElementsAre("render", "resend"));
  EXPECT_THAT(inFish("ztreport", "ztreport store --s"), ElementsAre("--set-aside"));
  EXPECT_THAT(inFish("ztreport", "ztreport render --p"), ElementsAre("--plain"));
  EXPECT_THAT(inFish("ztreport", "ztreport resend --customer K"), ElementsAre("Kelvane"));
  EXPECT_THAT(inFish("ztreport", "ztreport doctor --c"),
              testing::UnorderedElementsAre("--customer", "--config-url"));
  EXPECT_THAT(inFish("ztinbox", "ztinbox --answer d"), ElementsAre("drop"));
  const TemporaryFolder folder;
  const std::string report = folder.write("report.json", "{}");
  EXPECT_THAT(inFish("ztreport", "ztreport render " + folder.path("rep")), ElementsAre(report));
  EXPECT_THAT(inFish("ztreport", "ztreport listen " + folder.path("rep")), ElementsAre());
}

}  // namespace
}  // namespace zt::test
