// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "TestPaths.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"

// The installed programs, in the folder that the environment variable ZT_PROGRAMS names. The
// packages are unpacked into another folder, so their loader needs ZT_LIBRARIES; installed programs
// find their library by themselves.

namespace zt::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

const std::string kDescription = paths::kSource + "/examples/reports/installation.json";

std::string program(const std::string& name) {
  const char* const folder = std::getenv("ZT_PROGRAMS");
  if (folder == nullptr) throw std::runtime_error("ZT_PROGRAMS is not set");
  return folder + ("/" + name);
}

class InstalledToolsTest : public testing::Test {
 protected:
  Subprocess start(const std::string& program, std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), program);
    std::vector<std::string> environment{"XDG_DATA_HOME=" + _data.path(), "PATH=/usr/bin:/bin",
                                         "DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/bus"};
    if (const char* libraries = std::getenv("ZT_LIBRARIES")) {
      environment.push_back(std::string("LD_LIBRARY_PATH=") + libraries);
    }
    return Subprocess(std::move(arguments), {.environment = std::move(environment)});
  }

  /// The output of an installed program, which must succeed.
  std::string output(const std::string& program, std::vector<std::string> arguments) const {
    Subprocess process = start(program, std::move(arguments));
    std::string text = process.waitForOutput();
    EXPECT_EQ(process.waitForErrors(), "");
    EXPECT_EQ(process.wait(), 0);
    return text;
  }

  TemporaryFolder _data;
};

TEST_F(InstalledToolsTest, TellTheirVersion) {
  EXPECT_EQ(output(program("ztreport"), {"--version"}), "ztreport " + paths::kVersion + "\n");
  EXPECT_EQ(output(program("ztinbox"), {"--version"}), "ztinbox " + paths::kVersion + "\n");
}

TEST_F(InstalledToolsTest, SendAndReceiveAReport) {
  Subprocess inbox = start(program("ztinbox"), {"--listen", "127.0.0.1:0"});
  const std::string greeting = inbox.waitForLines(1);
  ASSERT_THAT(greeting, StartsWith("ztinbox: listening on http://127.0.0.1:"));
  const std::size_t begin = greeting.find("http");
  const std::string url = greeting.substr(begin, greeting.find('\n') - begin);

  output(program("ztreport"),
         {"send", kDescription, "--config-url", url + "/reporting/kelvane.xml"});
  EXPECT_THAT(inbox.waitForLines(2), HasSubstr("#1  accepted  Kelvane"));
  inbox.signal(SIGTERM);
  EXPECT_EQ(inbox.wait(), 0);
}

}  // namespace
}  // namespace zt::test
