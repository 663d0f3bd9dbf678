// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "TestPaths.h"
#include "tests/support/Inbox.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"

// Runs the program of README.md, which the build compiles against the public headers.

namespace zt::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class ReadmeExampleTest : public testing::Test {
 protected:
  /// Runs it without a session bus, with `proxy` in place of the customers' servers; its exit
  /// status.
  int runWithProxy(const std::string& proxy) const {
    const auto result = runProgram(paths::kReadmeExample, {},
                                   {.environment = std::vector<std::string>{
                                        "XDG_DATA_HOME=" + _data.path(), "http_proxy=" + proxy,
                                        "DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/bus"}});
    EXPECT_EQ(result.output, "");
    return result.status;
  }

  std::vector<std::string> savedReports() const {
    std::vector<std::string> contents;
    const std::filesystem::path store = _data.path("Kelvane/Setup/reports");
    if (!std::filesystem::exists(store)) return contents;
    for (const auto& entry : std::filesystem::directory_iterator(store)) {
      std::ifstream file(entry.path(), std::ios::binary);
      contents.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return contents;
  }

  TemporaryFolder _data;
};

TEST_F(ReadmeExampleTest, IsAcceptedByAnInbox) {
  Inbox inbox;
  EXPECT_EQ(runWithProxy(inbox.url()), 0);
  const auto reports = inbox.reports();
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports[0].customerId, "Kelvane");
  EXPECT_EQ(reports[0].applicationVersion, "2.1.77");
  EXPECT_EQ(reports[0].pools, (std::vector<std::string>{"COMPUTER_SYSTEM", "EXECUTION"}));
  const std::string request = inbox.raw(reports[0].number);
  EXPECT_THAT(request, HasSubstr(">Copy<"));
  EXPECT_THAT(request, HasSubstr(">EDITION<"));
  EXPECT_THAT(savedReports(), IsEmpty());
}

TEST_F(ReadmeExampleTest, IsInTheStoreWithoutAServer) {
  const LoopbackPort nobody(LoopbackPort::Refuses);
  EXPECT_EQ(runWithProxy(nobody.url()), 1);
  const auto saved = savedReports();
  ASSERT_EQ(saved.size(), 1U);
  EXPECT_THAT(saved[0], HasSubstr(">EDITION<"));
}

}  // namespace
}  // namespace zt::test
