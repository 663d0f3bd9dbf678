// SPDX-License-Identifier: Apache-2.0
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "TestPaths.h"
#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/NetworkNamespace.h"
#include "ztportal/background/ZtBackgroundSender.h"

// The background sender on the real platform, with a real server.

namespace zt::test {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;

constexpr seconds kPatience{60};

/// The receipts that arrived on the thread of a sender.
class ReceiptLog {
 public:
  void add(const ZtBackgroundReceipt& receipt) {
    const std::lock_guard lock(_mutex);
    _receipts.push_back(receipt);
    _changed.notify_all();
  }
  /// Waits until there are `count`. Returns the outcomes.
  std::vector<ZtDeliveryOutcome> outcomes(std::size_t count) {
    std::unique_lock lock(_mutex);
    _changed.wait_for(lock, kPatience, [&] { return _receipts.size() >= count; });
    std::vector<ZtDeliveryOutcome> outcomes;
    for (const auto& receipt : _receipts) outcomes.push_back(receipt.delivery.outcome);
    return outcomes;
  }
  ZtBackgroundReceipt at(std::size_t index) {
    const std::lock_guard lock(_mutex);
    return _receipts.at(index);
  }

 private:
  std::mutex _mutex;
  std::condition_variable _changed;
  std::vector<ZtBackgroundReceipt> _receipts;
};

class BackgroundSenderTest : public RealPortalTest {
 protected:
  /// With receipts for `log`, and without a second try in the time of a test.
  ZtBackgroundOptions options() {
    ZtBackgroundOptions options;
    options.configurationUrl = server.configurationUrl();
    options.retryDelay = options.longestDelay = hours(1);
    options.onReceipt = [this](const auto& receipt) { log.add(receipt); };
    return options;
  }
  ZtBackgroundOptions quietOptions() {
    ZtBackgroundOptions quiet = options();
    quiet.onReceipt = nullptr;
    return quiet;
  }
  static std::shared_ptr<ZtPortalData> makeLocalReport() { return makeReport(""); }

  void refuse() { server.setResponse(RequestKind::Report, {"HTTP/1.1 500 No\r\n\r\n", kClose}); }
  void accept() {
    server.setResponse(RequestKind::Report, success(server.healthyBody(RequestKind::Report)));
  }
  std::size_t postedReports() const {
    std::size_t count = 0;
    for (const std::string& request : server.requests()) {
      if (kindOf(request) == RequestKind::Report) ++count;
    }
    return count;
  }

