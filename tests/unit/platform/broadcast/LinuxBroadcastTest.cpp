// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <map>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/BroadcastReceiver.h"
#include "tests/support/CollectedLog.h"
#include "tests/support/OpenDescriptors.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/SessionBus.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/base/FileDescriptor.h"
#include "ztportal/platform/broadcast/LinuxBroadcast.h"

namespace {

using zt::FileDescriptor;
using zt::LinuxBroadcast;
using zt::test::BroadcastReceiver;
using zt::test::inForkedProcess;
using zt::test::openDescriptors;
using zt::test::ScopedEnvironment;
using zt::test::SessionBus;
using zt::test::SilentBus;
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

  // The time to answer on a busy machine.
  LinuxBroadcast _broadcast{kPatience};
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

// One such character in a request text was enough for no companion to hear of the report.
TEST_F(LinuxBroadcastOnABusTest, ReplacesWhatNoMessageCanHave) {
  const std::string r = "\xef\xbf\xbd";  // U+FFFD
  const struct {
    std::string text;
    std::string received;
  } rows[] = {
      {std::string("a\0b\0", 4), "a" + r + "b" + r},
      {"\xff", r},
      {"a\xc3", "a" + r},
      {"\xc3\xa4\xc3", "\xc3\xa4" + r},
      {"\xc0\x80", r + r},
      {"\xed\xa0\x80", r + r + r},
      {"\xf5\x80\x80\x80", r + r + r + r},
      // Noncharacters and their neighbours.
      {"\xef\xb7\x8f\xef\xb7\x90\xef\xb7\xaf\xef\xb7\xb0", "\xef\xb7\x8f" + r + r + "\xef\xb7\xb0"},
      {"\xef\xbf\xbd\xef\xbf\xbe\xef\xbf\xbf\xf0\x90\x80\x80", r + r + r + "\xf0\x90\x80\x80"},
      {"\xf0\x9f\xbf\xbe\xf0\x9f\xbf\xbf", r + r},
      {"\xf4\x8f\xbf\xbd\xf4\x8f\xbf\xbe\xf4\x8f\xbf\xbf", "\xf4\x8f\xbf\xbd" + r + r},
      {"\x01\x1b\x7f\xc2\x80\xee\x80\x80\xef\xbb\xbf",
       "\x01\x1b\x7f\xc2\x80\xee\x80\x80\xef\xbb\xbf"},
  };
  for (const auto& row : rows) {
    post(kName, row.text, {{row.text, "value"}, {"key", row.text}});
    expectSame(_receiver.next(),
               expectedLine(row.received, {{row.received, "value"}, {"key", row.received}}));
  }
}

TEST_F(LinuxBroadcastOnABusTest, SendsNothingWithoutAValidName) {
  const std::string nul("a\0b", 3);
  for (const char* name : {"", "1", "a.b", "a b", "a-b", "\xc3\xa4"}) post(name, "object", {});
  post(nullptr, "object", {});
  post(nul, "object", {});
  post(std::string(256, 'a'), "object", {});
  // None of those arrived before this one.
  post(kName, "the first", {});
  expectSame(_receiver.next(), expectedLine("the first", {}));
}

TEST_F(LinuxBroadcastOnABusTest, SendsNothingThatIsTooLargeForABus) {
  const zt::test::CollectedLog logged;
  post(kName, std::string(130 * 1024 * 1024, 'x'), {});
  EXPECT_EQ(logged.lines(), std::vector<std::string>{
                                "warning broadcast: the session bus has closed the connection"});
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
  LinuxBroadcast broadcast;
  for (const bool isConnected : {false, true}) {
    if (isConnected) post(kName, "connects", {});
    _bus.process().signal(SIGSTOP);
    const auto start = Clock::now();
    broadcast.post(kName, std::string(1024 * 1024, 'x'), {});
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(2));
    _bus.process().signal(SIGCONT);
  }
}

TEST_F(LinuxBroadcastOnABusTest, ABusThatEndedIsNone) {
  _bus.process().signal(SIGKILL);
  _bus.process().wait();
  post(kName, "object", {{"key", "value"}});
}

TEST_F(LinuxBroadcastOnABusTest, KeepsItsConnectionForTheNextMessage) {
  _broadcast.closeConnections();
  const std::ptrdiff_t before = openDescriptors();
  post(kName, "1", {});
  EXPECT_EQ(openDescriptors(), before + 1);
  post(kName, "2", {});
  EXPECT_EQ(openDescriptors(), before + 1);
  expectSame(_receiver.next(), expectedLine("1", {}));
  expectSame(_receiver.next(), expectedLine("2", {}));
}

TEST_F(LinuxBroadcastOnABusTest, ClosesItsConnectionWhenAsked) {
  _broadcast.closeConnections();
  const std::ptrdiff_t before = openDescriptors();
  for (const char* object : {"1", "2"}) {
    post(kName, object, {});
    expectSame(_receiver.next(), expectedLine(object, {}));
    _broadcast.closeConnections();
    EXPECT_EQ(openDescriptors(), before);
  }
}

