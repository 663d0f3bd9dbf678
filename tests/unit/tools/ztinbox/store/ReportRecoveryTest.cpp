// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"
#include "tools/ztinbox/store/Journal.h"
#include "tools/ztinbox/store/ReportStore.h"
#include "tools/ztinbox/store/StoredReport.h"

// What the next run finds after a run that was killed between writing reports to the journal and
// filing them.

namespace {

using zt::inbox::IncomingReport;
using zt::inbox::Journal;
using zt::inbox::ReportFilter;
using zt::inbox::ReportStore;
using zt::inbox::StoredReport;

using Numbers = std::vector<std::uint64_t>;

IncomingReport newReport(const std::string& id, std::uint64_t number = 0) {
  const std::string text = zt::test::reportWithId(id).text();
  IncomingReport report;
  report.read(text);
  report.packedBody = zt::inbox::packed(text);
  report.report.number = number;
  return report;
}

class ReportRecoveryTest : public ::testing::Test {
 protected:
  static Numbers numbersOf(ReportStore& store, const ReportFilter& filter = {}) {
    Numbers numbers;
    for (const StoredReport& report : store.list(filter, 1'000)) numbers.push_back(report.number);
    return numbers;
  }
  std::string folder() const { return _folder.path("data"); }

 private:
  zt::test::TemporaryFolder _folder;
};

TEST_F(ReportRecoveryTest, WhatIsInTheJournalAloneIsFiled) {
  {
    ReportStore store(folder(), 10);
    store.add(newReport("a"));
    store.add(newReport("b"));
  }
  {
    // The first of these is in the database, as if the run ended between filing and forget().
    Journal journal(folder());
    journal.append(newReport("b", 2));
    journal.append(newReport("a", 3));
    journal.turn();
    journal.append(newReport("c", 4));
  }
  std::size_t told = 0;
  {
    ReportStore store(folder(), 10, [&told](const std::vector<IncomingReport>& reports) {
      told += reports.size();
    });
    EXPECT_EQ(store.arrivals().lastNumber(), 4U);
    EXPECT_EQ(store.arrivals().count(), 0U) << "they came before the start";
    EXPECT_EQ(numbersOf(store), (Numbers{4, 3, 2, 1}));
    EXPECT_EQ(store.find(3)->duplicateOf, 1U);
    EXPECT_EQ(numbersOf(store, {.text = "kelvane"}), (Numbers{4, 3, 2, 1}));
    EXPECT_EQ(store.bytes(4)->body, zt::test::reportWithId("c").text());
    EXPECT_TRUE(store.remove(4));
    store.add(newReport("d"));
    EXPECT_EQ(numbersOf(store), (Numbers{5, 3, 2, 1}));
  }
  EXPECT_EQ(told, 1U);
  ReportStore store(folder(), 10);
  EXPECT_EQ(numbersOf(store), (Numbers{5, 3, 2, 1})) << "once";
}

TEST_F(ReportRecoveryTest, TheLimitHoldsForIt) {
  { const ReportStore store(folder(), 2); }
  {
    Journal journal(folder());
    for (std::uint64_t number = 1; number <= 5; ++number) journal.append(newReport("a", number));
  }
  ReportStore store(folder(), 2);
  store.setRead(1, true);  // behind what removes the others
  EXPECT_EQ(numbersOf(store), (Numbers{5, 4}));
}

}  // namespace
