// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"
#include "tools/ztinbox/Fault.h"
#include "tools/ztinbox/store/GroupCommit.h"
#include "tools/ztinbox/store/sqlite/Database.h"

namespace {

using zt::inbox::Database;
using zt::inbox::GroupCommit;

class GroupCommitTest : public ::testing::Test {
 protected:
  GroupCommitTest() { _database.run("CREATE TABLE t (x)"); }

  GroupCommit::Job insert(const std::string& value) {
    return {[this, value] { _database.run("INSERT INTO t VALUES (" + value + ")"); },
            [this, value] { _told += value; }};
  }
  GroupCommit::Hooks hooks() {
    return {.transact = [this](const std::function<void()>& work) { transact(work); },
            .committed = [] {},
            .background = [] { return false; },
            .settled = [this] { ++_settled; }};
  }
  void transact(const std::function<void()>& work) {
    try {
      _database.run("BEGIN IMMEDIATE");
      work();
      _database.run("COMMIT");
    } catch (...) {
      _database.run("ROLLBACK");
      ++_undone;
      throw;
    }
  }
  static bool waitFor(const std::atomic<int>& count, int wanted) {
    for (int i = 0; i < 3'000 && count < wanted; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return count >= wanted;
  }
  std::string rows() {
    Statement select(_database, "SELECT x FROM t ORDER BY rowid");
    std::string all;
    while (select.next()) all += select.text(0);
    return all;
  }

  using Statement = zt::inbox::Statement;
  zt::test::TemporaryFolder _folder;
  Database _database{_folder.path("group.db"), Database::Access::kWrite};
  std::string _told;
  std::atomic<int> _undone = 0;
  std::atomic<int> _settled = 0;
};

TEST_F(GroupCommitTest, DoesAllInOrderBeforeItIsGone) {
  {
    GroupCommit commits(hooks());
    for (const char* value : {"1", "2", "3", "4"}) commits.add(insert(value));
  }
  EXPECT_EQ(rows(), "1234");
  EXPECT_EQ(_told, "1234");
  EXPECT_EQ(_undone, 0);
}

TEST_F(GroupCommitTest, OneThatFailsDoesNotTakeTheOthersWithIt) {
  std::promise<void> release;
  std::vector<std::future<void>> done;
  {
    GroupCommit commits(hooks());
    // While the thread is held up here, the rest comes together.
    std::promise<void> begun;
    commits.add({[&begun, held = release.get_future().share()] {
                   begun.set_value();
                   held.wait();
                 },
                 {}});
    begun.get_future().wait();
    for (const char* value : {"1", "2", "'", "3"}) done.push_back(commits.add(insert(value)));
    done.push_back(commits.add({[] { throw std::runtime_error("no"); }, {}}));
    release.set_value();
  }
  EXPECT_EQ(rows(), "123");
  EXPECT_EQ(_told, "123") << "nobody is told of what was undone";
  for (const std::size_t kept : {0U, 1U, 3U}) EXPECT_NO_THROW(done[kept].get());
  EXPECT_THROW(done[2].get(), zt::inbox::StoreFault);
  EXPECT_THROW(done[4].get(), std::runtime_error);
  EXPECT_EQ(_undone, 3) << "all together, then the two that failed";
}

TEST_F(GroupCommitTest, WhatIsToldIsCommitted) {
  GroupCommit commits(hooks());
  Database other(_folder.path("group.db"), Database::Access::kRead);
  std::int64_t seen = -1;
  commits.run({[this] { _database.run("INSERT INTO t VALUES (1)"); },
               [&] { seen = other.number("SELECT count(*) FROM t"); }});
  EXPECT_EQ(seen, 1);
}

TEST_F(GroupCommitTest, SaysThatItHasCommittedWhenTheFutureIsReady) {
  std::future<void> done;
  std::promise<void> isSet;
  std::promise<std::future_status> found;
  GroupCommit::Hooks all = hooks();
  all.committed = [&] { found.set_value(done.wait_for(std::chrono::seconds(0))); };
  GroupCommit commits(all);
  done = commits.add({[held = isSet.get_future().share()] { held.wait(); }, {}});
  isSet.set_value();
  EXPECT_EQ(found.get_future().get(), std::future_status::ready);
}

TEST_F(GroupCommitTest, WorksInTheBackgroundUntilNothingIsLeft) {
  std::atomic<int> portions = 0;
  GroupCommit::Hooks all = hooks();
  all.background = [this, &portions] {
    _database.run("INSERT INTO t VALUES ('b')");
    return ++portions % 3 != 0;
  };
  GroupCommit commits(all);
  EXPECT_TRUE(waitFor(_settled, 1)) << "what an earlier run left";
  EXPECT_EQ(portions, 3);
  commits.run(insert("1"));
  EXPECT_TRUE(waitFor(_settled, 2));
  EXPECT_EQ(portions, 6);
  std::string kept;
  commits.run({[&] { kept = rows(); }, {}});
  EXPECT_EQ(kept, "bbb1bbb");
}

TEST_F(GroupCommitTest, AFailureInTheBackgroundIsUndoneAndTriedAgainLater) {
  std::atomic<int> tries = 0;
  GroupCommit::Hooks all = hooks();
  all.background = [this, &tries] {
    _database.run("INSERT INTO t VALUES ('b')");
    if (++tries == 1) _database.run("fail");
    return false;
  };
  GroupCommit commits(all);
  EXPECT_TRUE(waitFor(tries, 1));
  commits.run(insert("1"));
  EXPECT_TRUE(waitFor(_settled, 1));
  std::string kept;
  commits.run({[&] { kept = rows(); }, {}});
  EXPECT_EQ(kept, "1b");
  EXPECT_EQ(tries, 2);
}

}  // namespace
