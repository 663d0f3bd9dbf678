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

/// The reports, in an SQLite database of its own folder: the newest `most` of them. What was added
/// is in the journal before anybody is told so, and moments later in the database: no end of the
/// program can undo it, and soon no power failure either. Nothing of a report in the database stays
/// in memory. Any thread may call it; every operation throws DatabaseFault when the database fails.
class ReportStore {
 public:
  /// Gets the reports once they are in the database, those of a transaction together, in the order
  /// of their numbers, from one thread. Not those that an earlier run kept.
  using Listener = std::function<void(const std::vector<IncomingReport>&)>;

  /// Throws MachineFault when the folder or what is in it cannot be used.
  ReportStore(std::string folder, std::size_t most, Listener listener = {});

  /// Takes `incoming` in under the next number; the oldest one goes when there are too many. Once
  /// it returns, the report is kept, and whatever is asked for below knows it.
  void add(IncomingReport incoming);

  /// At most `limit`, newest first. A filter with a text finds what was added before the call, once
  /// that is indexed: under a load that leaves no time for it, the search waits for two seconds at
  /// most and then does without the rest.
  std::vector<StoredReport> list(const ReportFilter& wanted, std::size_t limit);
  /// At most `limit` with higher numbers than `number`, oldest first.
  std::vector<StoredReport> listAfter(std::uint64_t number, std::size_t limit);
  std::optional<StoredReport> find(std::uint64_t number);
  std::optional<ReportBytes> bytes(std::uint64_t number);
  /// The numbers of the reports with this report ID, oldest first, at most `limit`.
  std::vector<std::uint64_t> withReportId(const std::string& reportId, std::size_t limit);
  Statistics statistics(const ReportFilter& filter);

  /// False when there is none.
  bool remove(std::uint64_t number);
  /// How many there were. What comes in meanwhile stays.
  std::size_t remove(const ReportFilter& filter);
  /// All of them: how many there were. The file shrinks.
  std::size_t clear();

  /// False when there is none.
  bool setRead(std::uint64_t number, bool read);
  /// How many it changed.
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
  std::size_t _count = 0;  ///< of the writing thread
  Journal _journal;
  Arrivals _arrivals;
  ConnectionPool _readers;
  GroupCommit _commits;  ///< its thread uses all of the above
  Filing _filing;        ///< last: its thread uses all of the above
};

}  // namespace zt::inbox
