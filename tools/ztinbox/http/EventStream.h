#pragma once

#include <cstdint>
#include <optional>

#include "tools/ztinbox/http/HttpServer.h"
#include "tools/ztinbox/store/ReportStore.h"

namespace zt::inbox {

/// Server-sent events (WHATWG HTML, section 9.2), one for each new report, and one when reports
/// were deleted or marked:
///
///     id: 12
///     event: report
///     data: {"answer":"accepted",…,"number":12,…}
///
///     event: changed
///     data: {}
///
/// A comment every few seconds shows both sides whether the other is there. Each client's thread
/// reads the reports from the store at its client's own pace: a slow one holds up nobody, and
/// nothing piles up for it.
class EventStream {
 public:
  /// Answers with the events of the reports with higher numbers than `after`, and goes on until
  /// the client leaves or the connection is ended. Without `after`, or with a number that no
  /// report has reached: with those that come from now on.
  static void answer(Exchange& exchange, ReportStore& store, std::optional<std::uint64_t> after);

  EventStream(ReportStore& store, Connection& connection, std::uint64_t last)
      : _store(store), _connection(connection), _last(last), _changes(store.arrivals().changes()) {}

  /// Writes what there is, or waits for it; false at the end.
  bool goOn(httplib::DataSink& sink);

 private:
  ReportStore& _store;
  Connection& _connection;
  std::uint64_t _last;
  std::uint64_t _changes;
  bool _begun = false;
};

}  // namespace zt::inbox
