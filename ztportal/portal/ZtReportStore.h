// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/platform/http/ZtTransportOptions.h"
#include "ztportal/portal/ZtDelivery.h"

/// A file of the store, as it was when it was listed.
struct ZT_EXPORT ZtSavedReport {
  std::string path;
  ZtString reportId;  ///< the file's name without its ending, such as "{0E4D0F7C-…}"
  std::uint64_t bytes = 0;
  std::chrono::system_clock::time_point time;  ///< when it was last written

  // Each of these reads the file now.
  /// The customer in the file; missing if the file is not well-formed or names none.
  ZtString customerId() const;
  bool canBeSent() const { return problem().empty(); }
  /// Why the file cannot be sent, such as "line 15, column 50: Opening and ending tag mismatch";
  /// empty if it can. One line in English that may quote the file.
  std::string problem() const;
};

/// How much the store keeps; zero means no limit.
struct ZtStoreLimits {
  std::size_t reports = 0;
  std::uint64_t bytes = 0;
  std::chrono::seconds age{0};
};

/// How `ZtReportStore::send` sends.
struct ZtSendOptions {
  /// URL of the customer's configuration document.
  ZtString configurationUrl;
  /// Those of `ZtHost::setTransportOptions` if there are none here.
  std::optional<ZtTransportOptions> transport;
  /// After so many failures a report is set aside; 0: never. `ZtReportStore` tells what counts.
  unsigned attempts = 5;

  /// Without it every report is tried once. With it `send` waits and tries again until nothing is
  /// left that can be sent: after `retryDelay`, then twice as long each time, at most
  /// `longestDelay`. Up to half of each time is taken off at random, so that many machines do not
  /// come back at the same moment. It never waits less than the server asks for.
  bool retry = false;
  std::chrono::milliseconds retryDelay{1000};
  std::chrono::milliseconds longestDelay{60'000};
  /// No request and no waiting begins after this time; zero: no limit.
  std::chrono::milliseconds budget{0};

  // Both are called on the thread of `send`; an exception leaves `send`.
  /// Called after each report that was tried, or skipped because it cannot be sent
  /// (`ZtDeliveryOutcome::Unreadable`). With false as result `send` ends.
  std::function<bool(const ZtSavedReport& report, const ZtDelivery& delivery)> progress;
  /// Asked before each report, and often during a wait. With true as result `send` ends.
  std::function<bool()> isCancelled;
};

/// Why `ZtReportStore::send` ended.
enum class ZtSendEnd : std::uint8_t {
  Done,         ///< every report was tried
  Cancelled,    ///< `progress` or `isCancelled` asked for it
  Budget,       ///< the time is over
  Offline,      ///< no configuration, no version of the server, or the server is gone
  Deferred,     ///< the server is not in service, or asks to wait; see `retryAfter`
  Busy,         ///< another process or thread is sending from this store
  NoStore,      ///< the store's folder or its lock cannot be created
  NoConsent,    ///< the user has revoked the consent
  WrongOptions  ///< the `transport` cannot be used; its `problem()` says why
};

/// What `ZtReportStore::send` did.
struct ZtSendResult {
  ZtSendEnd end = ZtSendEnd::Done;
  std::size_t accepted = 0;  ///< and removed
  std::size_t setAside = 0;  ///< moved to "unsendable"
  std::size_t removed = 0;   ///< for the limits
  std::size_t left = 0;      ///< reports in the store at the end, new ones included
  /// How long the server asks to wait from now; zero if it does not.
  std::chrono::seconds retryAfter{0};
};

/// The store of reports that could not be delivered: `Kelvane/<name of the host>/reports` in the
/// user's application-support folder, one file per report, `{<report ID>}.ztr`.
///
///     ZtReportStore store;
///     for (const ZtSavedReport& saved : store.list()) {
///       if (!saved.canBeSent()) log(saved.path, saved.problem());
///     }
///     ZtSendOptions options;
///     options.configurationUrl = configurationUrl;
///     options.budget = std::chrono::seconds(30);
///     const ZtSendResult result = store.send(options);
///     if (result.end == ZtSendEnd::Deferred) tryAgainIn(result.retryAfter);
///
/// `ZtPortalData::sendSavedReports` stops at the first report that is not accepted; `send` does not
/// let one report block the others:
/// - accepted: the file is removed, unless it was written again meanwhile;
/// - it cannot be read, is not well-formed, or the server refuses it: a failure of this report. The
///   next one follows. Failures are counted across processes, in the file "sending.state" beside
///   the folder "reports". A report with too many of them is moved to the folder "unsendable"
///   there; a file that may still be being written, since it is younger than ten seconds, is not
///   counted;
/// - no response: if the server still returns its version, this too is a failure of the report.
///   Otherwise `send` ends, or waits (`ZtSendEnd::Offline`);
/// - the server is not in service or does not know us (status 401, 403, 404, 405, 407, 408, 429,
///   502, 503 or 504), or asks to wait (Retry-After): `send` ends, or waits
///   (`ZtSendEnd::Deferred`). Other processes of this host do not ask that server before the time
///   is over either.
///
/// One thread of one process at a time sends from a store; the lock ("sending.lock") ends with its
/// process. The other operations need no lock. Each report is broadcast before it is posted. The
/// test mode is looked up at most once a second.
///
/// A light value, which looks at the folder anew in each operation. Any thread may use it, and each
/// may make its own. No operation throws but by a callback; why one failed is in the log of
/// `ZtHost::setLogHandler`.
class ZT_EXPORT ZtReportStore {
 public:
  /// The store of the host as `ZtHost` names it now. Creates the folder if it does not exist.
  ZtReportStore();

  /// The folder of the reports; missing if it could not be created, then the store stays empty.
  const ZtString& folder() const { return _folder; }

  /// The saved reports, oldest first. Opens no file: 10,000 take some hundredths of a second.
  std::vector<ZtSavedReport> list() const;
  /// Those in "unsendable", oldest first.
  std::vector<ZtSavedReport> listUnsendable() const;

  /// Sends the saved reports, oldest first.
  ZtSendResult send(const ZtSendOptions& options) const;

  // Each returns whether it succeeded. `report` may be one of either list.
  bool remove(const ZtSavedReport& report) const;
  /// Moves the report to "unsendable". A file of the same name there gets no successor: the new one
  /// is called "{…}-2.ztr", and so on.
  bool setAside(const ZtSavedReport& report) const;
  /// Moves a report of `listUnsendable` back, so that it is sent again; its failures are forgotten.
  bool putBack(const ZtSavedReport& report) const;
  /// Copies the file, byte for byte, into the folder `path`, or else to a new file `path`. Replaces
  /// nothing; only its owner can read the copy.
  bool exportTo(const ZtSavedReport& report, const std::string& path) const;
  /// Removes everything that is stored: reports, those in "unsendable", and the count of failures.
  /// Returns the number of reports removed.
  std::size_t removeAll() const;

  /// Limits of the stores of this process, for the saved reports and for those in "unsendable"
  /// each. They are enforced after each save and by `send`: the oldest reports are removed, counted
  /// and logged. Without this call there are none.
  static void setLimits(const ZtStoreLimits& limits);
  static ZtStoreLimits limits();
  /// Removes what exceeds the limits now. Returns the number of reports removed.
  std::size_t enforceLimits() const;

 private:
  ZtString _folder;
};
