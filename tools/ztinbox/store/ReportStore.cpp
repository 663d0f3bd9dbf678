// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/store/ReportStore.h"

#include <algorithm>
#include <utility>

namespace zt::inbox {

namespace {

/// How many reports are removed or marked at a time; senders wait meanwhile.
constexpr std::size_t kChangePortion = 200;
constexpr std::chrono::seconds kIndexingPatience{2};

Database openForWriting(const std::string& file) {
  Database database(file, Database::Access::kWrite);
  prepareForWriting(database);
  return database;
}

std::uint64_t lastNumber(Database& database) {
  return static_cast<std::uint64_t>(
      database.number("SELECT seq FROM sqlite_sequence WHERE name = 'reports'"));
}

}  // namespace

ReportStore::ReportStore(const std::string& folder, std::size_t most, Listener listener)
    : _folder(folder),
      _most(most),
      _listener(std::move(listener)),
      _writing(openForWriting(_folder.databaseFile())),
      _writer(_writing),
      _indexer(_writing),
      _arrivals(lastNumber(_writing)),
      _readers(_folder.databaseFile()),
      _commits(_writing, {.rolledBack = [this] { recount(); },
                          .committed = [this] { tellStored(); },
                          .background = [this] { return _indexer.indexPortion(); },
                          .settled = [this] { saveNow(_writing); }}) {
  _commits.add({[this] { recount(); }, {}});
  trim();
}

std::future<void> ReportStore::add(IncomingReport incoming) {
  const auto report = std::make_shared<IncomingReport>(std::move(incoming));
  return _commits.add({[this, report] { insert(*report); },
                       [this, report] {
                         _arrivals.add(report->report.number);
                         _stored.push_back(std::move(*report));
                       }});
}

void ReportStore::insert(IncomingReport& report) {
  _writer.insert(report);
  ++_count;
  const auto oldest = _count > _most ? _writer.oldest() : std::nullopt;
  if (oldest) removeRows(*oldest);
}

void ReportStore::tellStored() {
  if (_listener && !_stored.empty()) _listener(_stored);
  _stored.clear();
}

std::vector<StoredReport> ReportStore::list(const ReportFilter& wanted, std::size_t limit) {
  if (wanted.text) indexUpTo(_arrivals.lastNumber());
  const FilterSql filter(wanted);
  ConnectionPool::Lease lease(_readers);
  Statement select(lease.database(), std::string("SELECT ") + kReportColumns + filter.text() +
                                         " ORDER BY " + filter.order() + " DESC LIMIT " +
                                         std::to_string(limit));
  std::vector<StoredReport> reports;
  for (filter.bindTo(select); select.next();) reports.push_back(readReport(select));
  readPools(lease.database(), reports);
  return reports;
}

std::vector<StoredReport> ReportStore::listAfter(std::uint64_t number, std::size_t limit) {
  ConnectionPool::Lease lease(_readers);
  Statement select(lease.database(), std::string("SELECT ") + kReportColumns +
                                         " FROM reports r WHERE r.number > ?"
                                         " ORDER BY r.number LIMIT ?");
  std::vector<StoredReport> reports;
  for (select.bind(number, std::uint64_t{limit}); select.next();) {
    reports.push_back(readReport(select));
  }
  readPools(lease.database(), reports);
  return reports;
}

std::optional<StoredReport> ReportStore::find(std::uint64_t number) {
  auto reports = listAfter(number - 1, 1);
  if (number == 0 || reports.empty() || reports.front().number != number) return std::nullopt;
  return std::move(reports.front());
}

std::optional<ReportBytes> ReportStore::bytes(std::uint64_t number) {
  ConnectionPool::Lease lease(_readers);
  Statement select(
      lease.database(),
      "SELECT b.head, b.body, r.size FROM bodies b JOIN reports r ON r.number = b.report"
      " WHERE b.report = ?");
  select.bind(number);
  if (!select.next()) return std::nullopt;
  return ReportBytes{select.text(0),
                     unpacked(select.view(1), static_cast<std::size_t>(select.integer(2)))};
}

std::vector<std::uint64_t> ReportStore::withReportId(const std::string& reportId,
                                                     std::size_t limit) {
  ConnectionPool::Lease lease(_readers);
  Statement select(lease.database(),
                   "SELECT number FROM reports WHERE report_id = ? AND report_id <> ''"
                   " ORDER BY number LIMIT ?");
  std::vector<std::uint64_t> numbers;
  for (select.bind(reportId, std::uint64_t{limit}); select.next();) {
    numbers.push_back(static_cast<std::uint64_t>(select.integer(0)));
  }
  return numbers;
}

Statistics ReportStore::statistics(const ReportFilter& filter) {
  if (filter.text) indexUpTo(_arrivals.lastNumber());
  ConnectionPool::Lease lease(_readers);
  return readStatistics(lease.database(), filter);
}

bool ReportStore::removeRows(std::uint64_t number) {
  const bool isRemoved = _writer.remove(number);
  if (isRemoved) --_count;
  return isRemoved;
}

/// Changes this report.
bool ReportStore::changeOne(std::uint64_t number, const Change& change) {
  const bool isChanged = changeEach({number}, change) > 0;
  if (isChanged) _arrivals.addChange();
  return isChanged;
}

/// Changes these reports in one transaction. Returns how many `change` has changed.
std::size_t ReportStore::changeEach(const std::vector<std::uint64_t>& numbers,
                                    const Change& change) {
  std::size_t changed = 0;
  _commits.run({[&] {
                  changed = 0;
                  for (const std::uint64_t number : numbers) changed += change(number) ? 1 : 0;
                },
                {}});
  return changed;
}

/// Changes the selected reports in portions.
std::size_t ReportStore::changeAll(ReportFilter filter, const Change& change) {
  std::size_t total = 0;
  for (auto found = numbers(filter, kChangePortion); !found.empty();
       found = numbers(filter, kChangePortion)) {
    total += changeEach(found, change);
    filter.before = found.back();
  }
  if (total > 0) _arrivals.addChange();
  return total;
}

bool ReportStore::remove(std::uint64_t number) {
  return changeOne(number, [this](std::uint64_t each) { return removeRows(each); });
}

std::size_t ReportStore::remove(const ReportFilter& filter) {
  ReportFilter present = filter;
  const std::uint64_t next = _arrivals.lastNumber() + 1;
  present.before = std::min(filter.before.value_or(next), next);
  return changeAll(present, [this](std::uint64_t number) { return removeRows(number); });
}

std::size_t ReportStore::clear() {
  std::size_t cleared = 0;
  _commits.run({[this, &cleared] {
                  cleared = _count;
                  deleteEverything(_writing);
                  _count = 0;
                },
                [this] {
                  _arrivals.clear();
                  shrink(_writing);
                }});
  if (cleared > 0) _arrivals.addChange();
  return cleared;
}

bool ReportStore::setRead(std::uint64_t number, bool read) {
  return changeOne(number,
                   [this, read](std::uint64_t each) { return _writer.setRead(each, read); });
}

std::size_t ReportStore::setRead(ReportFilter filter, bool read) {
  filter.read = !read;
  return changeAll(std::move(filter),
                   [this, read](std::uint64_t number) { return _writer.setRead(number, read); });
}

void ReportStore::recount() {
  _count = static_cast<std::size_t>(_writing.number("SELECT count(*) FROM reports"));
}

/// Removes the reports beyond the limit, which an earlier run with a higher limit left. Does so in
/// portions, so that new reports can be stored in between.
void ReportStore::trim() {
  const auto more = std::make_shared<bool>(false);
  _commits.add({[this, more] {
                  for (std::size_t i = 0; i < kChangePortion && _count > _most; ++i) {
                    const auto oldest = _writer.oldest();
                    if (oldest) removeRows(*oldest);
                  }
                  *more = _count > _most;
                },
                [this, more] {
                  if (*more && !_commits.isEnding()) trim();
                }});
}

void ReportStore::indexUpTo(std::uint64_t number) {
  const auto end = std::chrono::steady_clock::now() + kIndexingPatience;
  while (std::chrono::steady_clock::now() < end) {
    {
      ConnectionPool::Lease lease(_readers);
      if (!SearchIndexer::isBehind(lease.database(), number)) return;
    }
    _commits.run({[this] { _indexer.indexPortion(); }, {}});
  }
}

std::vector<std::uint64_t> ReportStore::numbers(const ReportFilter& wanted, std::size_t limit) {
  if (wanted.text) indexUpTo(_arrivals.lastNumber());
  const FilterSql filter(wanted);
  ConnectionPool::Lease lease(_readers);
  Statement select(lease.database(), "SELECT r.number" + filter.text() + " ORDER BY " +
                                         filter.order() + " DESC LIMIT " + std::to_string(limit));
  std::vector<std::uint64_t> found;
  for (filter.bindTo(select); select.next();) {
    found.push_back(static_cast<std::uint64_t>(select.integer(0)));
  }
  return found;
}

}  // namespace zt::inbox
