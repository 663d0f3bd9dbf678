// SPDX-License-Identifier: Apache-2.0
#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/FailingFiles.h"
#include "tests/unit/portal/PortalTest.h"
#include "ztportal/portal/ZtReportStore.h"

namespace zt::test {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using SystemClock = std::chrono::system_clock;
using Outcome = ZtDeliveryOutcome;

constexpr const char* kHost = "/home/user/.local/share/Kelvane/Setup/";
constexpr const char* kMalformed = "<a>&</a>";

/// Saved reports "{1}", "{2}", … , the first one the oldest, with the texts "<r>1</r>" and so on.
/// The server responds to a report as `responses` says, or accepts it.
class StoreSenderTest : public PortalTest {
 protected:
  StoreSenderTest() {
    options.configurationUrl = kConfigurationUrl;
    options.retryDelay = milliseconds(1);
    options.longestDelay = milliseconds(4);
    options.progress = [this](const ZtSavedReport& saved, const ZtDelivery& delivery) {
      progress.emplace_back(saved.reportId.view(), delivery.outcome);
      EXPECT_EQ(delivery.savedTo.empty(), !platform.files_.exists(saved.path)) << saved.path;
      return true;
    };
    const auto respond = platform.http_.answer;
    platform.http_.answer = [this, respond](const auto& asked) {
      const HttpResponse usual = respond(asked);
      const auto found = responses.find(asked.body.value_or(""));
      if (found == responses.end()) return usual;
      if (onReport) onReport();
      return found->second;
    };
  }

  static std::string textOf(int number) { return "<r>" + std::to_string(number) + "</r>"; }
  void save(int number, const std::string& content) {
    const std::string file = inStore("{" + std::to_string(number) + "}.ztr");
    ASSERT_TRUE(platform.files_.createFolders(kReports));
    ASSERT_TRUE(platform.files_.write(file, content));
    platform.files_.setTime(file, SystemClock::now() - hours(100 - number));
  }
  void saveThree() {
    for (int number = 1; number <= 3; ++number) save(number, textOf(number));
  }
  ZtSendResult send() {
    progress.clear();
    forget();
    return ZtReportStore().send(options);
  }
  std::vector<std::string> namesIn(const std::string& folder) {
    return platform.files_.list(kHost + folder).value_or(std::vector<std::string>());
  }
  std::string state() {
    return platform.files_.read(kHost + std::string("sending.state"), 9999).value_or("");
  }

