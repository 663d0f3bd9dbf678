// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tools/ztinbox/store/Arrivals.h"
#include "tools/ztinbox/store/ReportFilter.h"
#include "tools/ztinbox/store/Statistics.h"
#include "tools/ztinbox/store/StoredReport.h"

namespace zt::inbox {

/// A database with reports. Every operation can throw StoreFault.
class Backend {
 public:
  Backend() = default;
  Backend(const Backend&) = delete;
  Backend& operator=(const Backend&) = delete;
  virtual ~Backend() = default;

  // Writing, by one thread.

  /// Runs `work` in a transaction, which is rolled back if it throws.
  virtual void transact(const std::function<void()>& work) = 0;

  // These must be called inside a transaction.

  /// Inserts the reports under the next numbers, in their order, and then removes the oldest
  /// reports beyond `most`. Sets their numbers and duplicateOf.
  virtual void insert(std::span<IncomingReport* const> reports, std::size_t most) = 0;
  /// Removes some of the oldest reports beyond `most`; false if there were none.
  virtual bool trim(std::size_t most) = 0;
  /// Returns false if there is no such report.
  virtual bool remove(std::uint64_t number) = 0;
  /// Removes all reports at once, which is faster. Returns how many.
  virtual std::size_t removeAll() = 0;
  /// Returns false if there is no such report.
  virtual bool setRead(std::uint64_t number, bool read) = 0;
  /// Adds a portion of reports to the full-text index; false if all are in it.
  virtual bool indexPortion() = 0;

  // These must be called outside of a transaction.

  /// Called when there is nothing more to do for now.
  virtual void settle() {}
  /// Called after removeAll(); returns free space to the system if it can.
  virtual void shrink() {}

  // Reading, by any thread.

  /// At most `limit` of the selected reports, newest first.
  virtual std::vector<StoredReport> list(const ReportFilter& wanted, std::size_t limit) = 0;
  /// Their numbers alone.
  virtual std::vector<std::uint64_t> numbers(const ReportFilter& wanted, std::size_t limit) = 0;
  /// At most `limit` reports with higher numbers than `number`, oldest first.
  virtual std::vector<StoredReport> listAfter(std::uint64_t number, std::size_t limit) = 0;
  virtual std::optional<ReportBytes> bytes(std::uint64_t number) = 0;
  /// The numbers of at most `limit` reports with this report ID, oldest first.
  virtual std::vector<std::uint64_t> withReportId(const std::string& reportId,
                                                  std::size_t limit) = 0;
  virtual Statistics statistics(const ReportFilter& filter) = 0;
  /// Whether all reports up to `number` are in the full-text index.
  virtual bool isIndexed(std::uint64_t number) = 0;
  /// The highest number that a report ever had.
  virtual std::uint64_t lastNumber() = 0;

  /// Tells `arrivals` from now on what other processes do with the same reports.
  virtual void follow(Arrivals& /*arrivals*/) {}
};

}  // namespace zt::inbox
