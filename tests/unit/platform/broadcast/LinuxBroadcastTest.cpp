#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "tests/support/BroadcastReceiver.h"
#include "tests/support/OpenDescriptors.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/SessionBus.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/broadcast/LinuxBroadcast.h"

namespace {

using zt::LinuxBroadcast;
using zt::test::BroadcastReceiver;
using zt::test::inForkedProcess;
using zt::test::openDescriptors;
using zt::test::ScopedEnvironment;
using zt::test::SessionBus;
using zt::test::Subprocess;
using zt::test::TemporaryFolder;
using UserInfo = std::map<std::string, ZtString>;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{60};
constexpr const char* kName = "ZtPortalGhostNotification";

std::string expectedLine(const std::string& object,
                         const std::map<std::string, std::string>& userInfo) {
  return zt::test::broadcastLine(kName, object, userInfo);
}

/// Compares two long texts without printing them.
void expectSame(const std::optional<std::string>& told, const std::string& expected) {
  ASSERT_TRUE(told.has_value());
  EXPECT_EQ(told->size(), expected.size());
  EXPECT_TRUE(*told == expected) << told->substr(0, 1000);
}

class LinuxBroadcastTest : public testing::Test {
 protected:
  void post(const ZtString& name, const ZtString& object, const UserInfo& userInfo) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    _broadcast.post(name, object, userInfo);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  }

  LinuxBroadcast _broadcast;
};

class LinuxBroadcastOnABusTest : public LinuxBroadcastTest {
 protected:
  SessionBus _bus;
  ScopedEnvironment _address{"DBUS_SESSION_BUS_ADDRESS", _bus.address().c_str()};
  BroadcastReceiver _receiver;
};

TEST_F(LinuxBroadcastOnABusTest, ReachesAnotherProcessWhole) {
  std::string request = "<request>\xc3\xa4\xf0\x9f\x98\x80\t\"'&amp;";
  while (request.size() < 1024 * 1024) request += "0123456789 abcdefghijklmnopqrstuvwxyz ";
  post(kName, "com.kelvane.Host",
       {{"url", "http://127.0.0.1/soap"}, {"request", request}, {"", ""}, {"z \xc3\xa4", "\x01"}});
  expectSame(_receiver.next(), expectedLine("com.kelvane.Host", {{"url", "http://127.0.0.1/soap"},
                                                                 {"request", request},
                                                                 {"", ""},
                                                                 {"z \xc3\xa4", "\x01"}}));
}

TEST_F(LinuxBroadcastOnABusTest, SendsAnEmptyUserInformation) {
  post(kName, "", {});
  expectSame(_receiver.next(), expectedLine("", {}));
}

TEST_F(LinuxBroadcastOnABusTest, WritesMissingTextsAsNull) {
  post(kName, nullptr, {{"here", "text"}, {"missing", nullptr}});
  expectSame(_receiver.next(), expectedLine("(null)", {{"here", "text"}, {"missing", "(null)"}}));
}

TEST_F(LinuxBroadcastOnABusTest, SendsNothingThatCannotStandInAMessage) {
  const std::string nul("a\0b", 3);
  post(kName, nul, {});
  post(kName, "object", {{nul, "value"}});
  post(kName, "object", {{"key", nul}});
  for (const char* bytes : {"\xff", "\xc3", "\xc0\x80", "\xed\xa0\x80", "\xf5\x80\x80\x80"}) {
    post(kName, bytes, {});
    post(kName, "object", {{bytes, "value"}});
    post(kName, "object", {{"a", "fine"}, {"key", bytes}});
  }
  for (const char* name : {"", "1", "a.b", "a b", "a-b", "\xc3\xa4"}) post(name, "object", {});
  post(nullptr, "object", {});
  post(nul, "object", {});
  post(std::string(256, 'a'), "object", {});
  // None of those arrived before this one.
  post(kName, "the first", {});
  expectSame(_receiver.next(), expectedLine("the first", {}));
}

TEST_F(LinuxBroadcastOnABusTest, SendsNothingThatIsTooLargeForABus) {
  post(kName, std::string(130 * 1024 * 1024, 'x'), {});
  post(kName, "the first", {});
  expectSame(_receiver.next(), expectedLine("the first", {}));
}

// A sender that disconnected right after sending sometimes lost a large message: the bus had not
// read all of it when it found the connection closed.
TEST_F(LinuxBroadcastOnABusTest, LosesNoMessageAndKeepsTheirOrder) {
  const std::string padding(1024 * 1024, 'x');
  for (int i = 0; i < 20; ++i) {
    post(kName, std::to_string(i), {{"small", "1"}});
    post(kName, std::to_string(i), {{"large", padding}});
    expectSame(_receiver.next(), expectedLine(std::to_string(i), {{"small", "1"}}));
    expectSame(_receiver.next(), expectedLine(std::to_string(i), {{"large", padding}}));
  }
}

TEST_F(LinuxBroadcastOnABusTest, ABusThatHangsDoesNotHoldTheCallerUp) {
  _bus.process().signal(SIGSTOP);
  const auto start = Clock::now();
  post(kName, std::string(8 * 1024 * 1024, 'x'), {});
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(30));
  _bus.process().signal(SIGCONT);
}

