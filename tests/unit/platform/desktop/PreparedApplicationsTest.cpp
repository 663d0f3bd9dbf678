// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Printing.h"
#include "tests/support/Subprocess.h"
#include "tests/unit/platform/desktop/MadeUpDesktop.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/platform/desktop/LinuxInstalledApplications.h"

// Questions about applications that one run of the helper program answers together.

namespace {

using zt::InstalledApplications;
using zt::LinuxInstalledApplications;
using zt::test::MadeUpDesktop;
using zt::test::ProgramResult;
using zt::test::runProgram;

constexpr std::array<std::string_view, 3> kIdentifiers{"org.mozilla.firefox", "com.google.Chrome",
                                                       "org.mozilla.thunderbird"};
constexpr std::array<std::string_view, 3> kUrls{"mailto:", "http:", "no URL"};

class PreparedApplicationsTest : public testing::Test {
 protected:
  PreparedApplicationsTest() {
    _desktop.program("usr/bin/some");
    _desktop.entry("usr/share/applications/firefox.desktop", "Name=Fire\nExec=some %u\n");
    _desktop.entry("usr/share/applications/thunderbird.desktop", "Name=Mail\nExec=missing\n");
    _desktop.entry("usr/share/applications/other.desktop", "Name=Other\nExec=some\n");
    _desktop.write("home/.config/mimeapps.list",
                   "[Default Applications]\nx-scheme-handler/http=other.desktop\n");
  }

  /// Replaces the helper program by a shell script that has the path of the real one in `$real`.
  LinuxInstalledApplications withProgram(const std::string& commands) const {
    _desktop.script("libexec/ztportal-applications",
                    "real=" + zt::libexecFolder() + "/ztportal-applications\n" + commands);
    return LinuxInstalledApplications(_desktop.path("libexec"), _desktop.root());
  }
  std::string content(const std::string& name) const {
    std::ifstream stream(_desktop.path(name));
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  static void expectSameAnswers(InstalledApplications& prepared, InstalledApplications& afresh) {
    for (const std::string_view identifier : kIdentifiers) {
      EXPECT_EQ(prepared.withIdentifier(identifier), afresh.withIdentifier(identifier))
          << identifier;
    }
    for (const std::string_view url : kUrls) {
      EXPECT_EQ(prepared.defaultFor(url), afresh.defaultFor(url)) << url;
    }
    for (const std::string_view identifier : kIdentifiers) {
      if (const auto path = afresh.withIdentifier(identifier)) {
        EXPECT_EQ(prepared.info(*path), afresh.info(*path)) << *path;
      }
    }
    EXPECT_EQ(prepared.info(*afresh.defaultFor("http:")), afresh.info(*afresh.defaultFor("http:")));
  }

  MadeUpDesktop _desktop;
  LinuxInstalledApplications _afresh{zt::libexecFolder(), _desktop.root()};
};

TEST_F(PreparedApplicationsTest, GivesTheSameAnswers) {
  ASSERT_TRUE(_afresh.withIdentifier("org.mozilla.firefox"));
  ASSERT_TRUE(_afresh.defaultFor("http:"));
  ASSERT_FALSE(_afresh.defaultFor("mailto:"));
  expectSameAnswers(*_afresh.prepared(kIdentifiers, kUrls), _afresh);
}

TEST_F(PreparedApplicationsTest, StartsTheProgramOnce) {
  auto applications =
      withProgram("echo started >>" + _desktop.path("log") + "\nexec $real \"$@\"\n");
  expectSameAnswers(*applications.prepared(kIdentifiers, kUrls), _afresh);
  EXPECT_EQ(content("log"), "started\n");
}

TEST_F(PreparedApplicationsTest, OtherQuestionsAreAskedSeparately) {
  const auto prepared = _afresh.prepared({}, {});
  expectSameAnswers(*prepared, _afresh);
  const std::string added =
      _desktop.entry("usr/share/applications/added.desktop", "Name=Added\nExec=some\n");
  EXPECT_EQ(prepared->withIdentifier("added"), added);
}

TEST_F(PreparedApplicationsTest, UnansweredQuestionsAreAskedAgain) {
  const char* const rows[] = {
      "exit 1",
      "printf '2\\0/one\\0'",
      "printf 'no number\\0'",
      "exec $real several 2 default mailto",
      "kill -9 $$",
  };
  for (const std::string row : rows) {
    auto applications =
        withProgram("case $1 in several) " + row + ";; *) exec $real \"$@\";; esac\n");
    expectSameAnswers(*applications.prepared(kIdentifiers, kUrls), _afresh);
  }
}

TEST_F(PreparedApplicationsTest, AProgramThatHangsIsNotAskedAgain) {
  auto applications =
      withProgram("echo started >>" + _desktop.path("log") + "\nexec /bin/sleep 1000\n");
  const auto prepared = applications.prepared(kIdentifiers, kUrls);
  for (const std::string_view identifier : kIdentifiers) {
    EXPECT_EQ(prepared->withIdentifier(identifier), std::nullopt) << identifier;
  }
  for (const std::string_view url : kUrls) {
    EXPECT_EQ(prepared->defaultFor(url), std::nullopt) << url;
  }
  EXPECT_EQ(content("log"), "started\n");
}

TEST_F(PreparedApplicationsTest, AProgramThatCannotBeStartedThrowsWhenItIsAsked) {
  auto applications = withProgram("");
  const std::string program = _desktop.path("libexec/ztportal-applications");
  std::ofstream(program) << "#!" << _desktop.path("missing") << "\n";
  const auto prepared = applications.prepared(kIdentifiers, kUrls);
  EXPECT_THROW(prepared->defaultFor("http:"), ZtException);
}

TEST_F(PreparedApplicationsTest, IfItIsNeverAskedItLeavesNoSubprocess) {
  { const auto prepared = _afresh.prepared(kIdentifiers, kUrls); }
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
}

TEST_F(PreparedApplicationsTest, TheProgramPrintsTheNumberOfStringsBeforeEachOfSeveralAnswers) {
  const std::string file = _desktop.path("usr/share/applications/firefox.desktop");
  const std::string other = _desktop.path("usr/share/applications/other.desktop");
  const auto terminated = [](const std::vector<std::string>& texts) {
    std::string output;
    for (const std::string& text : texts) output += text + '\0';
    return output;
  };
  EXPECT_EQ(
      runProgram(zt::libexecFolder() + "/ztportal-applications",
                 {"several", "2", "entry", file, "2", "default", "mailto", "2", "default", "http"}),
      (ProgramResult{
          0, terminated({"4", file, "Fire", "some", "%u", "0", "3", other, "Other", "some"}), ""}));
  // An invalid question ends the answers.
  EXPECT_EQ(runProgram(zt::libexecFolder() + "/ztportal-applications",
                       {"several", "2", "default", "mailto", "1", "other"}),
            (ProgramResult{0, terminated({"0"}), ""}));
  EXPECT_EQ(runProgram(zt::libexecFolder() + "/ztportal-applications",
                       {"several", "3", "default", "mailto"}),
            (ProgramResult{0, "", ""}));
}

}  // namespace
