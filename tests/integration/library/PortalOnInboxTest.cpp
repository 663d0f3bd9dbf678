// SPDX-License-Identifier: Apache-2.0
#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/Inbox.h"
#include "ztportal/Version.h"

// Documents and ztinbox: sending, saving and resending, and what a misbehaving server causes.

namespace zt::test {
namespace {

using std::chrono_literals::operator""s;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAreArray;
using Clock = std::chrono::steady_clock;

class PortalOnInboxTest : public RealPortalTest {
 protected:
  /// The bytes of every report that the inbox received, the newest first.
  std::vector<std::string> received() {
    std::vector<std::string> requests;
    for (const auto& report : inbox.reports()) requests.push_back(inbox.raw(report.number));
    return requests;
  }
  /// The received reports as names of files, the oldest first.
  std::vector<std::string> receivedFiles() {
    std::vector<std::string> names;
    for (const auto& report : inbox.reports()) {
      names.insert(names.begin(), report.reportId + ".ztr");
    }
    return names;
  }

  Inbox inbox;
};

TEST_F(PortalOnInboxTest, AnAcceptedReportIsWithTheServerAlone) {
  const auto document = makeReport(inbox.configurationUrl());
  EXPECT_EQ(document->serverVersion(), "ztinbox " ZTPORTAL_VERSION);
  EXPECT_EQ(document->reportUrl(), inbox.url() + "/soap");
  EXPECT_EQ(document->reportTestUrl(), inbox.url() + "/soap-test");
  EXPECT_TRUE(document->reportToServer());
  EXPECT_THAT(received(), ElementsAre(document->getSoapString()));
  const auto report = inbox.reports().at(0);
  EXPECT_EQ(report.reportId, std::string(document->reportId().view()));
  EXPECT_EQ(report.machineId, std::string(document->machineId().view()));
  EXPECT_EQ(report.customerId, "Kelvane");
  EXPECT_EQ(report.applicationId, kApplicationId);
  EXPECT_EQ(report.applicationVersion, "2.1.77");
  EXPECT_EQ(report.pools, std::vector<std::string>{"CUSTOM"});
  EXPECT_FALSE(report.isTest);
  EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(PortalOnInboxTest, ResendingFollowsTheOrderOfTheFolderAndStopsAtTheFirstRefused) {
  const auto saveReports = [this] {
    for (int i = 0; i < 5; ++i) makeReport(inbox.configurationUrl())->saveReport();
    return stored();
  };
  std::vector<std::string> reports = saveReports();
  EXPECT_FALSE(makeDocument(inbox.configurationUrl())->sendSavedReports());
  EXPECT_EQ(receivedFiles(), reports);
  EXPECT_THAT(stored(), IsEmpty());

  inbox.clear();
  reports = saveReports();
  inbox.behave(R"({"scenario": [{"answer": "accept"}, {"answer": "refuse"}]})");
  EXPECT_FALSE(makeDocument(inbox.configurationUrl())->sendSavedReports());
  EXPECT_THAT(receivedFiles(), ElementsAre(reports.at(0), reports.at(1)));
  reports.erase(reports.begin());
  EXPECT_THAT(stored(), UnorderedElementsAreArray(reports));
}

TEST_F(PortalOnInboxTest, AMisbehavingServerLosesNoReport) {
  const std::pair<const char*, bool> rows[] = {
      {R"({"answer": "accept"})", true},
      {R"({"answer": "refuse"})", false},
      {R"({"answer": "garbage"})", false},
      {R"({"answer": "error:200"})", false},
      {R"({"answer": "error:500"})", false},
      {R"({"answer": "drop"})", false},
      {R"({"answer": "truncate"})", false},
      {R"({"answer": "hang"})", false},
      {R"({"answer": "accept", "slow": 60000})", false},
      {R"({"answer": "accept", "slow": 100})", true},
  };
  for (const auto& [behaviour, isAccepted] : rows) {
    SCOPED_TRACE(behaviour);
    inbox.behave(behaviour);
    const auto document = makeReport(inbox.configurationUrl());
    ASSERT_TRUE(document->online());
    const auto start = Clock::now();
    EXPECT_EQ(document->reportToServer(), isAccepted);
    EXPECT_LT(Clock::now() - start, 4s);
    EXPECT_EQ(content(fileOf(*document)),
              isAccepted ? std::nullopt : std::optional(document->getSoapString()));
    EXPECT_EQ(received().front(), document->getSoapString()) << "the request was not complete";
    inbox.clear();
  }
}

TEST_F(PortalOnInboxTest, DocumentsOfTwoThreadsAreAllAccepted) {
  constexpr int kReports = 5;
  int accepted[2] = {0, 0};
  const auto send = [this, &accepted](int thread) {
    for (int i = 0; i < kReports; ++i) {
      if (makeReport(inbox.configurationUrl())->reportToServer()) ++accepted[thread];
    }
  };
  std::thread first(send, 0);
  std::thread second(send, 1);
  first.join();
  second.join();
  EXPECT_THAT(accepted, ElementsAre(kReports, kReports));
  EXPECT_EQ(received().size(), std::size_t{2} * kReports);
  EXPECT_THAT(stored(), IsEmpty());
}

}  // namespace
}  // namespace zt::test
