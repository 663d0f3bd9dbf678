// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/api/Api.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "tools/ztinbox/Fault.h"
#include "tools/ztinbox/api/QueryParameters.h"
#include "tools/ztinbox/api/ReportJson.h"
#include "tools/ztinbox/faults/BehaviourJson.h"
#include "ztportal/base/Text.h"
#include "ztportal/platform/json/Json.h"

namespace zt::inbox {

namespace {

using std::chrono::milliseconds;

constexpr const char* kNoSuchReport = "no such report";
constexpr std::string_view kRoot = "/api/v1/";
constexpr std::size_t kLargestBody = std::size_t{1024} * 1024;
constexpr std::uint64_t kUsuallyListed = 100;
constexpr std::uint64_t kMostListed = 1'000;
constexpr std::size_t kMostOfSameId = 100;
constexpr double kDefaultWaitSeconds = 10;
constexpr double kLongestWaitSeconds = 3'600;
/// How soon a waiting request notices that its client has disconnected.
constexpr milliseconds kWaitSlice{100};

// The database's numbers have 63 bits.
constexpr auto kHighestNumber =
    static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());

constexpr auto kListParameters = std::to_array<std::string_view>(
    {"limit", "customer", "application", "machine", "version", "reportId", "answer", "result",
     "pool", "text", "test", "read", "since", "until", "before"});
constexpr std::span kFilterParameters = std::span(kListParameters).subspan<1>();

ReportFilter readFilter(const QueryParameters& parameters) {
  ReportFilter filter;
  filter.customer = parameters.text("customer");
  filter.application = parameters.text("application");
  filter.machine = parameters.text("machine");
  filter.version = parameters.text("version");
  filter.reportId = parameters.text("reportId");
  filter.answer = parameters.text("answer");
  if (filter.answer && *filter.answer != "error" && !parseAnswer(*filter.answer)) {
    throw InputFault("answer must be error or " + std::string(kAnswerWords));
  }
  filter.result = parameters.text("result");
  filter.pool = parameters.text("pool");
  filter.text = parameters.text("text");
  filter.test = parameters.flag("test");
  filter.read = parameters.flag("read");
  filter.since = parameters.timestamp("since");
  filter.until = parameters.timestamp("until");
  filter.before = parameters.whole("before", 1, std::numeric_limits<std::uint64_t>::max());
  if (filter.before) filter.before = std::min(*filter.before, kHighestNumber);
  return filter;
}

ReportFilter readFilterAlone(const Exchange& exchange) {
  return readFilter(QueryParameters(exchange.request, kFilterParameters));
}

void expectNoParameters(const Exchange& exchange) { QueryParameters(exchange.request, {}); }

void answerJson(Exchange& exchange, std::string json) {
  exchange.response.setBody(std::move(json) + "\n", kJsonType);
}

void answerNotFound(Exchange& exchange, const std::string& reason) {
  refuse(exchange, {status::kNotFound, reason});
}

/// Reads {"read":true}. Throws InputFault.
bool readMark(std::string_view body) {
  try {
    const Json value = parseJson(body, JsonDuplicates::LastCounts);
    if (value.isObject() && value.members().size() == 1) {
      const auto& [name, mark] = value.members().front();
      if (name == "read" && mark.isBoolean()) return mark.boolean();
    }
  } catch (const JsonError&) {
  }
  throw InputFault(R"(must be {"read": true} or {"read": false})");
}

using Clock = std::chrono::steady_clock;

constexpr const char* kEventType = "text/event-stream";
/// Makes a client wait a second before it reconnects.
constexpr const char* kGreeting = "retry: 1000\n\n";
constexpr const char* kChanged = "event: changed\ndata: {}\n\n";
constexpr const char* kHeartbeat = ": still here\n\n";
constexpr milliseconds kHeartbeatPause{5'000};
/// How many reports are read from the store at a time.
constexpr std::size_t kEventPortion = 50;

std::string eventOf(const StoredReport& report) {
  std::string event = "id: ";
  event.append(std::to_string(report.number)).append("\nevent: report\ndata: ");
  return event.append(reportJson(report)).append("\n\n");
}

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
/// A comment every few seconds shows each side that the other is alive. The thread of each client
/// reads the reports from the store at the client's pace, so a slow client blocks no other client
/// and needs no queue.
class EventStream {
 public:
  EventStream(ReportStore& store, Connection& connection, std::uint64_t last)
      : _store(store), _connection(connection), _last(last), _changes(store.arrivals().changes()) {}

  /// Writes the next events, or waits for them; false at the end. A client comes back by itself
  /// when the store could not be read.
  bool goOn(const HttpResponse::Write& write) try {
    if (!_begun) {
      _begun = true;
      return write(kGreeting);
    }
    const auto heartbeat = Clock::now() + kHeartbeatPause;
    while (!_store.arrivals().waitForNews(_last, _changes, kWaitSlice)) {
      if (_connection.isLeftWithin(milliseconds::zero())) {
        _connection.endSilently();
        return false;
      }
      if (Clock::now() >= heartbeat) return write(kHeartbeat);
    }
    // Read before the reports, so that no change of a report is missed that is sent below.
    const std::uint64_t changes = _store.arrivals().changes();
    if (changes > _changes) {
      _changes = changes;
      if (!write(kChanged)) return false;
    }
    const std::uint64_t newest = _store.arrivals().lastNumber();
    const auto reports = _store.listAfter(_last, kEventPortion);
    for (const StoredReport& report : reports) {
      if (!write(eventOf(report))) return false;
      _last = report.number;
    }
    // Deleted reports count as sent.
    if (reports.size() < kEventPortion) _last = std::max(_last, newest);
    return !_connection.isLeftWithin(milliseconds::zero());
  } catch (const StoreFault&) {
    return false;
  }

 private:
  ReportStore& _store;
  Connection& _connection;
  std::uint64_t _last;
  std::uint64_t _changes;
  bool _begun = false;
};

/// Sends the events of the reports with higher numbers than `after`, until the client disconnects
/// or the connection is ended. Without `after`, or with a number that no report has reached, only
/// future reports are sent.
void respondWithEvents(Exchange& exchange, ReportStore& store, std::optional<std::uint64_t> after) {
  const std::uint64_t newest = store.arrivals().lastNumber();
  const auto stream = std::make_shared<EventStream>(store, exchange.connection,
                                                    std::min(after.value_or(newest), newest));
  exchange.response.type = kEventType;
  exchange.response.stream = [stream](const HttpResponse::Write& write) {
    return stream->goOn(write);
  };
}

}  // namespace

bool Api::owns(std::string_view path) { return path == "/api" || path.starts_with("/api/"); }

bool Api::waits(std::string_view path) {
  return path == "/api/v1/events" || path == "/api/v1/wait";
}

void Api::respond(Exchange& exchange) {
  exchange.response.headers.emplace_back("Cache-Control", "no-store");
  std::string_view path = exchange.request.path;
  path.remove_prefix(path.starts_with(kRoot) ? kRoot.size() : path.size());
  try {
    if (exchange.request.body.size() > kLargestBody) {
      return refuse(exchange, {status::kTooLarge, "request to the API over 1 MiB"});
    };
    dispatch(exchange, path);
  } catch (const InputFault& fault) {
    refuse(exchange, {status::kBadRequest, fault.what()});
  }
}

void Api::dispatch(Exchange& exchange, std::string_view path) {
  constexpr std::string_view kReports = "reports/";
  if (path == "reports") return reports(exchange);
  if (path == "reports/read") return markAll(exchange);
  if (path == "events") return streamEvents(exchange);
  if (path == "wait") return wait(exchange);
  if (path == "stats") return showStatistics(exchange);
  if (path == "behaviour") return behaviour(exchange);
  if (path == "openapi.json") {
    if (!exchange.request.isRead()) return refuseMethod(exchange, "GET, HEAD");
    return answerJson(exchange, std::string(kOpenApi));
  }
  if (path.starts_with(kReports)) return oneReport(exchange, path.substr(kReports.size()));
  answerNotFound(exchange, "no such address");
}

void Api::reports(Exchange& exchange) {
  if (exchange.request.method == "DELETE") {
    const ReportFilter filter = readFilterAlone(exchange);
    const bool isForAll = filter == ReportFilter();
    return answerJson(exchange,
                      countJson("deleted", isForAll ? _store.clear() : _store.remove(filter)));
  }
  if (!exchange.request.isRead()) return refuseMethod(exchange, "GET, HEAD, DELETE");
  const QueryParameters parameters(exchange.request, kListParameters);
  const auto limit = parameters.whole("limit", 1, kMostListed).value_or(kUsuallyListed);
  answerJson(exchange, reportListJson(_store.list(readFilter(parameters), limit)));
}

void Api::oneReport(Exchange& exchange, std::string_view path) {
  const std::size_t slash = std::min(path.find('/'), path.size());
  const std::string_view part = path.substr(slash);
  const auto given = parseNumber<std::uint64_t>(path.substr(0, slash));
  const std::uint64_t number = given && *given <= kHighestNumber ? *given : 0;  // 0: no report
  const std::string& method = exchange.request.method;
  if (!part.empty() && part != "/raw" && part != "/read") {
    return answerNotFound(exchange, "no such address");
  }
  expectNoParameters(exchange);
  if (part == "/read") {
    if (method != "PUT") return refuseMethod(exchange, "PUT");
    return markOne(exchange, number);
  }
  if (part == "/raw") {
    if (!exchange.request.isRead()) return refuseMethod(exchange, "GET, HEAD");
    return showRaw(exchange, number);
  }
  if (method == "DELETE") return removeReport(exchange, number);
  if (!exchange.request.isRead()) return refuseMethod(exchange, "GET, HEAD, DELETE");
  showReport(exchange, number);
}

void Api::showReport(Exchange& exchange, std::uint64_t number) {
  const auto report = _store.find(number);
  const auto bytes = report ? _store.bytes(number) : std::nullopt;
  if (!bytes) return answerNotFound(exchange, kNoSuchReport);
  std::vector<std::uint64_t> sameId;
  if (report->identity.reportId) {
    sameId = _store.withReportId(*report->identity.reportId, kMostOfSameId + 1);
  }
  std::erase(sameId, number);
  if (sameId.size() > kMostOfSameId) sameId.pop_back();
  answerJson(exchange, reportDetailsJson(*report, *bytes, sameId));
}

void Api::removeReport(Exchange& exchange, std::uint64_t number) {
  if (!_store.remove(number)) return answerNotFound(exchange, kNoSuchReport);
  answerJson(exchange, countJson("deleted", 1));
}

void Api::showRaw(Exchange& exchange, std::uint64_t number) {
  auto bytes = _store.bytes(number);
  if (!bytes) return answerNotFound(exchange, kNoSuchReport);
  exchange.response.setBody(std::move(bytes->body), kTextType);
}

void Api::markOne(Exchange& exchange, std::uint64_t number) {
  const bool read = readMark(exchange.request.body);
  if (!_store.setRead(number, read)) return answerNotFound(exchange, kNoSuchReport);
  answerJson(exchange, countJson("changed", 1));
}

void Api::markAll(Exchange& exchange) {
  if (exchange.request.method != "PUT") return refuseMethod(exchange, "PUT");
  const ReportFilter filter = readFilterAlone(exchange);
  const bool read = readMark(exchange.request.body);
  answerJson(exchange, countJson("changed", _store.setRead(filter, read)));
}

void Api::streamEvents(Exchange& exchange) {
  if (!exchange.request.isRead()) return refuseMethod(exchange, "GET, HEAD");
  const QueryParameters parameters(exchange.request, {"after"});
  auto after = parameters.whole("after", 0, std::numeric_limits<std::uint64_t>::max());
  if (const auto last = exchange.request.header("last-event-id"); !last.empty()) {
    after = parseNumber<std::uint64_t>(last.front());
    if (!after) throw InputFault("Last-Event-ID must be the number of a report");
  }
  respondWithEvents(exchange, _store, after);
}

void Api::wait(Exchange& exchange) {
  if (!exchange.request.isRead()) return refuseMethod(exchange, "GET, HEAD");
  const QueryParameters parameters(exchange.request, {"count", "after", "timeout"});
  const auto count =
      std::min(parameters.whole("count", 0, std::numeric_limits<std::uint64_t>::max()).value_or(1),
               kHighestNumber);
  const auto after = parameters.whole("after", 0, kHighestNumber);
  const double seconds =
      parameters.seconds("timeout", kLongestWaitSeconds).value_or(kDefaultWaitSeconds);
  const auto end = std::chrono::steady_clock::now() +
                   std::chrono::duration_cast<milliseconds>(std::chrono::duration<double>(seconds));
  const Arrivals& arrivals = _store.arrivals();
  const auto arrived = [&] {
    if (!after) return arrivals.count();
    return arrivals.lastNumber() - std::min(*after, arrivals.lastNumber());
  };
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(end - std::chrono::steady_clock::now());
    const auto slice = std::clamp(left, milliseconds::zero(), kWaitSlice);
    if (after ? arrivals.waitForNumber(*after + count, slice)
              : arrivals.waitForCount(count, slice)) {
      break;
    }
    if (left <= milliseconds::zero()) {
      return refuse(exchange,
                    {status::kTimedOut, "timed out: " + std::to_string(arrived()) + " arrived"});
    };
    if (exchange.connection.isLeftWithin(milliseconds::zero())) {
      return exchange.connection.endSilently();
    }
  }
  answerJson(exchange, countJson("count", arrived()));
}

void Api::showStatistics(Exchange& exchange) {
  if (!exchange.request.isRead()) return refuseMethod(exchange, "GET, HEAD");
  const ReportFilter filter = readFilterAlone(exchange);
  answerJson(exchange, statisticsJson(_store.statistics(filter), _store.arrivals().count()));
}

void Api::behaviour(Exchange& exchange) {
  expectNoParameters(exchange);
  if (exchange.request.method == "PUT") {
    _behaviour.change(readBehaviourChange(exchange.request.body));
  } else if (!exchange.request.isRead()) {
    return refuseMethod(exchange, "GET, HEAD, PUT");
  }
  answerJson(exchange, behaviourJson(_behaviour.settings()));
}

}  // namespace zt::inbox
