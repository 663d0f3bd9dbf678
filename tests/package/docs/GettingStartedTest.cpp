#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <regex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "TestPaths.h"
#include "tests/package/docs/MarkdownBlocks.h"
#include "tests/support/Child.h"
#include "tests/support/TemporaryFolder.h"

// docs/getting-started.md, done from its first block to its last.

namespace {

using testing::HasSubstr;
using zt::test::Child;

/// A port of the loopback interface that was free a moment ago.
std::string freePort() {
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof(address);
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  const bool failed =
      ::bind(socket, generic, size) != 0 || ::getsockname(socket, generic, &size) != 0;
  ::close(socket);
  if (failed) throw std::runtime_error("no loopback port");
  return std::to_string(ntohs(address.sin_port));
}

std::string replaced(std::string text, std::string_view what, const std::string& with) {
  for (std::size_t at = text.find(what); at != std::string::npos;
       at = text.find(what, at + with.size())) {
    text.replace(at, what.size(), with);
  }
  return text;
}

TEST(GettingStartedTest, LeadsToAReportThatIsAcceptedAndOneThatIsKeptAndResent) {
  const zt::test::TemporaryFolder folder;
  const std::string port = freePort();
  std::filesystem::create_directory(folder.path("hello"));
  // The first commands are those in the clone; this build stands in the place of the one they make.
  std::string script = "set -euo pipefail\ncd " + zt::test::paths::kSource + "\n";
  bool isFirst = true;
  for (const auto& block :
       zt::test::markdownBlocks(zt::test::paths::kSource + "/docs/getting-started.md")) {
    if (!block.file.empty()) {
      folder.write("hello/" + block.file, block.content);
    } else if (block.language == "sh") {
      std::string commands = replaced(block.content, ":8025", ":" + port);
      if (isFirst) {
        const std::string build = "cmake -B build\ncmake --build build\n";
        EXPECT_THAT(commands, HasSubstr(build));
        commands = replaced(commands, build, "");
        commands =
            replaced(commands, "--install build ", "--install " + zt::test::paths::kBuild + " ");
        commands += "cd " + folder.path() + "\n";
      }
      isFirst = false;
      script += commands;
    }
  }
  const std::string file = folder.write("script.sh", script);
  Child bash("/bin/bash", {file},
             std::vector<std::string>{"PATH=/usr/bin:/bin", "LC_ALL=C", "HOME=" + folder.path(),
                                      "PREFIX=" + folder.path("prefix")});
  const std::string output = bash.waitForOutput();
  const std::string errors = bash.waitForErrors();
  EXPECT_EQ(bash.wait(), 0) << script << output << errors;
  EXPECT_THAT(output, HasSubstr("Hello\nreported\n"));
  EXPECT_THAT(output, HasSubstr("\"customerId\":\"Kelvane\""));
  EXPECT_THAT(output, HasSubstr("Hello\nkept for later\n{"));
  EXPECT_TRUE(std::regex_search(output, std::regex("\\{[0-9A-F-]{36}\\}\\.ztr\n"))) << output;
  EXPECT_THAT(output, HasSubstr("\n1 sent, 0 left\n"));
}

}  // namespace
