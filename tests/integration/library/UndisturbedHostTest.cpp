#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "TestPaths.h"
#include "tests/integration/library/HostState.h"
#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/Inbox.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/ScopedUmask.h"
#include "tests/support/Subprocess.h"

// A host finds its process as it was before, whatever it runs as.

namespace zt::test {
namespace {

/// Takes the beginning of each request and is gone.
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

  /// The sanitizers need descriptors, and map more memory than a limit leaves.
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

TEST_F(UndisturbedHostTest, FindsItsProcessAsItWas) {
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

TEST_F(UndisturbedHostTest, FindsItsProcessAsItWasWhenNothingIsAccepted) {
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

TEST_F(UndisturbedHostTest, IsNotEndedByAServerThatLeavesInTheMiddleOfARequest) {
  // SIGPIPE has its default action in the host, which is to end it.
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

TEST_F(UndisturbedHostTest, NoticesWhatTheOtherTestsLookFor) {
  const HostState before = stateOfThisProcess();
  EXPECT_EQ(differences(before, stateOfThisProcess()), "");
  const auto noticed = [&before] { return differences(before, stateOfThisProcess()); };
  {
    const ScopedUmask umask(0123);
    EXPECT_EQ(noticed(), "Umask:: " + before.at("Umask:") + " became Umask:\t0123\n");
  }
  {
    const ScopedEnvironment variable("ZT_NEW", "1");
    EXPECT_NE(noticed().find("environment: "), std::string::npos);
  }
  {
    struct sigaction previous {};
    struct sigaction ignored {};
    ignored.sa_handler = SIG_IGN;
    ::sigaction(SIGUSR2, &ignored, &previous);
    EXPECT_TRUE(noticed().starts_with("signal 12: ")) << noticed();
    ::sigaction(SIGUSR2, &previous, nullptr);
  }
  {
    const int inherited = ::open("/dev/null", O_RDONLY);
    EXPECT_TRUE(noticed().starts_with("descriptor ")) << noticed();
    ::close(inherited);
    const int kept = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(noticed(), "");
    ::close(kept);
  }
  EXPECT_EQ(noticed(), "");
  {
    const std::jthread thread([](const std::stop_token& stop) {
      while (!stop.stop_requested()) std::this_thread::yield();
    });
    EXPECT_NE(noticed().find("Threads:"), std::string::npos);
  }
}

}  // namespace
}  // namespace zt::test
