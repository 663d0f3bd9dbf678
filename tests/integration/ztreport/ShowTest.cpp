#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/unit/tools/common/ReportText.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using zt::test::crlf;
using zt::test::Finished;
using zt::test::plainField;
using zt::test::plainLines;
using zt::test::plainPool;
using zt::test::ReportProgram;
using zt::test::SubprocessOptions;

const std::string kReport = crlf(plainLines(plainPool(plainField("EDITION", "Home"))));

const std::string kTree =
    "report       {R}\nmachine      {M}\ncustomer     Kelvane\napplication  {A}\n"
    "version      2.1.77\nform         plain XML\n\n"
    "CUSTOM  2026-11-21T12:00:00.000UTC\n  EDITION  string   Home\n";

class ShowTest : public testing::Test {
 protected:
  void expectFailure(const std::vector<std::string>& arguments, int status,
                     const std::string& message, const SubprocessOptions& files = {}) const {
    const Finished result = program.run(arguments, files);
    const std::string shown = testing::PrintToString(arguments);
    EXPECT_EQ(result.status, status) << shown;
    EXPECT_EQ(result.errors, "ztreport: " + message + "\n") << shown;
    EXPECT_EQ(result.output, "") << shown;
  }
  void expectTree(const std::vector<std::string>& arguments,
                  const SubprocessOptions& files = {}) const {
    const Finished result = program.run(arguments, files);
    EXPECT_EQ(result.errors, "") << testing::PrintToString(arguments);
    EXPECT_EQ(result.status, 0) << testing::PrintToString(arguments);
    EXPECT_EQ(result.output, kTree) << testing::PrintToString(arguments);
  }

  ReportProgram program;
};

TEST_F(ShowTest, ShowsAFileAndStandardInput) {
  const std::string file = program.write("report.txt", kReport);
  expectTree({"show", file});
  expectTree({"show", "-"}, {.input = file});
}

TEST_F(ShowTest, ShowsADescription) {
  const std::string file = program.write("report.txt", kReport);
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"show", file, "--json"}, {"show", "--json", file}}) {
    const Finished result = program.run(arguments);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, R"({
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
)");
  }
}

TEST_F(ShowTest, FindsASavedReportByItsName) {
  const std::string description = program.write("report.json", zt::test::describedFlatReport());
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
  expectFailure({"--app-name", "Other", "show", name}, 3, name + ": No such file or directory");
}

TEST_F(ShowTest, TellsWhatItCannotRead) {
  std::string damaged = kReport;
  damaged.replace(damaged.find("</Name>"), 7, "</Nome>");
  const std::string file = program.write("damaged.txt", damaged);
  const std::string fault = ": line 13, column 31: expected \"</Name>\"";
  expectFailure({"show", file}, 2, file + fault);
  expectFailure({"show", "--json", file}, 2, file + fault);
  expectFailure({"show", "-"}, 2, "standard input" + fault, {.input = file});

  const std::string number =
      program.write("number.txt", crlf(plainLines(plainPool(plainField("A", "x", "integer")))));
  EXPECT_EQ(program.run({"show", number}).status, 0);
  expectFailure({"show", "--json", number}, 2,
                number + ": line 14, column 18: expected a 32-bit integer");

  const std::string absent = program.path("absent.txt");
  expectFailure({"show", absent}, 3, absent + ": No such file or directory");
  expectFailure({"show", program.folder()}, 3, program.folder() + ": Is a directory");
  expectFailure({"show", ""}, 3, ": No such file or directory");
  expectFailure({"show"}, 2, "FILE is required");
}

/// A terminal: what is written into its other end is what its user sees.
class Terminal {
 public:
  explicit Terminal(unsigned short columns) {
    if (_user < 0 || ::grantpt(_user) != 0 || ::unlockpt(_user) != 0 ||
        ::ptsname_r(_user, _name.data(), _name.size()) != 0) {
      throw std::runtime_error("no terminal");
    }
    _program = ::open(_name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const winsize size{24, columns, 0, 0};
    ::ioctl(_program, TIOCSWINSZ, &size);
    termios modes{};
    ::tcgetattr(_program, &modes);
    modes.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    ::tcsetattr(_program, TCSANOW, &modes);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  ~Terminal() {
    ::close(_program);
    ::close(_user);
  }

  std::string name() const { return _name.data(); }

  /// What was written, which has to be little enough for the terminal to hold.
  std::string shown() const {
    std::array<char, 4096> part{};
    ::fcntl(_user, F_SETFL, O_NONBLOCK);
    std::string text;
    for (;;) {
      const ssize_t count = ::read(_user, part.data(), part.size());
      if (count <= 0) return text;
      text.append(part.data(), static_cast<std::size_t>(count));
    }
  }

 private:
  std::array<char, 64> _name{};
  int _user = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  int _program = -1;
};

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

TEST_F(ShowOnATerminalTest, HasNoColoursWhereTheyAreNotWanted) {
  program.setVariable("TERM=xterm");
  program.setVariable("NO_COLOR=1");
  EXPECT_EQ(shown("Home", 80), kTree);
}

TEST_F(ShowOnATerminalTest, AnEmptyNoColorSaysNothing) {
  program.setVariable("TERM=xterm");
  program.setVariable("NO_COLOR=");
  EXPECT_THAT(shown("Home", 80), HasSubstr("\x1b["));
}

TEST_F(ShowOnATerminalTest, HasNoColoursOnADumbTerminal) {
  program.setVariable("TERM=dumb");
  EXPECT_THAT(shown("Home", 80), Not(HasSubstr("\x1b[")));
}

}  // namespace
