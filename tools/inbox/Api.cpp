#include "tools/inbox/Api.h"

#include <charconv>
#include <optional>
#include <string>

#include "tools/inbox/BehaviourJson.h"
#include "tools/inbox/Fault.h"
#include "tools/inbox/ReportJson.h"
#include "tools/inbox/SoapAnswers.h"

namespace zt::inbox {

namespace {

using std::chrono::milliseconds;

constexpr int kBadRequest = 400;
constexpr int kNotFound = 404;
constexpr int kNotAllowed = 405;
constexpr int kTimedOut = 408;

constexpr std::string_view kRoot = "/api/v1/";
constexpr std::uint64_t kMostListed = 1'000;
constexpr double kDefaultWaitSeconds = 10;
constexpr double kLongestWaitSeconds = 3'600;
/// How soon a waiting request notices that its client left.
constexpr milliseconds kWaitSlice{100};

template <class Number>
std::optional<Number> parseNumber(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

/// A parameter of the query in its limits. Throws InputFault.
template <class Number>
Number parameter(const Exchange& exchange, const char* name, Number otherwise, Number least,
                 Number most, const std::string& rule) {
  if (!exchange.request.has_param(name)) return otherwise;
  const auto number = parseNumber<Number>(exchange.request.get_param_value(name));
  // Written so that a NaN does not pass.
  if (number && *number >= least && *number <= most) return *number;
  throw InputFault(std::string(name) + " must be " + rule);
}

void answerJson(Exchange& exchange, const std::string& json) {
  exchange.response.set_content(json + "\n", "application/json");
}

void answerFault(Exchange& exchange, int status, const std::string& reason) {
  refuse(exchange.response, exchange.path, {status, reason});
}

void answerNotAllowed(Exchange& exchange, const char* allowed) {
  exchange.response.set_header("Allow", allowed);
  answerFault(exchange, kNotAllowed, "method not allowed: " + exchange.request.method);
}

bool reads(const Exchange& exchange) {
  return exchange.request.method == "GET" || exchange.request.method == "HEAD";
}

}  // namespace

bool Api::owns(std::string_view path) { return path == "/api" || path.starts_with("/api/"); }

void Api::answer(Exchange& exchange) {
  exchange.response.set_header("X-Content-Type-Options", "nosniff");
  exchange.response.set_header("Cache-Control", "no-store");
  std::string_view path = exchange.path;
  path.remove_prefix(path.starts_with(kRoot) ? kRoot.size() : path.size());
  constexpr std::string_view kReports = "reports/";
  constexpr std::string_view kRaw = "/raw";
  try {
    if (path == "reports") return answerReports(exchange);
    if (path == "wait") return answerWait(exchange);
    if (path == "behaviour") return answerBehaviour(exchange);
    if (path.starts_with(kReports)) {
      path.remove_prefix(kReports.size());
      const bool raw = path.ends_with(kRaw);
      if (raw) path.remove_suffix(kRaw.size());
      return answerReport(exchange, path, raw);
    }
    answerFault(exchange, kNotFound, "no such address");
  } catch (const InputFault& fault) {
    answerFault(exchange, kBadRequest, fault.what());
  }
}

void Api::answerReports(Exchange& exchange) {
  if (exchange.request.method == "DELETE") {
    return answerJson(exchange, countJson("deleted", _store.clear()));
  }
  if (!reads(exchange)) return answerNotAllowed(exchange, "GET, HEAD, DELETE");
  constexpr auto kHighest = std::numeric_limits<std::uint64_t>::max();
  ReportQuery query;
  query.limit = parameter<std::uint64_t>(exchange, "limit", query.limit, 1, kMostListed,
                                         "a whole number from 1 to 1000");
  query.before = parameter<std::uint64_t>(exchange, "before", query.before, 1, kHighest,
                                          "a whole number from 1");
  if (exchange.request.has_param("customer")) {
    query.customer = exchange.request.get_param_value("customer");
  }
  answerJson(exchange, reportListJson(_store.list(query)));
}

void Api::answerReport(Exchange& exchange, std::string_view text, bool raw) {
  const bool deletes = exchange.request.method == "DELETE" && !raw;
  if (!deletes && !reads(exchange)) {
    return answerNotAllowed(exchange, raw ? "GET, HEAD" : "GET, HEAD, DELETE");
  }
  const auto number = parseNumber<std::uint64_t>(text).value_or(0);
  if (deletes && _store.remove(number)) return answerJson(exchange, countJson("deleted", 1));
  const auto report = deletes ? nullptr : _store.find(number);
  if (!report) return answerFault(exchange, kNotFound, "no such report");
  if (!raw) return answerJson(exchange, reportJson(*report));
  exchange.response.set_content(report->body, kTextType);
}

void Api::answerWait(Exchange& exchange) {
  if (!reads(exchange)) return answerNotAllowed(exchange, "GET, HEAD");
  constexpr auto kHighest = std::numeric_limits<std::uint64_t>::max();
  const auto count =
      parameter<std::uint64_t>(exchange, "count", 1, 0, kHighest, "a whole number from 0");
  const auto seconds = parameter<double>(exchange, "timeout", kDefaultWaitSeconds, 0,
                                         kLongestWaitSeconds, "a number of seconds from 0 to 3600");
  const auto end = std::chrono::steady_clock::now() +
                   std::chrono::duration_cast<milliseconds>(std::chrono::duration<double>(seconds));
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(end - std::chrono::steady_clock::now());
    const auto slice = std::clamp(left, milliseconds::zero(), kWaitSlice);
    if (_store.waitForArrivals(count, slice)) break;
    if (left <= milliseconds::zero()) {
      return answerFault(exchange, kTimedOut,
                         "timed out: " + std::to_string(_store.arrivals()) + " came in");
    }
    if (exchange.connection.isLeftWithin(milliseconds::zero())) {
      return exchange.connection.endSilently();
    }
  }
  answerJson(exchange, countJson("count", _store.arrivals()));
}

void Api::answerBehaviour(Exchange& exchange) {
  if (exchange.request.method == "PUT") {
    _behaviour.change(readBehaviourChange(exchange.request.body));
  } else if (!reads(exchange)) {
    return answerNotAllowed(exchange, "GET, HEAD, PUT");
  }
  answerJson(exchange, behaviourJson(_behaviour.settings()));
}

}  // namespace zt::inbox
