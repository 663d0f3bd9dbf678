#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/ztinbox/store/Arrivals.h"
#include "tools/ztinbox/store/DataFolder.h"
#include "tools/ztinbox/store/Filing.h"
#include "tools/ztinbox/store/GroupCommit.h"
#include "tools/ztinbox/store/Journal.h"
#include "tools/ztinbox/store/ReportRows.h"
#include "tools/ztinbox/store/Search.h"
#include "tools/ztinbox/store/Statistics.h"

namespace zt::inbox {

/// The newest `most` reports, in an SQLite database in its own folder. An added report is in the
/// write-ahead log before add() returns, and soon in the database: it survives the end of the
/// program, and soon a power failure too. Reports in the database are not kept in memory.
/// Thread-safe; every operation throws DatabaseFault if the database fails.
class ReportStore {
 public:
  /// Receives the reports once they are in the database, those of a transaction together, in the
  /// order of their numbers, from one thread. Not those of an earlier run.
  using Listener = std::function<void(const std::vector<IncomingReport>&)>;

  /// Throws MachineFault if the folder or its content cannot be used.
  ReportStore(const std::string& folder, std::size_t most, Listener listener = {});

  /// Keeps `incoming` with the next number; the oldest report is removed if there are too many.
  /// Once it returns, the report is kept, and the operations below include it.
  void add(IncomingReport incoming);

  /// At most `limit`, newest first. A filter with a text waits until earlier reports are indexed,
  /// but under heavy load for at most two seconds: then it leaves out the rest.
  std::vector<StoredReport> list(const ReportFilter& wanted, std::size_t limit);
  /// At most `limit` with higher numbers than `number`, oldest first.
  std::vector<StoredReport> listAfter(std::uint64_t number, std::size_t limit);
  std::optional<StoredReport> find(std::uint64_t number);
  std::optional<ReportBytes> bytes(std::uint64_t number);
  /// The numbers of the reports with this report ID, oldest first, at most `limit`.
  std::vector<std::uint64_t> withReportId(const std::string& reportId, std::size_t limit);
  Statistics statistics(const ReportFilter& filter);

  /// False if there is none.
  bool remove(std::uint64_t number);
  /// Returns their number. Reports that come meanwhile stay.
  std::size_t remove(const ReportFilter& filter);
  /// Removes all and shrinks the file. Returns their number.
  std::size_t clear();

  /// False if there is none.
  bool setRead(std::uint64_t number, bool read);
  /// Returns the number of changed reports.
  std::size_t setRead(ReportFilter filter, bool read);

  const Arrivals& arrivals() const { return _arrivals; }

 private:
  void file(std::vector<IncomingReport>& reports);
  void recount();
  void trim();
  ConnectionPool::Lease readAll();
  void indexUpTo(std::uint64_t number);
  std::vector<std::uint64_t> numbers(const ReportFilter& wanted, std::size_t limit);

  DataFolder _folder;
  const std::size_t _most;
  Listener _listener;
  Database _writing;
  ReportWriter _writer;
  SearchIndexer _indexer;
  std::size_t _count = 0;  ///< used by the writing thread
  Journal _journal;
  Arrivals _arrivals;
  ConnectionPool _readers;
  GroupCommit _commits;  ///< its thread uses all of the above
  Filing _filing;        ///< last: its thread uses all of the above
};

}  // namespace zt::inbox
