#include "tools/ztinbox/api/Api.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <optional>
#include <string>

#include "tools/ztinbox/api/ApiAnswers.h"
#include "tools/ztinbox/api/OpenApi.h"
#include "tools/ztinbox/api/ReportJson.h"
#include "tools/ztinbox/faults/BehaviourJson.h"
#include "tools/ztinbox/faults/Fault.h"
#include "tools/ztinbox/http/EventStream.h"
#include "tools/ztinbox/http/QueryParameters.h"
#include "tools/ztinbox/soap/SoapAnswers.h"

namespace zt::inbox {

namespace {

using std::chrono::milliseconds;

constexpr std::string_view kRoot = "/api/v1/";
constexpr std::size_t kLargestBody = std::size_t{1024} * 1024;
constexpr std::uint64_t kUsuallyListed = 100;
constexpr std::uint64_t kMostListed = 1'000;
constexpr std::size_t kMostOfSameId = 100;
constexpr double kDefaultWaitSeconds = 10;
constexpr double kLongestWaitSeconds = 3'600;
/// How soon a waiting request notices that its client left.
constexpr milliseconds kWaitSlice{100};

// The database's numbers have 63 bits.
constexpr auto kHighestNumber =
    static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());

ReportFilter readFilter(const QueryParameters& parameters) {
  ReportFilter filter;
  filter.customer = parameters.text("customer");
  filter.application = parameters.text("application");
  filter.machine = parameters.text("machine");
  filter.pool = parameters.text("pool");
  filter.text = parameters.text("text");
  filter.test = parameters.flag("test");
  filter.read = parameters.flag("read");
  filter.since = parameters.moment("since");
  filter.until = parameters.moment("until");
  filter.before = parameters.whole("before", 1, std::numeric_limits<std::uint64_t>::max());
  if (filter.before) filter.before = std::min(*filter.before, kHighestNumber);
  return filter;
}

bool isEmpty(const ReportFilter& filter) {
  return !filter.customer && !filter.application && !filter.machine && !filter.pool &&
         !filter.text && !filter.test && !filter.read && !filter.since && !filter.until &&
         !filter.before;
}

ReportFilter readFilterAlone(const Exchange& exchange) {
  return readFilter(
      QueryParameters(exchange.request, {"customer", "application", "machine", "pool", "text",
                                         "test", "read", "since", "until", "before"}));
}

void expectNoParameters(const Exchange& exchange) { QueryParameters(exchange.request, {}); }

}  // namespace

bool Api::owns(std::string_view path) { return path == "/api" || path.starts_with("/api/"); }

void Api::answer(Exchange& exchange) {
  exchange.response.set_header("Cache-Control", "no-store");
  std::string_view path = exchange.path;
  path.remove_prefix(path.starts_with(kRoot) ? kRoot.size() : path.size());
  try {
    if (exchange.request.body.size() > kLargestBody) return answerTooLarge(exchange);
    dispatch(exchange, path);
  } catch (const InputFault& fault) {
    answerBadRequest(exchange, fault.what());
  }
}

void Api::dispatch(Exchange& exchange, std::string_view path) {
  constexpr std::string_view kReports = "reports/";
  if (path == "reports") return answerReports(exchange);
  if (path == "reports/read") return markAll(exchange);
  if (path == "events") return answerEvents(exchange);
  if (path == "wait") return answerWait(exchange);
  if (path == "stats") return answerStatistics(exchange);
  if (path == "behaviour") return answerBehaviour(exchange);
  if (path == "openapi.json") {
    if (!reads(exchange)) return answerNotAllowed(exchange, "GET, HEAD");
    return answerJson(exchange, std::string(kOpenApi));
  }
  if (path.starts_with(kReports)) return answerReport(exchange, path.substr(kReports.size()));
  answerNotFound(exchange, "no such address");
}

void Api::answerReports(Exchange& exchange) {
  if (exchange.request.method == "DELETE") {
    const ReportFilter filter = readFilterAlone(exchange);
    return answerJson(
        exchange, countJson("deleted", isEmpty(filter) ? _store.clear() : _store.remove(filter)));
  }
  if (!reads(exchange)) return answerNotAllowed(exchange, "GET, HEAD, DELETE");
  const QueryParameters parameters(
      exchange.request, {"customer", "application", "machine", "pool", "text", "test", "read",
                         "since", "until", "before", "limit"});
  const auto limit = parameters.whole("limit", 1, kMostListed).value_or(kUsuallyListed);
  answerJson(exchange, reportListJson(_store.list(readFilter(parameters), limit)));
}