/// A descriptor of the host's, and what its peer has received.
class HostsSocket {
 public:
  HostsSocket() {
    std::array<int, 2> both{};
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, both.data()) != 0) throw std::bad_alloc();
    _own = FileDescriptor(both[0]);
    _peers = FileDescriptor(both[1]);
  }
  /// Whether it is open, and nobody has written to it.
  bool isUntouched() const {
    char byte = 0;
    return ::recv(_peers.number(), &byte, 1, MSG_DONTWAIT) < 0 && errno == EAGAIN &&
           ::recv(_own.number(), &byte, 1, MSG_DONTWAIT) < 0 && errno == EAGAIN;
  }
  bool hasNumber(int number) const { return _own.number() == number || _peers.number() == number; }

 private:
  FileDescriptor _own;
  FileDescriptor _peers;
};

// After a host had closed all descriptors, the next message was written into the one of its new
// sockets that had the number of the connection to the bus, and that socket was closed afterwards.
TEST_F(LinuxBroadcastOnABusTest, LeavesADescriptorOfTheHostAloneThatHasTheNumberOfItsOwn) {
  if (!zt::test::kForkedProcessMayStartThreads) GTEST_SKIP();
  EXPECT_EQ(inForkedProcess([this] {
              const int number = FileDescriptor(::dup(STDIN_FILENO)).number();
              std::vector<HostsSocket> sockets;
              bool isUntouched = false;
              std::thread([&] {
                _broadcast.post(kName, "1", {});
                const bool isConnected = ::fcntl(number, F_GETFD) >= 0;
                ::close_range(3, ~0U, 0);
                do {
                  sockets.emplace_back();
                } while (!sockets.back().hasNumber(number));
                _broadcast.post(kName, "2", {});
                _broadcast.post(kName, "3", {});
                isUntouched = isConnected;
              }).join();
              for (const HostsSocket& socket : sockets) isUntouched &= socket.isUntouched();
              return isUntouched ? 0 : 1;
            }),
            0);
  for (const char* object : {"1", "2", "3"}) {
    expectSame(_receiver.next(), expectedLine(object, {}));
  }
}

TEST_F(LinuxBroadcastOnABusTest, ForgetsAConnectionThatTheHostHasClosed) {
  if (!zt::test::kForkedProcessMayStartThreads) GTEST_SKIP();
  for (const bool isAnotherPosted : {true, false}) {
    EXPECT_EQ(inForkedProcess([this, isAnotherPosted] {
                std::thread([this, isAnotherPosted] {
                  _broadcast.post(kName, "1", {});
                  ::close_range(3, ~0U, 0);
                  if (isAnotherPosted) _broadcast.post(kName, "2", {});
                }).join();
                return 0;
              }),
              0);
  }
  for (const char* object : {"1", "2", "1"}) expectSame(_receiver.next(), expectedLine(object, {}));
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

TEST_F(LinuxBroadcastTest, ABusThatWasMissedGetsTheNextMessage) {
  const TemporaryFolder folder;
  const std::string path = "unix:path=" + folder.path("bus");
  const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", path.c_str());
  post(kName, "missed", {});
  Subprocess daemon(
      {"dbus-daemon", "--session", "--nofork", "--print-address", "--address=" + path});
  ASSERT_TRUE(daemon.readLine(kPatience).has_value());
  BroadcastReceiver receiver;
  post(kName, "object", {});
  expectSame(receiver.next(), expectedLine("object", {}));
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

// A bus that took connections and said nothing held up each report for two seconds.
TEST_F(LinuxBroadcastTest, ABusThatDoesNotAnswerIsLeftAloneForAWhile) {
  SilentBus silent;
  const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", silent.address().c_str());
  LinuxBroadcast broadcast;
  const auto start = Clock::now();
  broadcast.post(kName, "object", {{"key", "value"}});
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(2));
  broadcast.post(kName, "object", {{"key", "value"}});
  std::thread([&] { broadcast.post(kName, "object", {{"key", "value"}}); }).join();
  EXPECT_EQ(silent.takeConnections(), 1);
}

TEST_F(LinuxBroadcastTest, ABusThatDidNotAnswerIsTriedAgainLater) {
  SilentBus silent;
  const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", silent.address().c_str());
  LinuxBroadcast broadcast(std::chrono::milliseconds(10), std::chrono::milliseconds(0));
  for (int i = 0; i < 3; ++i) broadcast.post(kName, "object", {});
  EXPECT_EQ(silent.takeConnections(), 3);
}

TEST_F(LinuxBroadcastOnABusTest, ABusThatDoesNotAnswerDoesNotKeepMessagesFromAnother) {
  LinuxBroadcast broadcast(kPatience);
  {
    SilentBus silent;
    const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", silent.address().c_str());
    LinuxBroadcast(std::chrono::milliseconds(10)).post(kName, "object", {});
  }
  broadcast.post(kName, "the first", {});
  expectSame(_receiver.next(), expectedLine("the first", {}));
}

}  // namespace
