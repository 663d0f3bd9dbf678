// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/PostgresServer.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"
#include "tools/ztinbox/soap/ReportContent.h"
#include "tools/ztinbox/store/ReportStore.h"
#include "tools/ztinbox/store/StoredReport.h"
#include "tools/ztinbox/store/postgres/PostgresBackend.h"
#include "tools/ztinbox/store/sqlite/SqliteBackend.h"

namespace {

using std::chrono::milliseconds;
using zt::inbox::IncomingReport;
using zt::inbox::ReportFilter;
using zt::inbox::ReportStore;
using zt::inbox::StoredReport;
using zt::test::SampleReport;

using Numbers = std::vector<std::uint64_t>;

constexpr std::size_t kAll = 1'000;

IncomingReport newReport(const SampleReport& sample) {
  const std::string text = sample.text();
  IncomingReport report;
  report.report.identity = zt::inbox::readContent(text).identity;
  report.report.size = text.size();
  report.packedBody = zt::inbox::packed(text);
  return report;
}

IncomingReport newReportWithId(const std::string& id) {
  return newReport(zt::test::reportWithId(id));
}

Numbers numbersOf(ReportStore& store, const ReportFilter& filter = {}) {
  Numbers numbers;
  for (const StoredReport& report : store.list(filter, kAll)) numbers.push_back(report.number);
  return numbers;
}

/// What every database must do.
class ReportStoreTest : public ::testing::TestWithParam<const char*> {
 protected:
  ReportStoreTest() {
    if (GetParam() == std::string("PostgreSQL")) _server.emplace();
  }

  /// The same database each time.
  std::unique_ptr<zt::inbox::Backend> open() const {
    return _server ? zt::inbox::openPostgresBackend(_server->options())
                   : zt::inbox::openSqliteBackend(_folder.path("data"));
  }

  /// Adds it and returns it as it is listed.
  static StoredReport add(ReportStore& store, IncomingReport report) {
    store.add(std::move(report)).get();
    return store.list({}, 1).front();
  }