TEST_F(LinuxBroadcastOnABusTest, ABusThatEndedIsNone) {
  _bus.process().signal(SIGKILL);
  _bus.process().wait();
  post(kName, "object", {{"key", "value"}});
}

TEST_F(LinuxBroadcastOnABusTest, KeepsItsConnectionForTheNextMessage) {
  const std::ptrdiff_t before = openDescriptors();
  post(kName, "1", {});
  EXPECT_EQ(openDescriptors(), before + 1);
  post(kName, "2", {});
  EXPECT_EQ(openDescriptors(), before + 1);
  expectSame(_receiver.next(), expectedLine("1", {}));
  expectSame(_receiver.next(), expectedLine("2", {}));
}

TEST_F(LinuxBroadcastOnABusTest, AThreadsConnectionEndsWithIt) {
  const std::ptrdiff_t before = openDescriptors();
  std::thread([this] { post(kName, "object", {}); }).join();
  EXPECT_EQ(openDescriptors(), before);
  expectSame(_receiver.next(), expectedLine("object", {}));
}

TEST_F(LinuxBroadcastOnABusTest, AChildProcessOpensItsOwn) {
  post(kName, "parent", {});
  EXPECT_EQ(inForkedProcess([this] {
              _broadcast.post(kName, "child", {});
              return 0;
            }),
            0);
  post(kName, "parent again", {});
  for (const char* sender : {"parent", "child", "parent again"}) {
    expectSame(_receiver.next(), expectedLine(sender, {}));
  }
}

TEST_F(LinuxBroadcastOnABusTest, NeverStandsInThePlaceOfAClosedStream) {
  EXPECT_EQ(inForkedProcess([this] {
              ::close(STDIN_FILENO);
              _broadcast.post(kName, "object", {});
              return ::fcntl(STDIN_FILENO, F_GETFD) < 0 ? 0 : 1;
            }),
            0);
  expectSame(_receiver.next(), expectedLine("object", {}));
}

TEST_F(LinuxBroadcastTest, ABusThatWasStartedAnewGetsTheNextMessage) {
  const TemporaryFolder folder;
  const std::string path = "unix:path=" + folder.path("bus");
  const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", path.c_str());
  for (const char* object : {"first", "second"}) {
    Subprocess daemon(
        {"dbus-daemon", "--session", "--nofork", "--print-address", "--address=" + path});
    ASSERT_TRUE(daemon.readLine(kPatience).has_value());
    BroadcastReceiver receiver;
    post(kName, object, {});
    expectSame(receiver.next(), expectedLine(object, {}));
  }
}

TEST_F(LinuxBroadcastTest, FindsTheBusInTheUsersRuntimeFolder) {
  const TemporaryFolder folder;
  const ScopedEnvironment runtime("XDG_RUNTIME_DIR", folder.path().c_str());
  Subprocess daemon({"dbus-daemon", "--session", "--nofork", "--print-address",
                     "--address=unix:path=" + folder.path("bus")});
  ASSERT_TRUE(daemon.readLine(kPatience).has_value());
  const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", nullptr);
  BroadcastReceiver receiver;
  post(kName, "object", {{"key", "value"}});
  expectSame(receiver.next(), expectedLine("object", {{"key", "value"}}));
}

TEST_F(LinuxBroadcastTest, WithoutABusNothingHappens) {
  const TemporaryFolder folder;
  const std::pair<const char*, const char*> rows[] = {
      {nullptr, nullptr},
      {nullptr, ""},
      {nullptr, "relative"},
      {"", nullptr},
      {"nonsense", nullptr},
      {"unix:", nullptr},
      {"unix:path=relative", nullptr},
      {"unix:path=/nonexistent/bus", nullptr},
      {"tcp:host=127.0.0.1,port=1", nullptr},
  };
  for (const auto& [busAddress, runtimeFolder] : rows) {
    SCOPED_TRACE(busAddress != nullptr ? busAddress : "(unset)");
    const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", busAddress);
    const ScopedEnvironment runtime("XDG_RUNTIME_DIR", runtimeFolder);
    post(kName, "object", {{"key", "value"}});
  }
}

/// A socket that accepts connections and never responds.
class SilentServer {
 public:
  explicit SilentServer(const std::string& path) : _socket(::socket(AF_UNIX, SOCK_STREAM, 0)) {
    struct sockaddr_un address {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    if (::bind(_socket, reinterpret_cast<struct sockaddr*>(&address), sizeof(address)) != 0 ||
        ::listen(_socket, 8) != 0) {
      throw std::runtime_error("cannot listen at " + path);
    }
  }
  SilentServer(const SilentServer&) = delete;
  SilentServer& operator=(const SilentServer&) = delete;
  ~SilentServer() { ::close(_socket); }

 private:
  int _socket;
};

TEST_F(LinuxBroadcastTest, ABusThatNeverAnswersDoesNotHoldTheCallerUp) {
  const TemporaryFolder folder;
  const SilentServer server(folder.path("bus"));
  const std::string path = "unix:path=" + folder.path("bus");
  const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", path.c_str());
  const auto start = Clock::now();
  post(kName, "object", {{"key", "value"}});
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(10));
}

}  // namespace
