#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "TestPaths.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Inbox.h"
#include "tests/support/TemporaryFolder.h"

// The program of README.md, cut out of it, compiled against what a host sees, and run.

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using zt::test::ChildProcess;
using zt::test::Inbox;
using zt::test::TemporaryFolder;

class ReadmeExampleTest : public testing::Test {
 protected:
  /// Runs it on a machine without a session bus and returns its exit status. The address in the
  /// text is where an inbox usually listens; a proxy stands in its place.
  int runWithProxy(const std::string& proxy) const {
    ChildProcess program(
        {zt::test::paths::kReadmeExample},
        std::vector<std::string>{"XDG_DATA_HOME=" + _data.path(), "http_proxy=" + proxy,
                                 "DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/bus"});
    EXPECT_EQ(program.readLine(std::chrono::seconds(60)), std::nullopt) << "it prints nothing";
    return program.wait();
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

/// A port of the loopback interface that is taken and refuses every connection.
class RefusingPort {
 public:
  RefusingPort() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(_socket, generic, length) != 0 || ::getsockname(_socket, generic, &length) != 0) {
      throw std::runtime_error("no loopback port");
    }
    _url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
  }
  RefusingPort(const RefusingPort&) = delete;
  RefusingPort& operator=(const RefusingPort&) = delete;
  ~RefusingPort() { ::close(_socket); }

  const std::string& url() const { return _url; }

 private:
  const int _socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  std::string _url;
};

TEST_F(ReadmeExampleTest, IsAcceptedByAnInbox) {
  Inbox inbox;
  EXPECT_EQ(runWithProxy(inbox.url()), 0);
  const auto reports = inbox.reports();
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports[0].at("customerId"), "Kelvane");
  EXPECT_EQ(reports[0].at("applicationVersion"), "2.1.77");
  EXPECT_EQ(reports[0].at("pools"), nlohmann::json({"COMPUTER_SYSTEM", "EXECUTION"}));
  const std::string request = inbox.raw(reports[0].at("number"));
  EXPECT_THAT(request, HasSubstr(">Copy<"));
  EXPECT_THAT(request, HasSubstr(">EDITION<"));
  EXPECT_THAT(savedReports(), IsEmpty());
}

TEST_F(ReadmeExampleTest, IsInTheStoreWithoutAServer) {
  const RefusingPort nobody;
  EXPECT_EQ(runWithProxy(nobody.url()), 1);
  const auto saved = savedReports();
  ASSERT_EQ(saved.size(), 1U);
  EXPECT_THAT(saved[0], HasSubstr(">EDITION<"));
}

}  // namespace
