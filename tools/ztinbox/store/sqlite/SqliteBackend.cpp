// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/store/sqlite/SqliteBackend.h"

#include <utility>

#include "tools/ztinbox/store/ConnectionPool.h"
#include "tools/ztinbox/store/DataFolder.h"
#include "tools/ztinbox/store/sqlite/Database.h"
#include "tools/ztinbox/store/sqlite/ReportRows.h"
#include "tools/ztinbox/store/sqlite/SearchIndexer.h"
#include "tools/ztinbox/store/sqlite/SqliteStatistics.h"

namespace zt::inbox {

namespace {

/// How many reports trim() removes; senders wait meanwhile.
constexpr std::size_t kTrimmedAtOnce = 200;

Database openForWriting(const std::string& file) {
  Database database(file, Database::Access::kWrite);
  prepareForWriting(database);
  return database;
}

using Pool = ConnectionPool<Database>;

class SqliteBackend final : public Backend {
 public:
  explicit SqliteBackend(const std::string& folder)
      : _folder(folder),
        _writing(openForWriting(_folder.databaseFile())),
        _writer(_writing),
        _indexer(_writing),
        _readers([file = _folder.databaseFile()] { return openForReading(file); }) {
    recount();
  }

  void transact(const std::function<void()>& work) override {
    try {
      _writing.run("BEGIN IMMEDIATE");
      work();
      _writing.run("COMMIT");
    } catch (...) {
      if (_writing.isInTransaction()) _writing.run("ROLLBACK");
      recount();
      throw;
    }
  }

  void insert(std::span<IncomingReport* const> reports, std::size_t most) override {
    for (IncomingReport* report : reports) {
      _writer.insert(*report);
      ++_count;
      if (_count > most) removeOldest();
    }
  }
  bool trim(std::size_t most) override {
    for (std::size_t i = 0; i < kTrimmedAtOnce && _count > most; ++i) removeOldest();
    return _count > most;
  }
  bool remove(std::uint64_t number) override {
    const bool isRemoved = _writer.remove(number);
    if (isRemoved) --_count;
    return isRemoved;
  }
  std::size_t removeAll() override {
    deleteEverything(_writing);
    return std::exchange(_count, 0);
  }
  bool setRead(std::uint64_t number, bool read) override { return _writer.setRead(number, read); }
  bool indexPortion() override { return _indexer.indexPortion(); }

  void settle() override { saveNow(_writing); }
  void shrink() override { inbox::shrink(_writing); }

  std::vector<StoredReport> list(const ReportFilter& wanted, std::size_t limit) override {
    const FilterSql filter(wanted);
    Pool::Lease database(_readers);
    Statement select(*database, std::string("SELECT ") + kReportColumns + filter.text() +
                                    " ORDER BY " + filter.order() + " DESC LIMIT " +
                                    std::to_string(limit));
    filter.bindTo(select);
    return reportsOf(*database, select);
  }

  std::vector<std::uint64_t> numbers(const ReportFilter& wanted, std::size_t limit) override {
    const FilterSql filter(wanted);
    Pool::Lease database(_readers);
    Statement select(*database, "SELECT r.number" + filter.text() + " ORDER BY " + filter.order() +
                                    " DESC LIMIT " + std::to_string(limit));
    filter.bindTo(select);
    return numbersOf(select);
  }

  std::vector<StoredReport> listAfter(std::uint64_t number, std::size_t limit) override {
    Pool::Lease database(_readers);
    Statement select(*database, std::string("SELECT ") + kReportColumns +
                                    " FROM reports r WHERE r.number > ?"
                                    " ORDER BY r.number LIMIT ?");
    select.bind(number, std::uint64_t{limit});
    return reportsOf(*database, select);
  }

  std::optional<ReportBytes> bytes(std::uint64_t number) override {
    Pool::Lease database(_readers);
    Statement select(
        *database,
        "SELECT b.head, b.body, r.size FROM bodies b JOIN reports r ON r.number = b.report"
        " WHERE b.report = ?");
    select.bind(number);
    if (!select.next()) return std::nullopt;
    return ReportBytes{select.text(0),
                       unpacked(select.view(1), static_cast<std::size_t>(select.integer(2)))};
  }

  std::vector<std::uint64_t> withReportId(const std::string& reportId, std::size_t limit) override {
    Pool::Lease database(_readers);
    Statement select(*database,
                     "SELECT number FROM reports WHERE report_id = ? AND report_id <> ''"
                     " ORDER BY number LIMIT ?");
    select.bind(reportId, std::uint64_t{limit});
    return numbersOf(select);
  }

  Statistics statistics(const ReportFilter& filter) override {
    Pool::Lease database(_readers);
    return readStatistics(*database, filter);
  }

  bool isIndexed(std::uint64_t number) override {
    Pool::Lease database(_readers);
    return !SearchIndexer::isBehind(*database, number);
  }

  std::uint64_t lastNumber() override {
    Pool::Lease database(_readers);
    return static_cast<std::uint64_t>(
        (*database).number("SELECT seq FROM sqlite_sequence WHERE name = 'reports'"));
  }

 private:
  static std::vector<StoredReport> reportsOf(Database& database, Statement& select) {
    std::vector<StoredReport> reports;
    while (select.next()) reports.push_back(readReport(select));
    readPools(database, reports);
    return reports;
  }
  static std::vector<std::uint64_t> numbersOf(Statement& select) {
    std::vector<std::uint64_t> numbers;
    while (select.next()) numbers.push_back(static_cast<std::uint64_t>(select.integer(0)));
    return numbers;
  }

  void removeOldest() {
    const auto oldest = _writer.oldest();
    if (oldest) remove(*oldest);
  }
  void recount() {
    _count = static_cast<std::size_t>(_writing.number("SELECT count(*) FROM reports"));
  }

  DataFolder _folder;
  Database _writing;
  ReportWriter _writer;
  SearchIndexer _indexer;
  std::size_t _count = 0;
  Pool _readers;
};

}  // namespace

std::unique_ptr<Backend> openSqliteBackend(const std::string& folder) {
  return std::make_unique<SqliteBackend>(folder);
}

}  // namespace zt::inbox
