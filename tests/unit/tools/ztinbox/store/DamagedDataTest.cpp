// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/TemporaryFolder.h"
#include "tools/ztinbox/Fault.h"
#include "tools/ztinbox/store/ReportStore.h"
#include "tools/ztinbox/store/StoredReport.h"
#include "tools/ztinbox/store/sqlite/Database.h"
#include "tools/ztinbox/store/sqlite/SqliteBackend.h"

// Data folders that cannot be used: each is refused with a message that says why, and is not
// changed.

namespace {

using zt::inbox::Database;
using zt::inbox::IncomingReport;
using zt::inbox::openSqliteBackend;
using zt::inbox::ReportStore;

class DamagedDataTest : public ::testing::Test {
 protected:
  std::string folder() const { return _folder.path("data"); }
  std::string file() const { return _folder.path("data/reports.db"); }
  const zt::test::TemporaryFolder& temporary() const { return _folder; }

  /// A database with a few reports in it, closed.
  void fill() const {
    ReportStore store(openSqliteBackend(folder()), 100);
    for (int i = 0; i < 50; ++i) {
      IncomingReport report;
      const std::string text(5'000, static_cast<char>('a' + i % 20));
      report.report.size = text.size();
      report.packedBody = zt::inbox::packed(text);
      store.add(report).get();
    }
  }

  static std::string faultOf(const std::string& folder) {
    try {
      const ReportStore store(openSqliteBackend(folder), 100);
      return "";
    } catch (const zt::inbox::MachineFault& fault) {
      return fault.what();
    }
  }

  std::string bytes() const {
    std::ifstream stream(file(), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  /// Tries to use the folder, and expects that the file is not changed.
  void expectRefused(const std::string& reason) const {
    const std::string before = bytes();
    EXPECT_EQ(faultOf(folder()), file() + ": " + reason);
    EXPECT_EQ(bytes() == before, true);
  }

 private:
  zt::test::TemporaryFolder _folder;
};

TEST_F(DamagedDataTest, AWholeDatabaseIsUsed) {
  fill();
  EXPECT_EQ(faultOf(folder()), "");
}

TEST_F(DamagedDataTest, AFileThatIsNoDatabaseIsRefused) {
  temporary().write("data/reports.db", std::string(10'000, 'x'));
  expectRefused("file is not a database");
}

TEST_F(DamagedDataTest, ADatabaseThatWasCutOffIsRefused) {
  fill();
  std::filesystem::resize_file(file(), std::filesystem::file_size(file()) / 2);
  expectRefused("database disk image is malformed");
}

TEST_F(DamagedDataTest, ADatabaseWithoutItsTablesIsRefused) {
  fill();
  Database(file(), Database::Access::kWrite).run("DROP TABLE pools; PRAGMA wal_checkpoint;");
  expectRefused("no such table: pools");
}

TEST_F(DamagedDataTest, ADatabaseOfAnotherProgramIsRefused) {
  std::filesystem::create_directory(folder());
  Database(file(), Database::Access::kWrite).run("CREATE TABLE reports (x)");
  expectRefused("not a database of this program");
}

TEST_F(DamagedDataTest, ADatabaseOfANewerProgramIsRefused) {
  fill();
  Database(file(), Database::Access::kWrite).run("PRAGMA user_version = 2");
  expectRefused(
      "written by a newer ztinbox (version 2 of the tables; this program knows version 1)");
}

TEST_F(DamagedDataTest, AnEmptyFileIsANewDatabase) {
  temporary().write("data/reports.db", "");
  EXPECT_EQ(faultOf(folder()), "");
}

TEST_F(DamagedDataTest, AFolderThatCannotBeCreatedIsRefused) {
  const std::string inFile = temporary().write("file", "x") + "/data";
  EXPECT_EQ(faultOf(inFile), "cannot create the data folder " + inFile + ": Not a directory");
  EXPECT_EQ(faultOf(temporary().path("file")),
            "cannot create the data folder " + temporary().path("file") + ": Not a directory");
}

TEST_F(DamagedDataTest, AFolderInUseIsRefused) {
  const ReportStore store(openSqliteBackend(folder()), 100);
  EXPECT_EQ(faultOf(folder() + "/"),
            "the data folder " + folder() +
                " is in use by another inbox; choose another one with --data");
}

TEST_F(DamagedDataTest, AJournalOfAnEarlierVersionIsRefusedUnlessItIsEmpty) {
  temporary().write("data/journal.0", "");
  EXPECT_EQ(faultOf(folder()), "");
  const std::string journal = temporary().write("data/journal.1", "x");
  EXPECT_EQ(faultOf(folder()),
            journal +
                ": reports that an earlier version of ztinbox received before it was killed; "
                "start and stop that version once, or remove the file");
}

TEST_F(DamagedDataTest, ADamagedReportIsToldWhenItIsRead) {
  fill();
  Database(file(), Database::Access::kWrite).run("UPDATE bodies SET body = x'00' WHERE report = 7");
  ReportStore store(openSqliteBackend(folder()), 100);
  EXPECT_THROW(store.bytes(7), zt::inbox::StoreFault);
  EXPECT_EQ(store.bytes(8)->body.size(), 5'000U);
}

}  // namespace
