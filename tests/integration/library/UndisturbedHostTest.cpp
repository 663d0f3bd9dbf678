// SPDX-License-Identifier: Apache-2.0
#include <sys/socket.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "TestPaths.h"
#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/Inbox.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/Subprocess.h"

// The library leaves the process of its host unchanged.

namespace zt::test {
namespace {

/// Reads the start of each request and resets the connection.
class LeavingServer {
 public:
  LeavingServer() : _thread([this] { serve(); }) {}
  LeavingServer(const LeavingServer&) = delete;
  LeavingServer& operator=(const LeavingServer&) = delete;
  ~LeavingServer() {
    _port.stop();
    _thread.join();
  }

  std::string url() const { return _port.url("/soap"); }

 private:
  void serve() const {
    for (;;) {
      const FileDescriptor client = _port.accept();
      if (!client.isOpen()) return;
      char beginning[1000];
      [[maybe_unused]] const ssize_t count =
          ::recv(client.number(), beginning, sizeof(beginning), 0);
      const linger now{1, 0};
      ::setsockopt(client.number(), SOL_SOCKET, SO_LINGER, &now, sizeof(now));
    }
  }

  const LoopbackPort _port{LoopbackPort::Listens};
  std::thread _thread;
};

class UndisturbedHostTest : public RealPortalTest {
 protected:
  UndisturbedHostTest() { ::chmod(data.path().c_str(), 0777); }

  struct Outcome {
    int status;
    std::string changes;
    std::string output;
  };

  static constexpr const char* kMany = "many descriptors";
  static constexpr const char* kLittle = "little memory";

  /// The sanitizers need file descriptors and map more memory than the limit allows.
  static std::vector<const char*> conditions(std::vector<const char*> all) {
    if (zt::test::paths::kIsSanitized)
      std::erase_if(all, [](auto* one) { return one == kMany || one == kLittle; });
    return all;
  }

  Outcome run(const std::string& configurationUrl, const std::string& condition) const {
    const std::string file = data.path("changes");
    const ProgramResult host =
        runProgram(zt::test::paths::kWatchedHost, {configurationUrl, condition, file});
    return {host.status, content(file).value_or("nothing was written"), host.output + host.errors};
  }
};

TEST_F(UndisturbedHostTest, ItsProcessIsUnchanged) {
  Inbox inbox;
  for (const char* condition : conditions({"plain", "closed streams", "UTF-8 locale",
                                           "own handlers", "no user", kMany, kLittle})) {
    const Outcome outcome = run(inbox.configurationUrl(), condition);
    EXPECT_EQ(outcome.status, 0) << condition;
    EXPECT_EQ(outcome.changes, "") << condition;
    EXPECT_EQ(outcome.output, "") << condition;
    std::filesystem::remove_all(data.path("Kelvane"));
    std::filesystem::remove(data.path("changes"));
    std::filesystem::remove(data.path("changes.report"));
  }
}

TEST_F(UndisturbedHostTest, ItsProcessIsUnchangedWhenNothingIsAccepted) {
  Inbox inbox({"--answer", "refuse"});
  for (const char* condition : conditions({"plain", "closed streams", kMany})) {
    const Outcome outcome = run(inbox.configurationUrl(), condition);
    EXPECT_EQ(outcome.status, 1) << condition;
    EXPECT_EQ(outcome.changes, "") << condition;
    EXPECT_EQ(outcome.output, "") << condition;
  }
  const Outcome outcome = run("http://127.0.0.1:1/config.xml", "plain");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.changes + outcome.output, "");
}

TEST_F(UndisturbedHostTest, AServerThatDisconnectsWithinARequestDoesNotEndIt) {
  // SIGPIPE has its default action in the host, which would end it.
  Inbox inbox({"--answer", "drop"});
  const Outcome dropped = run(inbox.configurationUrl(), "plain");
  EXPECT_EQ(dropped.status, 1);
  EXPECT_EQ(dropped.changes + dropped.output, "");

  const LeavingServer leaving;
  ReportingServer server;
  server.setResponse(RequestKind::Configuration,
                     success("<c><defSOAP>" + leaving.url() + "</defSOAP></c>"));
  const Outcome left = run(server.configurationUrl(), "plain");
  EXPECT_EQ(left.status, 1);
  EXPECT_EQ(left.changes + left.output, "");
}

// libxml2 wrote to standard error when it had no memory for the text or the buffer of a report.
TEST_F(UndisturbedHostTest, ASavedReportThatIsTooLargeForItsMemoryIsNoReasonToPrint) {
  if (zt::test::paths::kIsSanitized) GTEST_SKIP() << "they map more memory than the limit allows";
  Inbox inbox;
  const std::string store = data.path("Kelvane/zt_watched_host/reports");
  for (const std::size_t mebibytes : {12U, 14U, 16U, 18U, 20U, 25U}) {
    std::filesystem::create_directories(store);
    std::ofstream(store + "/large.ztr")
        << "<a>" << std::string(mebibytes << 20U, 'x') << "</a>" << std::flush;
    const Outcome outcome = run(inbox.configurationUrl(), kLittle);
    EXPECT_EQ(outcome.status, 0) << mebibytes;
    EXPECT_EQ(outcome.output, "") << mebibytes;
    std::filesystem::remove_all(data.path("Kelvane"));
  }
}

}  // namespace
}  // namespace zt::test