  static constexpr auto kClose = LoopbackResponse::Then::Close;
  ReportingServer server;
  ReceiptLog log;
};

TEST_F(BackgroundSenderTest, SendsWhatItIsHanded) {
  ZtBackgroundSender sender(options());
  const auto report = makeLocalReport();
  EXPECT_TRUE(sender.send(*report));
  EXPECT_THAT(log.outcomes(1), ElementsAre(ZtDeliveryOutcome::Accepted));
  EXPECT_EQ(log.at(0).report.path, fileOf(*report));
  EXPECT_EQ(log.at(0).report.reportId, report->reportId());
  EXPECT_EQ(log.at(0).delivery.savedTo, "");
  EXPECT_THAT(stored(), ElementsAre());
}

TEST_F(BackgroundSenderTest, SendsTheReportsOfEarlierRuns) {
  makeLocalReport()->saveReport();
  const ZtBackgroundSender sender(options());
  EXPECT_THAT(log.outcomes(1), ElementsAre(ZtDeliveryOutcome::Accepted));
}

TEST_F(BackgroundSenderTest, SendsEachReportOfManyThreadsOnce) {
  constexpr int kThreads = 4;
  constexpr int kReports = 25;
  ZtBackgroundSender sender(options());
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&sender] {
      for (int k = 0; k < kReports; ++k) EXPECT_TRUE(sender.send(*makeLocalReport()));
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(log.outcomes(kThreads * kReports).size(), std::size_t{kThreads * kReports});
  EXPECT_EQ(sender.flush(kPatience), 0U);
  EXPECT_EQ(postedReports(), std::size_t{kThreads * kReports});
}

TEST_F(BackgroundSenderTest, SavesBeforeItReturnsWhileTheServerHangs) {
  server.setResponse(RequestKind::Configuration, {"", LoopbackResponse::Then::Hang});
  ZtBackgroundSender sender(options());
  const auto report = makeLocalReport();
  EXPECT_TRUE(sender.send(*report));
  EXPECT_EQ(content(fileOf(*report)), report->getSoapString());
  EXPECT_EQ(sender.flush(milliseconds(0)), 1U);
  EXPECT_EQ(sender.stop(milliseconds(0)), 1U);
  EXPECT_EQ(sender.stop(kPatience), 1U);
}

TEST_F(BackgroundSenderTest, SaysWhenAReportCannotBeSaved) {
  ASSERT_TRUE(LinuxFiles().write(data.path("Kelvane"), "not a folder"));
  ZtBackgroundSender sender(options());
  const auto report = makeLocalReport();
  EXPECT_FALSE(sender.send(*report));
  EXPECT_NE(report->lastDelivery().saveError, "");
}

TEST_F(BackgroundSenderTest, TriesAgainAfterADelay) {
  refuse();
  ZtBackgroundOptions quick = options();
  quick.retryDelay = quick.longestDelay = milliseconds(1);
  ZtBackgroundSender sender(quick);
  EXPECT_TRUE(sender.send(*makeLocalReport()));
  EXPECT_EQ(log.outcomes(1).front(), ZtDeliveryOutcome::Refused);
  accept();
  EXPECT_EQ(sender.flush(kPatience), 0U);
}

TEST_F(BackgroundSenderTest, SetsAReportAsideAfterItsFailures) {
  refuse();
  ZtBackgroundOptions quick = options();
  quick.retryDelay = quick.longestDelay = milliseconds(1);
  quick.attempts = 3;
  ZtBackgroundSender sender(quick);
  const auto report = makeLocalReport();
  EXPECT_TRUE(sender.send(*report));
  log.outcomes(3);
  EXPECT_EQ(sender.flush(kPatience), 0U);
  EXPECT_EQ(log.outcomes(3).size(), 3U);
  EXPECT_EQ(ZtReportStore().listUnsendable().size(), 1U);
}

TEST_F(BackgroundSenderTest, FlushEndsADelayAndReturnsWhatIsLeft) {
  refuse();
  ZtBackgroundSender sender(options());
  EXPECT_TRUE(sender.send(*makeLocalReport()));
  EXPECT_EQ(log.outcomes(1).front(), ZtDeliveryOutcome::Refused);
  EXPECT_EQ(sender.flush(kPatience), 1U);
  accept();
  EXPECT_EQ(sender.flush(kPatience), 0U);
}

TEST_F(BackgroundSenderTest, OnlySavesOnceItIsStopped) {
  ZtBackgroundSender sender(options());
  EXPECT_EQ(sender.stop(kPatience), 0U);
  EXPECT_TRUE(sender.send(*makeLocalReport()));
  EXPECT_EQ(sender.flush(kPatience), 1U);
  EXPECT_EQ(sender.stop(kPatience), 1U);
  EXPECT_EQ(postedReports(), 0U);
}

TEST_F(BackgroundSenderTest, KeepsReceiptsForAnEventLoop) {
  ZtBackgroundOptions few = quietOptions();
  few.keptReceipts = 2;
  ZtBackgroundSender sender(few);
  pollfd watched{sender.descriptor(), POLLIN, 0};
  std::vector<std::string> paths;
  for (int i = 0; i < 3; ++i) {
    const auto report = makeLocalReport();
    EXPECT_TRUE(sender.send(*report));
    EXPECT_EQ(sender.flush(kPatience), 0U);
    paths.push_back(fileOf(*report));
  }
  EXPECT_EQ(::poll(&watched, 1, 0), 1);
  std::vector<std::string> taken;
  for (const auto& receipt : sender.receipts()) taken.push_back(receipt.report.path);
  EXPECT_THAT(taken, ElementsAre(paths[1], paths[2]));
  EXPECT_EQ(sender.droppedReceipts(), 1U);
  EXPECT_EQ(::poll(&watched, 1, 0), 0);
  EXPECT_TRUE(sender.receipts().empty());
}

TEST_F(BackgroundSenderTest, LetsItsCallbackThrowAndCallIt) {
  ZtBackgroundOptions nested = options();
  ZtBackgroundSender* called = nullptr;
  nested.onReceipt = [&](const auto& receipt) {
    log.add(receipt);
    if (receipt.delivery.savedTo.empty() && log.outcomes(1).size() < 2) {
      called->send(*makeLocalReport());
      called->flush(kPatience);
      throw std::runtime_error("of the host");
    }
    called->stop(kPatience);
    throw 7;  // NOLINT(hicpp-exception-baseclass): what a host may do
  };
  ZtBackgroundSender sender(nested);
  called = &sender;
  EXPECT_TRUE(sender.send(*makeLocalReport()));
  EXPECT_EQ(log.outcomes(2).size(), 2U);
  EXPECT_EQ(sender.stop(kPatience), 0U);
}

TEST_F(BackgroundSenderTest, LeavesTheSignalsToTheHost) {
  std::vector<bool> blocked;
  ZtBackgroundOptions asking = options();
  asking.onReceipt = [&](const auto& receipt) {
    sigset_t signals;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &signals);
    for (const int signal : {SIGTERM, SIGCHLD, SIGPIPE, SIGSEGV}) {
      blocked.push_back(::sigismember(&signals, signal) == 1);
    }
    log.add(receipt);
  };
  ZtBackgroundSender sender(asking);
  EXPECT_TRUE(sender.send(*makeLocalReport()));
  log.outcomes(1);
  EXPECT_THAT(blocked, ElementsAre(true, true, true, false));
  sigset_t own;
  ::pthread_sigmask(SIG_BLOCK, nullptr, &own);
  EXPECT_EQ(::sigismember(&own, SIGTERM), 0);
}

