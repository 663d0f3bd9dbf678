// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "tools/ztinbox/store/Journal.h"
#include "tools/ztinbox/store/StoredReport.h"

namespace zt::inbox {

/// Moves reports to the database in groups. Each report is first written to the write-ahead log,
/// which is cheap; milliseconds later, one transaction files all reports that have arrived in the
/// meantime. The memory of the waiting reports is limited. Thread-safe.
class Filing {
 public:
  /// Commits reports to the database in the order of the list, all or none. Throws on failure.
  /// Called by one thread at a time.
  using File = std::function<void(std::vector<IncomingReport>&)>;

  /// `journal` is empty and outlives this object. The next number is `lastNumber` + 1.
  Filing(Journal& journal, std::uint64_t lastNumber, File file);
  Filing(const Filing&) = delete;
  Filing& operator=(const Filing&) = delete;
  /// Files the waiting reports. Reports that cannot be filed stay in the journal.
  ~Filing();

  /// Assigns the next number to the report and writes it to the journal. Throws DatabaseFault if
  /// that fails, and while earlier reports cannot be filed.
  std::uint64_t keep(IncomingReport report);

  /// Waits until all earlier reports are filed. Throws if they cannot be filed.
  void fileAll();

 private:
  std::uint64_t fileAtOnce(IncomingReport report);
  void serve();
  bool waitForReports(std::unique_lock<std::mutex>& lock);
  void filePortion(std::unique_lock<std::mutex>& lock);
  bool isEmpty() const { return _kept.empty() && _inFiling.empty(); }
  bool isFull() const;
  bool isAwaited() const { return _awaited > _lastFiled; }

  Journal& _journal;
  const File _file;
  std::mutex _order;  ///< locked while a report is kept
  std::mutex _mutex;  ///< protects all members below
  std::condition_variable _changed;
  std::vector<IncomingReport> _kept;
  std::size_t _keptBytes = 0;
  std::vector<IncomingReport> _inFiling;  ///< used by its thread only
  std::uint64_t _lastKept;
  std::uint64_t _lastFiled;
  std::uint64_t _awaited = 0;  ///< the last report that a thread waits for
  std::uint64_t _failures = 0;
  std::exception_ptr _fault;  ///< the error of the last filing, if it failed
  bool _ending = false;
  std::thread _thread;
};

}  // namespace zt::inbox
