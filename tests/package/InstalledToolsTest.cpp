#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/Child.h"
#include "tests/support/TemporaryFolder.h"

// The programs as they are installed in ZT_PROGRAMS. Those of the packages stand in a folder that
// plays the root of a system; there the loader is told of the system's libraries, ZT_LIBRARIES.
// Others have to find theirs themselves.

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using zt::test::Child;
using zt::test::TemporaryFolder;

constexpr const char* kDescription = ZT_REPORTS "/installation.json";

class InstalledToolsTest : public testing::Test {
 protected:
  Child start(const std::string& program, std::vector<std::string> arguments) const {
    std::vector<std::string> environment{"XDG_DATA_HOME=" + _data.path(), "PATH=/usr/bin:/bin",
                                         "DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/bus"};
    if (*ZT_LIBRARIES != '\0') environment.emplace_back("LD_LIBRARY_PATH=" ZT_LIBRARIES);
    return Child(program, std::move(arguments), std::move(environment));
  }

  /// What an installed program writes; it has to succeed.
  std::string output(const std::string& program, std::vector<std::string> arguments) const {
    Child child = start(program, std::move(arguments));
    std::string text = child.waitForOutput();
    EXPECT_EQ(child.waitForErrors(), "");
    EXPECT_EQ(child.wait(), 0);
    return text;
  }

  /// The text without what differs from run to run: the report's ID and moments.
  static std::string withoutIdAndMoments(const std::string& text) {
    static const std::regex reportId("(<ReportID[^>]*>)[^<]*");
    static const std::regex moment(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3})");
    return std::regex_replace(std::regex_replace(text, reportId, "$1"), moment, "");
  }

  TemporaryFolder _data;
};

TEST_F(InstalledToolsTest, TellTheirVersion) {
  EXPECT_EQ(output(ZT_PROGRAMS "/ztreport", {"--version"}), "ztreport " ZT_VERSION "\n");
  EXPECT_EQ(output(ZT_PROGRAMS "/ztinbox", {"--version"}), "ztinbox " ZT_VERSION "\n");
}

TEST_F(InstalledToolsTest, RenderAsTheBuiltOneDoes) {
  const std::vector<std::string> render{"render", kDescription};
  const std::string rendered = output(ZT_PROGRAMS "/ztreport", render);
  EXPECT_THAT(rendered, HasSubstr("EXECUTION"));
  EXPECT_EQ(withoutIdAndMoments(rendered),
            withoutIdAndMoments(output(ZT_BUILT_REPORT_PROGRAM, render)));
}

TEST_F(InstalledToolsTest, SendAndReceiveAReport) {
  Child inbox = start(ZT_PROGRAMS "/ztinbox", {"--listen", "127.0.0.1:0"});
  const std::string greeting = inbox.waitForLines(1);
  ASSERT_THAT(greeting, StartsWith("ztinbox: listening on http://127.0.0.1:"));
  const std::size_t begin = greeting.find("http");
  const std::string url = greeting.substr(begin, greeting.find('\n') - begin);

  output(ZT_PROGRAMS "/ztreport",
         {"send", kDescription, "--config-url", url + "/reporting/kelvane.xml"});
  EXPECT_THAT(inbox.waitForLines(2), HasSubstr("#1  accepted  Kelvane"));
  inbox.signal(SIGTERM);
  EXPECT_EQ(inbox.wait(), 0);
}

}  // namespace
