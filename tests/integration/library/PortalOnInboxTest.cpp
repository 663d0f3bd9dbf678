#include <chrono>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/Inbox.h"

// The document against ztinbox: a whole life of a report, and what a misbehaving server does to it.

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
  static std::vector<std::string> received(Inbox& inbox) {
    std::vector<std::string> requests;
    for (const auto& report : inbox.reports()) requests.push_back(inbox.raw(report.number));
    return requests;
  }

  /// What came in, as names of files, the oldest first.
  static std::vector<std::string> receivedFiles(Inbox& inbox) {
    std::vector<std::string> names;
    for (const auto& report : inbox.reports()) {
      names.insert(names.begin(), report.reportId + ".ztr");
    }
    return names;
  }
};

TEST_F(PortalOnInboxTest, IsConfiguredAndOnline) {
  const Inbox inbox;
  const auto document = makeDocument(inbox.configurationUrl());
  EXPECT_TRUE(document->gotConfiguration());
  EXPECT_TRUE(document->online());
  EXPECT_EQ(document->serverVersion(), "ztinbox 1.0.0");
  EXPECT_EQ(document->reportUrl(), inbox.url() + "/soap");
  EXPECT_EQ(document->reportTestUrl(), inbox.url() + "/soap-test");
}

TEST_F(PortalOnInboxTest, AnAcceptedReportIsWithTheServerAlone) {
  Inbox inbox;
  const auto document = makeReport(inbox.configurationUrl());
  EXPECT_TRUE(document->reportToServer());
  EXPECT_THAT(received(inbox), ElementsAre(document->getSoapString()));
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

TEST_F(PortalOnInboxTest, ARefusedReportIsAFileOfTheSameBytes) {
  Inbox inbox({"--answer", "refuse"});
  const auto document = makeReport(inbox.configurationUrl());
  EXPECT_FALSE(document->reportToServer());
  const std::vector<std::string> requests = received(inbox);
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_EQ(content(fileOf(*document)), requests.front());
  EXPECT_EQ(document->reportFile(), fileOf(*document));
  EXPECT_EQ(std::filesystem::status(fileOf(*document)).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  EXPECT_EQ(stored().size(), 1U);
}

TEST_F(PortalOnInboxTest, SavedReportsAreSentInTheOrderOfTheFolder) {
  Inbox inbox;
  for (int i = 0; i < 5; ++i) makeReport(inbox.configurationUrl())->saveReport();
  const std::vector<std::string> before = stored();
  ASSERT_EQ(before.size(), 5U);
  EXPECT_FALSE(makeDocument(inbox.configurationUrl())->sendSavedReports());
  EXPECT_EQ(receivedFiles(inbox), before);
  EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(PortalOnInboxTest, ResendingStopsAtTheFirstThatIsRefused) {
  Inbox inbox;
  for (int i = 0; i < 3; ++i) makeReport(inbox.configurationUrl())->saveReport();
  data.write("Kelvane/Setup/reports/notes.txt", "not a report");
  std::vector<std::string> left = stored();
  std::vector<std::string> reports = left;
  std::erase(reports, "notes.txt");
  std::erase(left, reports.at(0));

  inbox.behave(R"({"scenario": [{"answer": "accept"}, {"answer": "refuse"}]})");
  EXPECT_FALSE(makeDocument(inbox.configurationUrl())->sendSavedReports());
  EXPECT_THAT(receivedFiles(inbox), ElementsAre(reports.at(0), reports.at(1)));
  EXPECT_THAT(stored(), UnorderedElementsAreArray(left));
}

TEST_F(PortalOnInboxTest, AResentReportArrivesAsTheXmlOfTheFile) {
  Inbox inbox({"--answer", "refuse"});
  const auto document = makeReport(inbox.configurationUrl());
  document->reportToServer();
  inbox.behave(R"({"answer": "accept"})");
  EXPECT_TRUE(document->sendSavedReport(document->reportFile()));
  EXPECT_TRUE(content(fileOf(*document)).has_value()) << "the caller removes it";

  std::string written = document->getSoapString();
  std::erase(written, '\r');  // XML 1.0 has one line end only
  EXPECT_EQ(received(inbox).front(), written);
}

TEST_F(PortalOnInboxTest, AMisbehavingServerLosesNoReport) {
  const struct {
    const char* behaviour;
    bool isAccepted;
  } rows[] = {
      {R"({"answer": "accept"})", true},
      {R"({"answer": "refuse"})", false},
      {R"({"answer": "garbage"})", false},
      {R"({"answer": "error:200"})", false},
      {R"({"answer": "error:204"})", false},
      {R"({"answer": "error:302"})", false},
      {R"({"answer": "error:404"})", false},
      {R"({"answer": "error:500"})", false},
      {R"({"answer": "error:503"})", false},
      {R"({"answer": "drop"})", false},
      {R"({"answer": "truncate"})", false},
      {R"({"answer": "hang"})", false},
      {R"({"answer": "accept", "slow": 60000})", false},
      {R"({"answer": "accept", "slow": 100})", true},
  };
  Inbox inbox;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.behaviour);
    inbox.behave(row.behaviour);
    const auto document = makeReport(inbox.configurationUrl());
    ASSERT_TRUE(document->online());
    const auto start = Clock::now();
    EXPECT_EQ(document->reportToServer(), row.isAccepted);
    EXPECT_LT(Clock::now() - start, 4s);

    EXPECT_EQ(content(fileOf(*document)).has_value(), !row.isAccepted);
    if (!row.isAccepted) {
      EXPECT_EQ(content(fileOf(*document)), document->getSoapString());
    }
    // Whatever the answer was, the report itself arrived whole.
    EXPECT_EQ(received(inbox).front(), document->getSoapString());
    inbox.clear();
  }
}

TEST_F(PortalOnInboxTest, WhatFailsNowAndThenIsAcceptedOrSaved) {
  Inbox inbox({"--fail-rate", "0.5", "--seed", "11"});
  std::vector<std::string> saved;
  int accepted = 0;
  for (int i = 0; i < 12; ++i) {
    const auto document = makeReport(inbox.configurationUrl());
    if (document->reportToServer()) {
      ++accepted;
    } else {
      saved.push_back(std::string(document->reportId().view()) + ".ztr");
    }
  }
  EXPECT_GT(accepted, 0);
  EXPECT_THAT(saved, testing::Not(IsEmpty()));
  EXPECT_THAT(stored(), UnorderedElementsAreArray(saved));

  inbox.behave(R"({"answer": "accept", "failRate": 0})");
  makeDocument(inbox.configurationUrl())->sendSavedReports();
  EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(PortalOnInboxTest, AServerThatIsGoneLeavesTheReportInTheStore) {
  auto inbox = std::make_unique<Inbox>();
  const auto document = makeReport(inbox->configurationUrl());
  ASSERT_TRUE(document->online());
  inbox.reset();
  EXPECT_FALSE(document->reportToServer());
  EXPECT_EQ(content(fileOf(*document)), document->getSoapString());
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_TRUE(content(fileOf(*document)).has_value());
}

TEST_F(PortalOnInboxTest, IsReachedAsAProxyForAnyConfigurationHost) {
  Inbox inbox;
  const ScopedEnvironment proxy("http_proxy", inbox.url().c_str());
  const auto document = makeReport("http://config.kelvane.example/reporting/kelvane.xml");
  EXPECT_TRUE(document->gotConfiguration());
  EXPECT_TRUE(document->online());
  EXPECT_TRUE(document->reportToServer());
  EXPECT_THAT(received(inbox), ElementsAre(document->getSoapString()));
}

TEST_F(PortalOnInboxTest, DocumentsOfTwoThreadsAreAllAccepted) {
  constexpr int kReports = 5;
  Inbox inbox;
  int accepted[2] = {0, 0};
  const auto send = [&inbox, &accepted](int thread) {
    for (int i = 0; i < kReports; ++i) {
      if (makeReport(inbox.configurationUrl())->reportToServer()) ++accepted[thread];
    }
  };
  std::thread first(send, 0);
  std::thread second(send, 1);
  first.join();
  second.join();
  EXPECT_EQ(accepted[0], kReports);
  EXPECT_EQ(accepted[1], kReports);
  EXPECT_EQ(received(inbox).size(), std::size_t{2} * kReports);
  EXPECT_THAT(stored(), IsEmpty());
}

}  // namespace
}  // namespace zt::test