  ZtSendOptions options;
  std::vector<std::pair<std::string, Outcome>> progress;
  std::map<std::string, HttpResponse> responses;
  std::function<void()> onReport;
};

TEST_F(StoreSenderTest, SendsTheOldestFirstAndRemovesWhatIsAccepted) {
  saveThree();
  const ZtSendResult result = send();
  EXPECT_EQ(result.end, ZtSendEnd::Done);
  EXPECT_EQ(result.accepted, 3U);
  EXPECT_EQ(result.left, 0U);
  EXPECT_THAT(namesInStore(), IsEmpty());
  EXPECT_THAT(progress, ElementsAre(Pair("{1}", Outcome::Accepted), Pair("{2}", Outcome::Accepted),
                                    Pair("{3}", Outcome::Accepted)));
  EXPECT_THAT(steps, ElementsAre(kGet, kVersion, kBroadcast, kReport, kBroadcast, kReport,
                                 kBroadcast, kReport));
  EXPECT_EQ(platform.http_.asked.back().body, textOf(3));
}

TEST_F(StoreSenderTest, AsksNobodyForAnEmptyStore) {
  EXPECT_EQ(send().end, ZtSendEnd::Done);
  EXPECT_THAT(steps, IsEmpty());
}

TEST_F(StoreSenderTest, AReportThatCannotBeSentBlocksNoOther) {
  save(1, kMalformed);
  save(2, textOf(2));
  save(3, textOf(3));
  save(4, textOf(4));
  save(5, textOf(5));
  responses[textOf(2)] = {200, kRefused};
  responses[textOf(3)] = {400, ""};
  responses[textOf(4)] = {};  // the server is still there
  const ZtSendResult result = send();
  EXPECT_EQ(result.end, ZtSendEnd::Done);
  EXPECT_EQ(result.accepted, 1U);
  EXPECT_EQ(result.left, 4U);
  EXPECT_THAT(progress,
              ElementsAre(Pair("{1}", Outcome::Unreadable), Pair("{2}", Outcome::InvalidResponse),
                          Pair("{3}", Outcome::Refused), Pair("{4}", Outcome::Unreachable),
                          Pair("{5}", Outcome::Accepted)));
  EXPECT_EQ(state(), "1 {1}.ztr\n1 {2}.ztr\n1 {3}.ztr\n1 {4}.ztr\n");
}

TEST_F(StoreSenderTest, AReportWithTooManyFailuresIsSetAside) {
  save(1, kMalformed);
  save(2, textOf(2));
  responses[textOf(2)] = {500, ""};
  options.attempts = 3;
  EXPECT_EQ(send().setAside, 0U);
  EXPECT_EQ(send().setAside, 0U);
  EXPECT_THAT(namesIn("unsendable"), IsEmpty());
  EXPECT_EQ(state(), "2 {1}.ztr\n2 {2}.ztr\n");
  const ZtSendResult result = send();
  EXPECT_EQ(result.setAside, 2U);
  EXPECT_EQ(result.left, 0U);
  EXPECT_THAT(namesIn("unsendable"), ElementsAre("{1}.ztr", "{2}.ztr"));
  EXPECT_THAT(namesIn(""), ElementsAre("reports", "sending.lock", "unsendable"));
}

TEST_F(StoreSenderTest, WithoutALimitOfAttemptsNothingIsSetAsideAndEachReportIsTriedOnce) {
  saveThree();
  report = {200, kRefused};
  options.attempts = 0;
  options.retry = true;
  EXPECT_EQ(send().left, 3U);
  EXPECT_EQ(progress.size(), 3U);
  EXPECT_EQ(state(), "");
}

// A host that was still writing a report found it among those that cannot be sent.
TEST_F(StoreSenderTest, AnIncompleteFileOfTheLastSecondsIsNotSetAside) {
  save(1, "<a>");
  options.attempts = 1;
  const std::pair<seconds, std::size_t> rows[] = {
      {seconds(0), 0}, {seconds(5), 0}, {seconds(11), 1}};
  for (const auto& [age, setAside] : rows) {
    platform.files_.setTime(inStore("{1}.ztr"), SystemClock::now() - age);
    EXPECT_EQ(send().setAside, setAside) << age.count();
  }
  save(1, "<a>");
  platform.files_.setTime(inStore("{1}.ztr"), SystemClock::now() + hours(1));
  EXPECT_EQ(send().setAside, 1U) << "a date ahead is no reason to wait for it";
}

TEST_F(StoreSenderTest, AReportThatIsWrittenAgainWhileItIsSentStays) {
  save(1, textOf(1));
  responses[textOf(1)] = {200, kAccepted};
  onReport = [this] { platform.files_.write(inStore("{1}.ztr"), "<new/>"); };
  const ZtSendResult result = send();
  EXPECT_EQ(result.accepted, 1U);
  EXPECT_EQ(result.left, 1U);
  EXPECT_EQ(platform.files_.read(inStore("{1}.ztr"), 99), "<new/>");
}

// A report that was still being written when the store was listed was sent, kept as one that has
// been written again, and sent a second time.
TEST_F(StoreSenderTest, AReportThatIsWrittenWhileTheStoreIsListedIsSentOnce) {
  save(1, "<r>");
  const auto respond = platform.http_.answer;
  platform.http_.answer = [this, respond](const auto& asked) {
    if (!asked.body) platform.files_.write(inStore("{1}.ztr"), textOf(1));
    return respond(asked);
  };
  const ZtSendResult result = send();
  EXPECT_EQ(result.accepted, 1U);
  EXPECT_EQ(result.left, 0U);
}

// When the server itself is in trouble, no report is at fault, and the others would fare alike.
TEST_F(StoreSenderTest, EndsWhenTheServerIsNotInService) {
  saveThree();
  options.attempts = 1;
  for (const int status : {401, 403, 404, 405, 407, 408, 429, 502, 503, 504}) {
    report = {status, ""};
    const ZtSendResult result = send();
    EXPECT_EQ(result.end, ZtSendEnd::Deferred) << status;
    EXPECT_EQ(result.left, 3U) << status;
    EXPECT_EQ(result.retryAfter, seconds(0)) << status;
    EXPECT_EQ(progress.size(), 1U) << status;
  }
  EXPECT_EQ(state(), "");
}

TEST_F(StoreSenderTest, EndsWhenItIsOffline) {
  saveThree();
  responses[textOf(2)] = {};
  options.attempts = 1;
  options.progress = [this](const auto& saved, const auto&) {
    if (saved.reportId == "{1}") version = {};
    return true;
  };
  ZtSendResult result = send();
  EXPECT_EQ(result.end, ZtSendEnd::Offline);
  EXPECT_EQ(result.accepted, 1U);
  EXPECT_EQ(result.left, 2U);
  result = send();
  EXPECT_EQ(result.end, ZtSendEnd::Offline);
  EXPECT_THAT(steps, ElementsAre(kGet, kVersion));
  cutOff();
  EXPECT_EQ(send().end, ZtSendEnd::Offline);
  EXPECT_THAT(steps, ElementsAre(kGet));
  EXPECT_EQ(state(), "");
}

TEST_F(StoreSenderTest, WaitsAsLongAsTheServerAsksInEveryProcess) {
  saveThree();
  report = {503, ""};
  report.retryAfter = seconds(100);
  const ZtSendResult result = send();
  EXPECT_EQ(result.end, ZtSendEnd::Deferred);
  EXPECT_GE(result.retryAfter, seconds(100));
  EXPECT_LE(result.retryAfter, seconds(101));
  EXPECT_EQ(send().end, ZtSendEnd::Deferred);
  EXPECT_THAT(steps, IsEmpty());

  // Another server did not ask for it.
  options.configurationUrl = "http://config.test/reporting/other.xml";
  EXPECT_EQ(send().end, ZtSendEnd::Deferred);
  EXPECT_EQ(progress.size(), 1U);
}

TEST_F(StoreSenderTest, AStateThatCannotBeUsedCountsFromTheStart) {
  save(1, textOf(1));
  responses[textOf(1)] = {400, ""};
  const std::string farAhead = std::to_string(
      std::chrono::duration_cast<seconds>((SystemClock::now() + hours(48)).time_since_epoch())
          .count());
  const std::string server = std::to_string(std::hash<std::string_view>()(kConfigurationUrl));
  for (const std::string& text :
       {std::string(), std::string("\n\nwait\n7\n7 \nx {1}.ztr\n-1 {1}.ztr\n"),
        std::string("99999999999 {1}.ztr\n"), farAhead + " wait " + server + "\n",
        std::string("4 {2}.ztr\n\0\xFF", 13)}) {
    ASSERT_TRUE(platform.files_.write(kHost + std::string("sending.state"), text));
    EXPECT_EQ(send().end, ZtSendEnd::Done) << text;
    EXPECT_EQ(state(), "1 {1}.ztr\n") << text;
  }
}

TEST_F(StoreSenderTest, AcceptedReportsForgetTheirFailures) {
  save(1, textOf(1));
  responses[textOf(1)] = {400, ""};
  send();
  EXPECT_EQ(state(), "1 {1}.ztr\n");
  responses.clear();
  EXPECT_EQ(send().accepted, 1U);
  EXPECT_THAT(namesIn(""), ElementsAre("reports", "sending.lock"));
}

// Trying again.

TEST_F(StoreSenderTest, TriesAgainUntilEverythingIsAcceptedOrSetAside) {
  saveThree();
  save(4, kMalformed);
  responses[textOf(2)] = {400, ""};
  options.retry = true;
  options.attempts = 4;
  version = {};
  options.isCancelled = [&] {
    if (!steps.empty()) version = {200, "<versioninfo>7.1</versioninfo>"};
    return false;
  };
  const ZtSendResult result = send();
  EXPECT_EQ(result.end, ZtSendEnd::Done);
  EXPECT_EQ(result.accepted, 2U);
  EXPECT_EQ(result.setAside, 2U);
  EXPECT_EQ(result.left, 0U);
}

TEST_F(StoreSenderTest, AFileThatCannotBeReadIsNoReasonToTryAgain) {
  save(1, kMalformed);
  options.retry = true;
  EXPECT_EQ(send().end, ZtSendEnd::Done);
  EXPECT_EQ(progress.size(), 1U);
}

TEST_F(StoreSenderTest, NeverWaitsLongerThanItsBudget) {
  saveThree();
  report = {503, ""};
  options.retry = true;
  options.budget = seconds(40);
  options.progress = [&](const auto& saved, const auto& delivery) {
    progress.emplace_back(saved.reportId.view(), delivery.outcome);
    if (progress.size() == 2) report.retryAfter = seconds(50);
    return true;
  };
  const ZtSendResult result = send();
  EXPECT_EQ(result.end, ZtSendEnd::Budget);
  EXPECT_GE(result.retryAfter, seconds(50));
  EXPECT_EQ(progress.size(), 3U);
}

TEST_F(StoreSenderTest, NoRequestBeginsAfterTheBudget) {
  saveThree();
  options.budget = milliseconds(1);
  options.progress = [this](const auto&, const auto&) {
    const auto end = std::chrono::steady_clock::now() + options.budget;
    while (std::chrono::steady_clock::now() < end) continue;
    return true;
  };
  const ZtSendResult result = send();
  EXPECT_EQ(result.end, ZtSendEnd::Budget);
  EXPECT_LE(result.accepted, 1U);
  EXPECT_EQ(result.left, 3 - result.accepted);
}

// Cancellation.

TEST_F(StoreSenderTest, TheHostCanCancelAfterAndBeforeEachReport) {
  saveThree();
  options.progress = [](const auto&, const auto&) { return false; };
  ZtSendResult result = send();
  EXPECT_EQ(result.end, ZtSendEnd::Cancelled);
  EXPECT_EQ(result.left, 2U);
  options.isCancelled = [] { return true; };
  result = send();
  EXPECT_EQ(result.end, ZtSendEnd::Cancelled);
  EXPECT_EQ(result.left, 2U);
  EXPECT_THAT(steps, IsEmpty());
}

TEST_F(StoreSenderTest, TheHostCanCancelAWait) {
  saveThree();
  report = {503, ""};
  report.retryAfter = hours(20);
  options.retry = true;
  int asked = 0;
  options.isCancelled = [&] { return ++asked > 3; };
  EXPECT_EQ(send().end, ZtSendEnd::Cancelled);
}

TEST_F(StoreSenderTest, AnExceptionOfTheHostReleasesTheStore) {
  saveThree();
  options.progress = [](const auto&, const auto&) -> bool { throwForeign(); };
  EXPECT_THROW(send(), ForeignError);
  options.progress = nullptr;
  EXPECT_EQ(send().accepted, 2U);
}

// The lock and the folder.

TEST_F(StoreSenderTest, OnlyOneSendsAtATime) {
  saveThree();
  ZtSendResult inner;
  options.progress = [&](const auto&, const auto&) {
    inner = ZtReportStore().send(options);
    return true;
  };
  EXPECT_EQ(send().accepted, 3U);
  EXPECT_EQ(inner.end, ZtSendEnd::Busy);
  EXPECT_EQ(inner.accepted, 0U);
}

TEST_F(StoreSenderTest, SendsNothingWithoutAFolderOrItsLock) {
  saveThree();
  FailingFiles files(platform.files_);
  files.failAlways(FailingFiles::Operation::Lock);
  platform.replacedFiles = &files;
  ZtSendResult result = send();
  EXPECT_EQ(result.end, ZtSendEnd::NoStore);
  EXPECT_EQ(result.left, 3U);
  platform.supportFolder_.folder = std::nullopt;
  result = send();
  EXPECT_EQ(result.end, ZtSendEnd::NoStore);
  EXPECT_THAT(steps, IsEmpty());
}

TEST_F(StoreSenderTest, SendsNothingWithoutTheUsersConsent) {
  saveThree();
  ASSERT_TRUE(ZtHost::setConsent(ZtConsent::Revoked));
  ZtSendResult result = send();
  EXPECT_EQ(result.end, ZtSendEnd::NoConsent);
  EXPECT_EQ(result.left, 3U);
  EXPECT_THAT(steps, IsEmpty());
  ASSERT_TRUE(ZtHost::setConsent(ZtConsent::Given));
  options.progress = [](const auto&, const auto&) {
    return ZtHost::setConsent(ZtConsent::Revoked);
  };
  result = send();
  EXPECT_EQ(result.end, ZtSendEnd::NoConsent);
  EXPECT_EQ(result.accepted, 1U);
  EXPECT_EQ(ZtReportStore().removeAll(), 2U);
  EXPECT_TRUE(ZtHost::setConsent(ZtConsent::Unset));
}

TEST_F(StoreSenderTest, AsksTheHostsHookAboutEachReport) {
  saveThree();
  ZtHost::setRequestHook([](std::string_view request) {
    if (request == textOf(1)) return ZtDecision::drop();
    return request == textOf(2) ? ZtDecision::replace("<changed/>") : ZtDecision::keep();
  });
  const ZtSendResult result = send();
  ZtHost::setRequestHook(nullptr);
  EXPECT_EQ(result.end, ZtSendEnd::Done);
  EXPECT_EQ(result.left, 1U);
  EXPECT_THAT(progress, ElementsAre(Pair("{1}", Outcome::Dropped), Pair("{2}", Outcome::Accepted),
                                    Pair("{3}", Outcome::Accepted)));
  EXPECT_EQ(platform.http_.asked[2].body, "<changed/>");
  EXPECT_EQ(state(), "");
}

TEST_F(StoreSenderTest, UsesItsTransportOptions) {
  saveThree();
  std::vector<std::string> urls;
  options.transport.emplace();
  options.transport->transport = [&urls](const ZtTransportRequest& request) {
    urls.emplace_back(request.url);
    return ZtTransportResponse{};
  };
  EXPECT_EQ(send().end, ZtSendEnd::Offline);
  EXPECT_THAT(urls, ElementsAre(kConfigurationUrl));
  options.transport->authorityFile = "/missing.pem";
  EXPECT_EQ(send().end, ZtSendEnd::WrongOptions);
  EXPECT_EQ(urls.size(), 1U);
}

TEST_F(StoreSenderTest, AReportThatCannotBeRemovedStays) {
  saveThree();
  FailingFiles files(platform.files_);
  files.failAlways(FailingFiles::Operation::Remove);
  platform.replacedFiles = &files;
  const ZtSendResult result = send();
  EXPECT_EQ(result.accepted, 3U);
  EXPECT_EQ(result.left, 3U);
}

TEST_F(StoreSenderTest, LimitsComeFirst) {
  saveThree();
  ZtReportStore::setLimits({1, 0, hours(0)});
  const ZtSendResult result = send();
  ZtReportStore::setLimits({});
  EXPECT_EQ(result.removed, 2U);
  EXPECT_THAT(progress, ElementsAre(Pair("{3}", Outcome::Accepted)));
}

}  // namespace
}  // namespace zt::test