/// Runs `work` in a forked process. Returns its exit status, or -1.
int inFork(const std::function<int()>& work) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(work());
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(BackgroundSenderTest, OnlySavesInAForkedProcess) {
  // Once while the thread sleeps, once after it has ended.
  for (const bool isStopped : {false, true}) {
    auto sender = std::make_unique<ZtBackgroundSender>(quietOptions());
    EXPECT_EQ(sender->flush(kPatience), 0U);
    if (isStopped) sender->stop(kPatience);
    const std::size_t before = postedReports();
    EXPECT_EQ(inFork([&] {
                if (!sender->send(*makeLocalReport())) return 1;
                if (sender->flush(hours(1)) != 1) return 2;
                if (sender->stop(hours(1)) != 1) return 3;
                if (!sender->receipts().empty() || sender->droppedReceipts() != 0) return 4;
                sender.reset();
                return 0;
              }),
              0);
    EXPECT_EQ(postedReports(), before);
    EXPECT_EQ(stored().size(), 1U);
    EXPECT_EQ(sender->flush(kPatience), isStopped ? 1U : 0U);
  }
}

TEST_F(BackgroundSenderTest, SurvivesAHostThatClosesItsDescriptors) {
  if (paths::kIsSanitized) GTEST_SKIP() << "the sanitizers need descriptors";
  const std::string mine = data.path("mine");
  EXPECT_EQ(inFork([&] {
              ZtBackgroundSender sender(quietOptions());
              if (sender.flush(kPatience) != 0) return 1;
              ::close_range(3, ~0U, 0);
              std::vector<int> numbers;
              for (int i = 0; i < 10; ++i) {
                numbers.push_back(::open(mine.c_str(), O_RDWR | O_CREAT, 0600));
              }
              if (!sender.send(*makeLocalReport())) return 2;
              if (sender.flush(kPatience) != 0) return 3;
              if (sender.receipts().size() != 1) return 4;
              sender.stop(kPatience);
              return ::close(numbers.back()) == 0 ? 0 : 5;
            }),
            0);
  EXPECT_EQ(content(mine), "");
}

TEST_F(BackgroundSenderTest, SendsSoonAfterTheNetworkIsBack) {
  const auto work = [this] {
    if (!setLoopback(true)) return 1;
    const ReportingServer local;
    if (!setLoopback(false)) return 2;
    ZtBackgroundOptions patient = quietOptions();
    patient.configurationUrl = local.configurationUrl();
    ZtBackgroundSender sender(patient);
    if (!sender.send(*makeLocalReport())) return 3;
    if (sender.flush(kPatience) != 1) return 4;
    if (!setLoopback(true)) return 5;
    // Without the news the next try would be in an hour.
    pollfd receipts{sender.descriptor(), POLLIN, 0};
    if (::poll(&receipts, 1, 60'000) != 1) return 6;
    const auto taken = sender.receipts();
    if (taken.size() != 1 || taken[0].delivery.outcome != ZtDeliveryOutcome::Accepted) return 7;
    return sender.stop(kPatience) == 0 ? 0 : 8;
  };
  if (paths::kIsSanitized) GTEST_SKIP() << "the thread sanitizer forbids threads after fork";
  const int result = inOwnNetwork(work);
  if (result < 0) GTEST_SKIP() << "this machine does not allow network namespaces";
  EXPECT_EQ(result, 0);
}

}  // namespace
}  // namespace zt::test
