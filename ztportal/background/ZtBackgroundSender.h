// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/platform/http/ZtTransportOptions.h"
#include "ztportal/portal/ZtDelivery.h"
#include "ztportal/portal/ZtPortalData.h"
#include "ztportal/portal/ZtReportStore.h"

/// What became of a report that the background sender tried to send.
struct ZT_EXPORT ZtBackgroundReceipt {
  ZtSavedReport report;
  ZtDelivery delivery;  ///< `savedTo` is empty if the report is no longer in the store
};

/// How a `ZtBackgroundSender` sends.
struct ZT_EXPORT ZtBackgroundOptions {
  /// URL of the customer's configuration document.
  ZtString configurationUrl;
  /// Those of `ZtHost::setTransportOptions` if there are none here.
  std::optional<ZtTransportOptions> transport;
  /// After so many failures a report is set aside; 0: never. See `ZtReportStore`.
  unsigned attempts = 5;
  /// How long to wait after a failure: first `retryDelay`, then twice as long each time, at most
  /// `longestDelay`. Up to half of each time is taken off at random. It never waits less than the
  /// server asks for.
  std::chrono::milliseconds retryDelay{1000};
  std::chrono::milliseconds longestDelay{60'000};

  /// Called with each receipt, on the thread of the sender. It may hand over further reports; an
  /// exception is logged and goes no further. Without it the receipts are kept for `receipts()`.
  std::function<void(const ZtBackgroundReceipt& receipt)> onReceipt;
  /// How many receipts are kept; the oldest are dropped first.
  std::size_t keptReceipts = 100;
};

/// Sends reports from a thread of its own, so that the host never waits for a network:
///
///     ZtBackgroundOptions options;
///     options.configurationUrl = configurationUrl;
///     ZtBackgroundSender sender(options);
///
///     // No URL here: a document with one asks the server for its version when it is created.
///     auto document = ZtPortalData::initWithValues("", false, "Kelvane", applicationId, "2.1");
///     document->addPool("CUSTOM", ZtDate::now())->addString("RESULT", "OK");
///     if (!sender.send(*document)) warn(document->lastDelivery().saveError);
///
///     // When the host quits:
///     std::size_t left = sender.flush(std::chrono::seconds(2));
///
/// A report is saved in the store before `send` returns, so it survives a crash, a kill and a power
/// failure as every saved report does. The thread sends what the store holds, reports of earlier
/// runs included, with `ZtReportStore::send`. While something is left it tries again with growing
/// delays, and soon after the network of the machine has changed. Between two tries nothing of a
/// report is in memory; a host without reports to send has a thread that sleeps.
///
/// A host with an event loop takes the receipts there. It watches `descriptor()`, as with
/// `QSocketNotifier` or `g_unix_fd_add`, and calls `receipts()` when that is readable:
///
///     for (const ZtBackgroundReceipt& receipt : sender.receipts()) {
///       show(receipt.report.reportId, receipt.delivery.message);
///     }
///
/// Threads: any thread may call any operation. The thread of the sender blocks all signals, except
/// those that report a fault of its own code. After fork(2) the sender of the child process sends
/// nothing: `send` saves, and the process of the parent finds the report.
class ZT_EXPORT ZtBackgroundSender {
 public:
  /// Starts the thread. If the system has none, which is logged, `send` only saves. Reads ICU's
  /// data from disk (up to a tenth of a second after the start of a machine), so create it before
  /// the event loop runs.
  explicit ZtBackgroundSender(ZtBackgroundOptions options);
  ZtBackgroundSender(const ZtBackgroundSender&) = delete;
  ZtBackgroundSender& operator=(const ZtBackgroundSender&) = delete;
  /// `stop` with five seconds, more than two requests take with the usual time limits; without
  /// any further waiting if the host has called `stop` itself.
  ~ZtBackgroundSender();

  /// Saves the report and wakes up the thread. The caller may change or destroy the document
  /// afterwards. False if the report could not be saved: then nothing sends it, and the document's
  /// `lastDelivery` says why.
  bool send(ZtPortalData& document);

  // Both return how many reports are left in the store. They do not wait on the thread of the
  // sender, in `onReceipt`.

  /// Waits at most `timeout` until each report that is in the store now has been tried once more;
  /// a delay after a failure ends at once.
  std::size_t flush(std::chrono::milliseconds timeout);
  /// Ends sending for good, and waits at most `timeout` for the thread. What it is sending is
  /// completed; if that takes longer, the thread ends by itself later. `send` still saves.
  std::size_t stop(std::chrono::milliseconds timeout);

  /// The receipts since the last call, oldest first.
  std::vector<ZtBackgroundReceipt> receipts();
  /// How many were dropped because nobody took them in time.
  std::size_t droppedReceipts() const;
  /// Is readable while there are receipts to take. For poll(2); not to be read or closed. -1 if
  /// there is `onReceipt`, if no receipts are kept, or if no descriptor is left.
  int descriptor() const;

 private:
  struct State;
  bool isInert() const;

  std::shared_ptr<State> _state;
};