void Api::answerReport(Exchange& exchange, std::string_view path) {
  const std::size_t slash = std::min(path.find('/'), path.size());
  const std::string_view part = path.substr(slash);
  const std::uint64_t number = parseWhole(path.substr(0, slash)).value_or(0);
  const std::string& method = exchange.request.method;
  if (!part.empty() && part != "/raw" && part != "/read") {
    return answerNotFound(exchange, "no such address");
  }
  expectNoParameters(exchange);
  if (part == "/read") {
    if (method != "PUT") return answerNotAllowed(exchange, "PUT");
    return markOne(exchange, number);
  }
  if (part == "/raw") {
    if (!reads(exchange)) return answerNotAllowed(exchange, "GET, HEAD");
    return answerRaw(exchange, number);
  }
  if (method == "DELETE") return removeReport(exchange, number);
  if (!reads(exchange)) return answerNotAllowed(exchange, "GET, HEAD, DELETE");
  showReport(exchange, number);
}

void Api::showReport(Exchange& exchange, std::uint64_t number) {
  const auto report = number <= kHighestNumber ? _store.find(number) : std::nullopt;
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
  if (number > kHighestNumber || !_store.remove(number)) {
    return answerNotFound(exchange, kNoSuchReport);
  }
  answerJson(exchange, countJson("deleted", 1));
}

void Api::answerRaw(Exchange& exchange, std::uint64_t number) {
  auto bytes = number <= kHighestNumber ? _store.bytes(number) : std::nullopt;
  if (!bytes) return answerNotFound(exchange, kNoSuchReport);
  exchange.response.body = std::move(bytes->body);
  exchange.response.set_header("Content-Type", kTextType);
}

void Api::markOne(Exchange& exchange, std::uint64_t number) {
  const bool read = readMark(exchange.request.body);
  if (number > kHighestNumber || !_store.setRead(number, read)) {
    return answerNotFound(exchange, kNoSuchReport);
  }
  answerJson(exchange, countJson("changed", 1));
}

void Api::markAll(Exchange& exchange) {
  if (exchange.request.method != "PUT") return answerNotAllowed(exchange, "PUT");
  const ReportFilter filter = readFilterAlone(exchange);
  const bool read = readMark(exchange.request.body);
  answerJson(exchange, countJson("changed", _store.setRead(filter, read)));
}

void Api::answerEvents(Exchange& exchange) {
  if (!reads(exchange)) return answerNotAllowed(exchange, "GET, HEAD");
  const QueryParameters parameters(exchange.request, {"after"});
  auto after = parameters.whole("after", 0, std::numeric_limits<std::uint64_t>::max());
  if (exchange.request.has_header("Last-Event-ID")) {
    after = parseWhole(exchange.request.get_header_value("Last-Event-ID"));
    if (!after) throw InputFault("Last-Event-ID must be the number of a report");
  }
  EventStream::answer(exchange, _store, after);
}

void Api::answerWait(Exchange& exchange) {
  if (!reads(exchange)) return answerNotAllowed(exchange, "GET, HEAD");
  const QueryParameters parameters(exchange.request, {"count", "timeout"});
  const auto count =
      parameters.whole("count", 0, std::numeric_limits<std::uint64_t>::max()).value_or(1);
  const double seconds =
      parameters.seconds("timeout", kLongestWaitSeconds).value_or(kDefaultWaitSeconds);
  const auto end = std::chrono::steady_clock::now() +
                   std::chrono::duration_cast<milliseconds>(std::chrono::duration<double>(seconds));
  const Arrivals& arrivals = _store.arrivals();
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(end - std::chrono::steady_clock::now());
    const auto slice = std::clamp(left, milliseconds::zero(), kWaitSlice);
    if (arrivals.waitForCount(count, slice)) break;
    if (left <= milliseconds::zero()) return answerTimedOut(exchange, arrivals.count());
    if (exchange.connection.isLeftWithin(milliseconds::zero())) {
      return exchange.connection.endSilently();
    }
  }
  answerJson(exchange, countJson("count", arrivals.count()));
}

void Api::answerStatistics(Exchange& exchange) {
  if (!reads(exchange)) return answerNotAllowed(exchange, "GET, HEAD");
  const ReportFilter filter = readFilterAlone(exchange);
  answerJson(exchange, statisticsJson(_store.statistics(filter), _store.arrivals().count()));
}

void Api::answerBehaviour(Exchange& exchange) {
  expectNoParameters(exchange);
  if (exchange.request.method == "PUT") {
    _behaviour.change(readBehaviourChange(exchange.request.body));
  } else if (!reads(exchange)) {
    return answerNotAllowed(exchange, "GET, HEAD, PUT");
  }
  answerJson(exchange, behaviourJson(_behaviour.settings()));
}

}  // namespace zt::inbox
