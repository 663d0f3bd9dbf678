#include "tools/inbox/ReportJson.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>

namespace zt::inbox {

namespace {

using nlohmann::json;

std::string written(const json& value) {
  return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

template <class T>
json orNull(const std::optional<T>& value) {
  return value ? json(*value) : json(nullptr);
}

/// ISO 8601 in UTC with milliseconds.
std::string timeText(std::chrono::system_clock::time_point moment) {
  const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(moment);
  const auto seconds = std::chrono::floor<std::chrono::seconds>(milliseconds);
  const std::time_t time = std::chrono::system_clock::to_time_t(seconds);
  std::tm utc{};
  gmtime_r(&time, &utc);
  std::array<char, 32> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &utc);
  std::array<char, 8> fraction{};
  std::snprintf(fraction.data(), fraction.size(), ".%03dZ",
                static_cast<int>((milliseconds - seconds).count()));
  return std::string(text.data(), length) + fraction.data();
}

json reportValue(const Report& report) {
  const ReportIdentity& identity = report.identity;
  return {{"number", report.number},
          {"received", timeText(report.received)},
          {"size", report.body.size()},
          {"test", report.test},
          {"answer", outcome(report.answer)},
          {"reportId", orNull(identity.reportId)},
          {"machineId", orNull(identity.machineId)},
          {"customerId", orNull(identity.customerId)},
          {"applicationId", orNull(identity.applicationId)},
          {"applicationVersion", orNull(identity.applicationVersion)},
          {"pools", identity.pools},
          {"duplicateOf", orNull(report.duplicateOf)}};
}

}  // namespace

std::string reportJson(const Report& report) { return written(reportValue(report)); }

std::string reportListJson(const std::vector<std::shared_ptr<const Report>>& reports) {
  json list = json::array();
  for (const auto& report : reports) list.push_back(reportValue(*report));
  return written(list);
}

std::string errorJson(std::string_view reason) { return written(json{{"error", reason}}); }

std::string countJson(const char* name, std::uint64_t count) {
  return written(json{{name, count}});
}

}  // namespace zt::inbox