 private:
  zt::test::TemporaryFolder _folder;
  std::optional<zt::test::PostgresServer> _server;
};

INSTANTIATE_TEST_SUITE_P(Databases, ReportStoreTest, ::testing::Values("SQLite", "PostgreSQL"),
                         [](const auto& test) { return std::string(test.param); });

TEST_P(ReportStoreTest, NumbersReportsAndListsTheNewestFirst) {
  ReportStore store(open(), 10);
  EXPECT_EQ(numbersOf(store), Numbers{});
  for (const char* id : {"a", "b", "c"}) add(store, newReportWithId(id));
  EXPECT_EQ(numbersOf(store), (Numbers{3, 2, 1}));
  EXPECT_EQ(store.find(2)->identity.reportId, "b");
  EXPECT_FALSE(store.find(4));
  EXPECT_FALSE(store.find(0));
}

TEST_P(ReportStoreTest, GivesBackAllThatWasKept) {
  const std::string nothingSpecial("a\0\xff<&>\"'\r\n", 10);
  SampleReport sample;
  sample.customerId = std::string("K\xff\0", 3);
  sample.pools = {"EXECUTION", "A", "EXECUTION", std::string("\0\xfe", 2)};
  sample.value = nothingSpecial;
  IncomingReport report = newReport(sample);
  report.head = "POST /soap HTTP/1.1\r\nX: " + nothingSpecial;
  report.report.received = zt::inbox::Timestamp(milliseconds(1'795'262'400'123));
  report.report.test = true;
  report.report.sender = "127.0.0.1:7";
  report.report.answer = {zt::inbox::AnswerKind::kError, 503};
  report.report.result = "failed";
  report.report.duration = milliseconds(5'000);
  {
    ReportStore store(open(), 10);
    store.add(report).get();
  }
  ReportStore store(open(), 10);
  const auto kept = store.find(1);
  ASSERT_TRUE(kept);
  EXPECT_EQ(kept->received, report.report.received);
  EXPECT_TRUE(kept->test);
  EXPECT_FALSE(kept->read);
  EXPECT_EQ(kept->sender, "127.0.0.1:7");
  EXPECT_EQ(kept->answer, report.report.answer);
  EXPECT_EQ(kept->size, sample.text().size());
  EXPECT_EQ(kept->identity.reportId, sample.reportId);
  EXPECT_EQ(kept->identity.machineId, sample.machineId);
  EXPECT_EQ(kept->identity.customerId, sample.customerId);
  EXPECT_EQ(kept->identity.applicationId, sample.applicationId);
  EXPECT_EQ(kept->identity.applicationVersion, sample.applicationVersion);
  EXPECT_EQ(kept->identity.pools, sample.pools);
  EXPECT_EQ(kept->result, "failed");
  EXPECT_EQ(kept->duration, milliseconds(5'000));
  EXPECT_EQ(kept->duplicateOf, std::nullopt);
  const auto bytes = store.bytes(1);
  ASSERT_TRUE(bytes);
  EXPECT_EQ(bytes->head, report.head);
  EXPECT_EQ(bytes->body, sample.text());
}

TEST_P(ReportStoreTest, WhatIsMissingStaysMissing) {
  ReportStore store(open(), 10);
  IncomingReport nothing;
  nothing.packedBody = zt::inbox::packed("");
  add(store, nothing);
  const auto kept = store.find(1);
  ASSERT_TRUE(kept);
  EXPECT_EQ(kept->identity.reportId, std::nullopt);
  EXPECT_EQ(kept->identity.customerId, std::nullopt);
  EXPECT_EQ(kept->result, std::nullopt);
  EXPECT_EQ(kept->duration, std::nullopt);
  EXPECT_EQ(store.bytes(1)->body, "");
}

TEST_P(ReportStoreTest, EveryConditionOfAFilterHasToHold) {
  ReportStore store(open(), 10);
  SampleReport sample;
  sample.value = "Apple";
  IncomingReport report = newReport(sample);
  report.report.received = zt::inbox::Timestamp(milliseconds(1'000));
  store.add(report).get();
  sample.applicationId = "{OTHER}";
  sample.machineId = "{M}";
  sample.pools = {"CUSTOM", "DISKS"};
  sample.value = "Pear";
  report = newReport(sample);
  report.report.received = zt::inbox::Timestamp(milliseconds(2'000));
  report.report.test = true;
  report.report.answer = {zt::inbox::AnswerKind::kError, 503};
  report.report.result = "failed";
  store.add(report).get();
  EXPECT_TRUE(store.setRead(2, true));

  const auto at = [](int time) { return zt::inbox::Timestamp(milliseconds(time)); };
  const struct {
    ReportFilter filter;
    Numbers numbers;
  } rows[] = {
      {{}, {2, 1}},
      {{.customer = "Kelvane"}, {2, 1}},
      {{.customer = "kelvane"}, {}},
      {{.application = "{OTHER}"}, {2}},
      {{.machine = "{M}"}, {2}},
      {{.machine = ""}, {}},
      {{.version = sample.applicationVersion}, {2, 1}},
      {{.version = "0"}, {}},
      {{.reportId = sample.reportId}, {2, 1}},
      {{.reportId = ""}, {}},
      {{.answer = "accept"}, {1}},
      {{.answer = "error"}, {2}},
      {{.answer = "error:503"}, {2}},
      {{.answer = "error:50"}, {}},
      {{.result = "failed"}, {2}},
      {{.result = "succeeded"}, {}},
      {{.pool = "DISKS"}, {2}},
      {{.pool = "EXECUTION"}, {1}},
      {{.pool = "DISK"}, {}},
      {{.test = true}, {2}},
      {{.test = false}, {1}},
      {{.read = true}, {2}},
      {{.read = false}, {1}},
      {{.since = at(2'000)}, {2}},
      {{.until = at(2'000)}, {1}},
      {{.since = at(1'000), .until = at(2'001)}, {2, 1}},
      {{.text = "kelvane"}, {2, 1}},
      {{.text = "pear"}, {2}},
      {{.text = "pear apple"}, {}},
      {{.pool = "DISKS", .text = "pear"}, {2}},
      {{.pool = "EXECUTION", .text = "pear"}, {}},
      {{.customer = "Kelvane",
        .application = "{OTHER}",
        .machine = "{M}",
        .pool = "CUSTOM",
        .text = "pear",
        .test = true,
        .read = true,
        .since = at(2'000),
        .until = at(2'001),
        .before = 3},
       {2}},
      {{.customer = "Kelvane",
        .application = "{OTHER}",
        .machine = "{M}",
        .pool = "CUSTOM",
        .text = "pear",
        .test = true,
        .read = true,
        .since = at(2'000),
        .until = at(2'001),
        .before = 2},
       {}},
  };
  int row = 0;
  for (const auto& [filter, numbers] : rows) {
    EXPECT_EQ(numbersOf(store, filter), numbers) << "row " << row;
    EXPECT_EQ(store.statistics(filter).reports, numbers.size()) << "row " << row;
    ++row;
  }
}

TEST_P(ReportStoreTest, KeepsTheNewest) {
  ReportStore store(open(), 2);
  for (const char* id : {"a", "b", "c"}) add(store, newReportWithId(id));
  EXPECT_EQ(numbersOf(store), (Numbers{3, 2}));
  EXPECT_FALSE(store.bytes(1));
  EXPECT_EQ(numbersOf(store, {.text = "kelvane"}), (Numbers{3, 2}));
  EXPECT_EQ(numbersOf(store, {.pool = "EXECUTION"}), (Numbers{3, 2}));
  EXPECT_EQ(store.arrivals().count(), 3U);
}

TEST_P(ReportStoreTest, ALowerLimitHoldsForWhatIsThereAlready) {
  {
    ReportStore store(open(), 1'000);
    for (int i = 0; i < 450; ++i) store.add(newReportWithId("a")).get();
  }
  ReportStore store(open(), 2);
  add(store, newReportWithId("a"));
  // More than one portion is removed, the later ones behind whatever came in between.
  for (int i = 0; i < 3; ++i) store.setRead(1, true);
  EXPECT_EQ(numbersOf(store), (Numbers{451, 450}));
}

TEST_P(ReportStoreTest, ADuplicateNamesTheFirstKeptOne) {
  ReportStore store(open(), 3);
  EXPECT_EQ(add(store, newReportWithId("a")).duplicateOf, std::nullopt);
  EXPECT_EQ(add(store, newReportWithId("a")).duplicateOf, 1U);
  EXPECT_EQ(add(store, newReportWithId("b")).duplicateOf, std::nullopt);
  EXPECT_EQ(add(store, newReportWithId("a")).duplicateOf, 2U) << "the first one had to go";
  EXPECT_EQ(store.find(2)->duplicateOf, std::nullopt);
  EXPECT_EQ(store.withReportId("a", 10), (Numbers{2, 4}));
  EXPECT_EQ(store.withReportId("a", 1), Numbers{2});
}

TEST_P(ReportStoreTest, ReportsWithoutAnIdAreNoDuplicates) {
  ReportStore store(open(), 3);
  add(store, newReportWithId(""));
  EXPECT_EQ(add(store, newReportWithId("")).duplicateOf, std::nullopt);
  add(store, IncomingReport());
  EXPECT_EQ(add(store, IncomingReport()).duplicateOf, std::nullopt);
  EXPECT_EQ(store.withReportId("", 10), Numbers{});
}

TEST_P(ReportStoreTest, RemovesOneOrAllAndNeverReusesANumber) {
  {
    ReportStore store(open(), 5);
    for (const char* id : {"a", "b", "c"}) add(store, newReportWithId(id));
    EXPECT_TRUE(store.remove(1));
    EXPECT_FALSE(store.remove(1));
    EXPECT_EQ(add(store, newReportWithId("a")).duplicateOf, std::nullopt);
    EXPECT_EQ(store.arrivals().count(), 4U);
    EXPECT_EQ(store.clear(), 3U);
    EXPECT_EQ(numbersOf(store, {.text = "kelvane"}), Numbers{});
    EXPECT_EQ(store.arrivals().count(), 0U);
    EXPECT_EQ(add(store, newReportWithId("a")).number, 5U);
    EXPECT_EQ(numbersOf(store, {.text = "kelvane"}), Numbers{5});
    EXPECT_EQ(store.clear(), 1U);
  }
  ReportStore store(open(), 5);
  EXPECT_EQ(store.arrivals().lastNumber(), 5U);
  EXPECT_EQ(add(store, newReportWithId("a")).number, 6U);
}

TEST_P(ReportStoreTest, RemovesWhatIsFound) {
  ReportStore store(open(), 1'000);
  for (int i = 1; i <= 450; ++i) {
    store.add(newReport(zt::test::reportOf(i % 3 == 0 ? "third" : "other"))).get();
  }
  EXPECT_EQ(store.remove(ReportFilter{.customer = "nobody"}), 0U);
  EXPECT_EQ(store.remove(ReportFilter{.customer = "other", .before = 449}), 299U);
  EXPECT_EQ(numbersOf(store).size(), 151U);
  EXPECT_EQ(store.remove(ReportFilter{.text = "third"}), 150U);
  EXPECT_EQ(numbersOf(store), Numbers{449});
  EXPECT_EQ(store.arrivals().count(), 450U) << "what came in, came in";
}

TEST_P(ReportStoreTest, MarksReportsAsRead) {
  ReportStore store(open(), 10);
  for (const char* customer : {"a", "b", "a"}) add(store, newReport(zt::test::reportOf(customer)));
  EXPECT_TRUE(store.setRead(2, true));
  EXPECT_TRUE(store.setRead(2, true));
  EXPECT_FALSE(store.setRead(9, true));
  EXPECT_EQ(numbersOf(store, {.read = true}), Numbers{2});
  EXPECT_EQ(store.setRead(ReportFilter{.customer = "a"}, true), 2U);
  EXPECT_EQ(store.setRead(ReportFilter{}, true), 0U);
  EXPECT_EQ(store.setRead(ReportFilter{.before = 3}, false), 2U);
  EXPECT_EQ(numbersOf(store, {.read = false}), (Numbers{2, 1}));
}

TEST_P(ReportStoreTest, CountsForTheCharts) {
  ReportStore store(open(), 10);
  const struct {
    int minute;
    zt::inbox::AnswerKind answer;
    const char* result;
    int seconds;
  } reports[] = {
      {1, zt::inbox::AnswerKind::kAccept, "succeeded", 1},
      {1, zt::inbox::AnswerKind::kRefuse, "succeeded", 2},
      {3, zt::inbox::AnswerKind::kDrop, "failed", 6},
  };
  for (const auto& row : reports) {
    IncomingReport report;
    report.report.received =
        zt::inbox::Timestamp(std::chrono::minutes(row.minute) + milliseconds(59));
    report.report.answer = {row.answer};
    report.report.result = row.result;
    report.packedBody = zt::inbox::packed("0123456789");
    report.report.size = 10;
    report.steps = {{"Copy", std::chrono::seconds(row.seconds)}};
    if (row.seconds > 1) report.steps.push_back({"Check", milliseconds(7)});
    store.add(report).get();
  }
  store.setRead(1, true);
  const zt::inbox::Statistics all = store.statistics({});
  std::ostringstream text;
  text << all.reports << " reports, " << all.bytes << " bytes, " << all.unread << " unread, "
       << all.tests << " tests";
  for (const auto& minute : all.minutes) {
    text << "; " << minute.begin.time_since_epoch() / std::chrono::minutes(1) << ": "
         << minute.accepted << " " << minute.refused << " " << minute.failed;
  }
  for (const auto& result : all.results) text << "; " << result.count << " " << result.result;
  for (const auto& step : all.steps) {
    text << "; " << step.count << " " << step.name << " " << step.shortest.count() << " "
         << step.mean.count() << " " << step.longest.count();
  }
  EXPECT_EQ(text.str(),
            "3 reports, 30 bytes, 2 unread, 0 tests; 1: 1 1 0; 3: 0 0 1; 2 succeeded; 1 failed; "
            "3 Copy 1000 3000 6000; 2 Check 7 7 7");
  EXPECT_EQ(store.statistics({.before = 2}).steps.size(), 1U);
}

}  // namespace
