#include "tools/ztinbox/api/ApiAnswers.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "tools/ztinbox/faults/Fault.h"

namespace zt::inbox {

namespace {

constexpr int kBadRequest = 400;
constexpr int kNotFound = 404;
constexpr int kNotAllowed = 405;
constexpr int kTimedOut = 408;
constexpr int kTooLarge = 413;

void answerFault(Exchange& exchange, int status, const std::string& reason) {
  refuse(exchange.response, exchange.path, {status, reason});
}

}  // namespace

bool reads(const Exchange& exchange) {
  return exchange.request.method == "GET" || exchange.request.method == "HEAD";
}

void answerJson(Exchange& exchange, std::string json) {
  exchange.response.set_content(std::move(json) + "\n", "application/json");
}

void answerBadRequest(Exchange& exchange, const std::string& reason) {
  answerFault(exchange, kBadRequest, reason);
}

void answerNotFound(Exchange& exchange, const std::string& reason) {
  answerFault(exchange, kNotFound, reason);
}

void answerNotAllowed(Exchange& exchange, const char* allowed) {
  exchange.response.set_header("Allow", allowed);
  answerFault(exchange, kNotAllowed, "method not allowed: " + exchange.request.method);
}

void answerTimedOut(Exchange& exchange, std::uint64_t arrivals) {
  std::string reason = "timed out: ";
  answerFault(exchange, kTimedOut, reason.append(std::to_string(arrivals)).append(" came in"));
}

void answerTooLarge(Exchange& exchange) {
  answerFault(exchange, kTooLarge, "request to the API over 1 MiB");
}

bool readMark(std::string_view body) {
  const auto value = nlohmann::json::parse(body, nullptr, false);
  if (value.is_object() && value.size() == 1 && value.contains("read") &&
      value["read"].is_boolean()) {
    return value["read"].get<bool>();
  }
  throw InputFault(R"(must be {"read": true} or {"read": false})");
}

}  // namespace zt::inbox
