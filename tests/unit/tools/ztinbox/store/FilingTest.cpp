// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/TemporaryFolder.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"
#include "tools/ztinbox/store/Database.h"
#include "tools/ztinbox/store/Filing.h"
#include "tools/ztinbox/store/StoredReport.h"

namespace {

using zt::inbox::DatabaseFault;
using zt::inbox::Filing;
using zt::inbox::IncomingReport;
using zt::inbox::Journal;

using Numbers = std::vector<std::uint64_t>;

IncomingReport incomingOfSize(std::size_t size) {
  IncomingReport report;
  const std::string text(size, 'x');
  report.read(text);
  report.packedBody = zt::inbox::packed(text);
  return report;
}

/// Replaces the database: records what is filed, can be blocked and can fail.
class FakeDatabase {
 public:
  void file(const std::vector<IncomingReport>& reports) {
    std::unique_lock lock(_mutex);
    _changed.wait(lock, [this] { return !_held; });
    if (_full) throw DatabaseFault("full");
    ++_transactions;
    for (const IncomingReport& report : reports) _numbers.push_back(report.report.number);
  }

  void hold(bool held) {
    {
      const std::lock_guard lock(_mutex);
      _held = held;
    }
    _changed.notify_all();
  }
  void setFull(bool full) {
    const std::lock_guard lock(_mutex);
    _full = full;
  }
  Numbers numbers() {
    const std::lock_guard lock(_mutex);
    return _numbers;
  }
  int transactions() {
    const std::lock_guard lock(_mutex);
    return _transactions;
  }

 private:
  std::mutex _mutex;
  std::condition_variable _changed;
  bool _held = false;
  bool _full = false;
  int _transactions = 0;
  Numbers _numbers;
};

class FilingTest : public ::testing::Test {
 protected:
  Filing::File toDatabase() {
    return [this](std::vector<IncomingReport>& reports) { _database.file(reports); };
  }
  Numbers inJournal() const {
    Numbers numbers;
    for (const IncomingReport& report : Journal(_folder.path()).after(0)) {
      numbers.push_back(report.report.number);
    }
    return numbers;
  }

  zt::test::TemporaryFolder _folder;
  Journal _journal{_folder.path()};
  FakeDatabase _database;
};

TEST_F(FilingTest, KeepsInTheJournalWhileTheDatabaseIsBusy) {
  _database.hold(true);
  Filing filing(_journal, 4, toDatabase());
  EXPECT_EQ(filing.keep(incomingOfSize(1)), 5U);
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // it is being filed
  EXPECT_EQ(filing.keep(incomingOfSize(1)), 6U);
  EXPECT_EQ(inJournal(), (Numbers{5, 6}));
  EXPECT_EQ(_database.numbers(), Numbers{});
  _database.hold(false);
  filing.fileAll();
  EXPECT_EQ(_database.numbers(), (Numbers{5, 6}));
}

TEST_F(FilingTest, FilesTogetherWhatComesTogether) {
  Filing filing(_journal, 0, toDatabase());
  _database.hold(true);
  for (int i = 0; i < 500; ++i) filing.keep(incomingOfSize(100));
  _database.hold(false);
  filing.fileAll();
  EXPECT_EQ(_database.numbers().size(), 500U);
  EXPECT_LE(_database.transactions(), 2);
}

TEST_F(FilingTest, FilesOfItselfAfterAMomentAndEmptiesTheJournal) {
  Filing filing(_journal, 0, toDatabase());
  filing.keep(incomingOfSize(1));
  for (int i = 0; i < 3'000 && !inJournal().empty(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_EQ(_database.numbers(), Numbers{1});
  EXPECT_EQ(inJournal(), Numbers{});
}

TEST_F(FilingTest, FilesTheRestAtItsEnd) {
  { Filing(_journal, 0, toDatabase()).keep(incomingOfSize(1)); }
  EXPECT_EQ(_database.numbers(), Numbers{1});
}

TEST_F(FilingTest, WhileNothingCanBeFiledNothingIsKept) {
  Filing filing(_journal, 0, toDatabase());
  _database.setFull(true);
  EXPECT_EQ(filing.keep(incomingOfSize(1)), 1U);
  EXPECT_THROW(filing.fileAll(), DatabaseFault);
  EXPECT_THROW(filing.keep(incomingOfSize(1)), DatabaseFault);
  EXPECT_EQ(inJournal(), Numbers{1}) << "what was kept stays so";
  _database.setFull(false);
  EXPECT_EQ(filing.keep(incomingOfSize(1)), 2U);
  filing.fileAll();
  EXPECT_EQ(_database.numbers(), (Numbers{1, 2}));
}

TEST_F(FilingTest, WhatCannotBeFiledAtTheEndStaysInTheJournal) {
  _database.setFull(true);
  { Filing(_journal, 0, toDatabase()).keep(incomingOfSize(1)); }
  EXPECT_EQ(inJournal(), Numbers{1});
}

TEST_F(FilingTest, ALargeOneIsFiledBeforeAnybodyIsTold) {
  Filing filing(_journal, 0, toDatabase());
  filing.keep(incomingOfSize(1));
  EXPECT_EQ(filing.keep(incomingOfSize(2'000'000)), 2U);
  EXPECT_EQ(_database.numbers(), (Numbers{1, 2}));
  _database.setFull(true);
  EXPECT_THROW(filing.keep(incomingOfSize(2'000'000)), DatabaseFault);
  _database.setFull(false);
  EXPECT_EQ(filing.keep(incomingOfSize(1)), 3U) << "it took no number";
}

TEST_F(FilingTest, WhatWaitsIsLimited) {
  constexpr int kReports = 100;
  IncomingReport large = incomingOfSize(1);
  large.head = std::string(1'000'000, 'x');
  _database.hold(true);
  Filing filing(_journal, 0, toDatabase());
  std::atomic<int> kept = 0;
  std::thread keeping([&] {
    for (; kept < kReports; ++kept) filing.keep(large);
  });
  // One portion is being filed and one waits, of 16 MiB each.
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  EXPECT_LE(kept, 34);
  _database.hold(false);
  keeping.join();
  filing.fileAll();
  EXPECT_EQ(_database.numbers().size(), std::size_t{kReports});
}

}  // namespace
