// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

#include "TestPaths.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"

// docs/report-contents.md names every value that the library adds to a report.

namespace zt::test {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string textOfFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(ReportContentsTest, EveryValueThatTheLibraryAddsIsOnThePage) {
  const TemporaryFolder home;
  const LoopbackPort nobody(LoopbackPort::Refuses);
  const ProgramResult saved =
      runProgram(paths::kBuild + "/bin/ztreport", {"run", "--customer", "Kelvane", "--save"},
                 {.environment = std::vector<std::string>{
                      "HOME=" + home.path(), "PATH=/usr/bin:/bin", "http_proxy=" + nobody.url(),
                      "DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/bus"}});
  ASSERT_EQ(saved.status, 0) << saved.errors;
  const std::string report = textOfFile(saved.output.substr(0, saved.output.find('\n')));
  // The fields of the run itself are the host's.
  const std::string inventory = report.substr(0, report.find("Pool=\"EXECUTION\""));
  ASSERT_THAT(inventory, HasSubstr("USER_ISADMIN"));

  const std::string page = textOfFile(paths::kSource + "/docs/report-contents.md");
  const std::regex name("<Name[^>]*>([^<]*)</Name>|<(\\w+ID|ApplicationVersion) ");
  for (std::sregex_iterator found(inventory.begin(), inventory.end(), name), end; found != end;
       ++found) {
    const std::string text = (*found)[1].matched ? found->str(1) : found->str(2);
    EXPECT_THAT(page, HasSubstr("`" + text + "`"));
  }

  EXPECT_THAT(report, Not(HasSubstr(home.path())));
}

}  // namespace
}  // namespace zt::test
