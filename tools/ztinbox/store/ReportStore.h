// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/ztinbox/store/Arrivals.h"
#include "tools/ztinbox/store/DataFolder.h"
#include "tools/ztinbox/store/GroupCommit.h"
#include "tools/ztinbox/store/ReportRows.h"
#include "tools/ztinbox/store/Search.h"
#include "tools/ztinbox/store/Statistics.h"

namespace zt::inbox {

/// Stores the newest `most` reports in an SQLite database, in a folder of its own. What is
/// committed survives the end of the program, and soon afterwards a power failure too. No report is
/// kept in memory. Thread-safe; every operation can throw DatabaseFault.
class ReportStore {
 public:
  /// Receives the reports of each transaction once they are in the database, in the order of their
  /// numbers, from one thread; but not the reports of an earlier run.
  using Listener = std::function<void(const std::vector<IncomingReport>&)>;

  /// Throws MachineFault if the folder or its content cannot be used.
  ReportStore(const std::string& folder, std::size_t most, Listener listener = {});

  /// Stores the report under the next number, and removes the oldest report if there are too many.
  /// The future is ready when the report is committed, which the operations below then include; it
  /// throws if the report could not be stored. Reports get their numbers in the order of the calls.
  [[nodiscard]] std::future<void> add(IncomingReport incoming);

  /// At most `limit` reports, newest first. With a text in the filter, this waits until earlier
  /// reports are indexed, but no longer than two seconds; reports that are not indexed by then are
  /// not found.
  std::vector<StoredReport> list(const ReportFilter& wanted, std::size_t limit);
  /// At most `limit` reports with higher numbers than `number`, oldest first.
  std::vector<StoredReport> listAfter(std::uint64_t number, std::size_t limit);
  std::optional<StoredReport> find(std::uint64_t number);
  std::optional<ReportBytes> bytes(std::uint64_t number);
  /// The numbers of at most `limit` reports with this report ID, oldest first.
  std::vector<std::uint64_t> withReportId(const std::string& reportId, std::size_t limit);
  Statistics statistics(const ReportFilter& filter);

  /// Returns false if there is no such report.
  bool remove(std::uint64_t number);
  /// Returns how many were removed. Keeps reports that arrive in the meantime.
  std::size_t remove(const ReportFilter& filter);
  /// Removes all reports and shrinks the file. Returns how many were removed.
  std::size_t clear();

  /// Returns false if there is no such report.
  bool setRead(std::uint64_t number, bool read);
  /// Returns the number of changed reports.
  std::size_t setRead(ReportFilter filter, bool read);

  const Arrivals& arrivals() const { return _arrivals; }

 private:
  /// Changes a report within a transaction; false if there is nothing to change.
  using Change = std::function<bool(std::uint64_t number)>;

  void insert(IncomingReport& report);
  void tellStored();
  void recount();
  void trim();
  void indexUpTo(std::uint64_t number);
  bool removeRows(std::uint64_t number);
  bool changeOne(std::uint64_t number, const Change& change);
  std::size_t changeEach(const std::vector<std::uint64_t>& numbers, const Change& change);
  std::size_t changeAll(ReportFilter filter, const Change& change);
  std::vector<std::uint64_t> numbers(const ReportFilter& wanted, std::size_t limit);

  DataFolder _folder;
  const std::size_t _most;
  Listener _listener;
  Database _writing;
  ReportWriter _writer;
  SearchIndexer _indexer;
  std::size_t _count = 0;               ///< used by the thread of _commits
  std::vector<IncomingReport> _stored;  ///< not told to the listener yet; used by that thread
  Arrivals _arrivals;
  ConnectionPool _readers;
  GroupCommit _commits;  ///< last, because its thread uses all members above
};

}  // namespace zt::inbox
