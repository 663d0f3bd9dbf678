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
#include "tools/ztinbox/store/Backend.h"
#include "tools/ztinbox/store/GroupCommit.h"

namespace zt::inbox {

/// Stores the newest `most` reports in a database. No report is kept in memory. Thread-safe; every
/// operation can throw StoreFault.
class ReportStore {
 public:
  /// Receives the reports of each transaction of this process once they are in the database, in the
  /// order of their numbers, from one thread.
  using Listener = std::function<void(const std::vector<IncomingReport>&)>;

  ReportStore(std::unique_ptr<Backend> backend, std::size_t most, Listener listener = {});

  /// Stores the report under the next number, and removes the oldest report if there are too many.
  /// The future is ready when the report is committed, which the operations below then include; it
  /// throws if the report could not be stored. Reports get their numbers in the order of the calls.
  [[nodiscard]] std::future<void> add(IncomingReport incoming);

  /// At most `limit` reports, newest first. With a text in the filter, this waits until earlier
  /// reports are indexed, but no longer than two seconds; reports that are not indexed by then are
  /// not found.
  std::vector<StoredReport> list(const ReportFilter& wanted, std::size_t limit);
  /// At most `limit` reports with higher numbers than `number`, oldest first.
  std::vector<StoredReport> listAfter(std::uint64_t number, std::size_t limit) {
    return _backend->listAfter(number, limit);
  }
  std::optional<StoredReport> find(std::uint64_t number);
  std::optional<ReportBytes> bytes(std::uint64_t number) { return _backend->bytes(number); }
  /// The numbers of at most `limit` reports with this report ID, oldest first.
  std::vector<std::uint64_t> withReportId(const std::string& reportId, std::size_t limit) {
    return _backend->withReportId(reportId, limit);
  }
  Statistics statistics(const ReportFilter& filter);

  /// Returns false if there is no such report.
  bool remove(std::uint64_t number);
  /// Returns how many were removed. Keeps reports that arrive in the meantime.
  std::size_t remove(const ReportFilter& filter);
  /// Removes all reports and shrinks the database. Returns how many were removed.
  std::size_t clear();

  /// Returns false if there is no such report.
  bool setRead(std::uint64_t number, bool read);
  /// Returns the number of changed reports.
  std::size_t setRead(ReportFilter filter, bool read);

  const Arrivals& arrivals() const { return _arrivals; }

 private:
  /// Changes a report within a transaction; false if there is nothing to change.
  using Change = std::function<bool(std::uint64_t number)>;

  void transact(const std::function<void()>& work);
  void tellStored();
  void trim();
  void indexUpTo(std::uint64_t number);
  bool changeOne(std::uint64_t number, const Change& change);
  std::size_t changeEach(const std::vector<std::uint64_t>& numbers, const Change& change);
  std::size_t changeAll(ReportFilter filter, const Change& change);

  Arrivals _arrivals;  ///< first, because a thread of _backend uses it
  std::unique_ptr<Backend> _backend;
  const std::size_t _most;
  Listener _listener;
  // Used by the thread of _commits:
  std::vector<IncomingReport*> _inserted;  ///< in this transaction
  std::vector<IncomingReport> _stored;     ///< not told to the listener yet
  GroupCommit _commits;                    ///< last, because its thread uses all members above
};

}  // namespace zt::inbox
