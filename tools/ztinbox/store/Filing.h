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

/// Keeps reports at once and brings them into the database together: each is written to a journal,
/// which costs next to nothing, and a moment later one transaction takes all that have come
/// meanwhile. What waits for that is limited. Any thread may call it.
class Filing {
 public:
  /// Commits reports to the database in the order of the list, all or none; throws what kept it
  /// from doing so. Called by one thread at a time.
  using File = std::function<void(std::vector<IncomingReport>&)>;

  /// `journal` is empty and outlives it. Numbers go on behind `lastNumber`.
  Filing(Journal& journal, std::uint64_t lastNumber, File file);
  Filing(const Filing&) = delete;
  Filing& operator=(const Filing&) = delete;
  /// Files what waits. What cannot be filed stays in the journal.
  ~Filing();

  /// Gives the report the next number and keeps it. Throws DatabaseFault when it cannot be kept,
  /// and while what was kept before cannot be filed.
  std::uint64_t keep(IncomingReport report);

  /// Waits until all that was kept before is filed. Throws what keeps it from being so.
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
  std::mutex _order;  ///< held while a report is kept
  std::mutex _mutex;  ///< of all that follows
  std::condition_variable _changed;
  std::vector<IncomingReport> _kept;
  std::size_t _keptBytes = 0;
  std::vector<IncomingReport> _inFiling;  ///< of its thread alone
  std::uint64_t _lastKept;
  std::uint64_t _lastFiled;
  std::uint64_t _awaited = 0;  ///< the last one that somebody waits for
  std::uint64_t _failures = 0;
  std::exception_ptr _fault;  ///< of the last filing, if it failed
  bool _ending = false;
  std::thread _thread;
};

}  // namespace zt::inbox
