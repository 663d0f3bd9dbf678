// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/api/ReportJson.h"

#include <algorithm>
#include <utility>

#include "tools/common/ReportReader.h"
#include "tools/ztinbox/soap/ReportContent.h"
#include "ztportal/platform/json/Json.h"
#include "ztportal/platform/time/Rfc3339.h"

namespace zt::inbox {

namespace {

using reader::Field;
using reader::FieldRange;
using reader::FieldType;

Json durationJson(const std::optional<std::chrono::milliseconds>& duration) {
  return duration ? Json(duration->count()) : Json();
}

std::string timestamp(Timestamp time) {
  return formatRfc3339(std::chrono::floor<std::chrono::milliseconds>(time).time_since_epoch());
}

/// Everything about a report except its bytes.
Json valueOf(const StoredReport& report) {
  const ReportIdentity& identity = report.identity;
  Json pools = Json::array();
  for (const std::string& pool : identity.pools) pools.push_back(pool);
  return {{"answer", outcome(report.answer)},
          {"applicationId", identity.applicationId},
          {"applicationVersion", identity.applicationVersion},
          {"customerId", identity.customerId},
          {"duplicateOf", report.duplicateOf},
          {"duration", durationJson(report.duration)},
          {"machineId", identity.machineId},
          {"number", report.number},
          {"pools", std::move(pools)},
          {"read", report.read},
          {"received", timestamp(report.received)},
          {"reportId", identity.reportId},
          {"result", report.result},
          {"sender", report.sender},
          {"size", report.size},
          {"test", report.test}};
}

// Limits of the details, which are for people to read; the raw bytes have no limit.
constexpr std::size_t kLongestShown = std::size_t{64} * 1024;
constexpr std::size_t kMostShown = std::size_t{8} * 1024 * 1024;
constexpr std::size_t kMostFieldsShown = 20'000;
constexpr std::size_t kDeepestShown = 32;  // arrays in arrays

/// Turns the pools of a report into JSON, up to the limits.
class Details {
 public:
  explicit Details(const reader::ParsedReport& report) : _report(report) {}

  Json pools() {
    Json list = Json::array();
    for (const reader::Pool& pool : _report.pools) {
      if (isFull()) break;
      list.push_back(poolValue(pool));
    }
    return list;
  }
  /// Valid after pools().
  bool isComplete() const { return _complete; }

 private:
  Json poolValue(const reader::Pool& pool) {
    ++_count;
    Json value{{"type", shown(pool.type)}, {"date", shown(pool.date)}};
    value["fields"] = fieldList(_report.fieldsOf(pool), 0);
    if (const auto run = readRun(_report, pool)) {
      value["result"] = run->result;
      value["duration"] = durationJson(run->duration);
      value["steps"] = stepList(run->steps);
    }
    value.sortMembers();
    return value;
  }

  // NOLINTNEXTLINE(misc-no-recursion): goes no deeper than kDeepestShown.
  Json fieldList(const FieldRange& fields, std::size_t depth) {
    Json list = Json::array();
    for (const Field& field : fields) {
      if (isFull()) break;
      list.push_back(fieldValue(field, depth));
    }
    return list;
  }

  // NOLINTNEXTLINE(misc-no-recursion)
  Json fieldValue(const Field& field, std::size_t depth) {
    ++_count;
    Json value{{"name", shown(field.name)}, {"type", typeName(field.type)}};
    if (field.type == FieldType::Array || field.type == FieldType::Records) {
      value["groups"] = groupList(field, depth + 1);
    } else {
      value["value"] = shown(field.value);
      if (field.value.size() > kLongestShown) value["size"] = field.value.size();
    }
    value.sortMembers();
    return value;
  }

  /// The fields of an array are one group; in a list of records, each record is one.
  // NOLINTNEXTLINE(misc-no-recursion)
  Json groupList(const Field& array, std::size_t depth) {
    Json groups = Json::array();
    const FieldRange fields = fieldsOf(array);
    if (fields.empty()) return groups;
    if (depth > kDeepestShown) {
      _complete = false;
    } else if (array.type == FieldType::Array) {
      groups.push_back(fieldList(fields, depth));
    } else {
      for (const Field& record : fields) {
        if (isFull()) break;
        groups.push_back(fieldList(fieldsOf(record), depth));
      }
    }
    return groups;
  }

  static std::string_view typeName(FieldType type) {
    switch (type) {
      case FieldType::String:
        return "string";
      case FieldType::Integer:
        return "integer";
      case FieldType::Float:
        return "float";
      case FieldType::Boolean:
        return "boolean";
      case FieldType::Array:
      case FieldType::Records:
        return "array";
      default:
        return "none";
    }
  }

  Json stepList(const std::vector<RunStep>& steps) {
    Json list = Json::array();
    for (const RunStep& step : steps) {
      if (isFull()) break;
      ++_count;
      Json value{{"name", shown(step.name)},
                 {"type", shown(step.type)},
                 {"message", shown(step.message)},
                 {"code", shown(step.code)},
                 {"failed", step.failed},
                 {"offset", durationJson(step.offset)},
                 {"duration", durationJson(step.duration)}};
      value.sortMembers();
      list.push_back(std::move(value));
    }
    return list;
  }

  std::string shown(std::string_view text) {
    const std::string_view part = text.substr(0, kLongestShown);
    _shown += part.size();
    if (part.size() < text.size()) _complete = false;
    return std::string(part);
  }

  bool isFull() {
    const bool full = _shown > kMostShown || _count > kMostFieldsShown;
    if (full) _complete = false;
    return full;
  }

  const reader::ParsedReport& _report;
  bool _complete = true;
  std::size_t _shown = 0;
  std::size_t _count = 0;
};

std::string_view withoutBlanks(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  return text.substr(0, text.find_last_not_of(" \t") + 1);
}

/// Splits a request's head (RFC 9112) into its first line and its headers.
void addHead(std::string_view head, Json& value) {
  Json headers = Json::array();
  bool first = true;
  while (!head.empty()) {
    const std::size_t end = std::min(head.find("\r\n"), head.size());
    const std::string_view line = head.substr(0, end);
    head.remove_prefix(std::min(end + 2, head.size()));
    if (line.empty()) continue;
    if (std::exchange(first, false)) {
      value["request"] = line;
      continue;
    }
    const std::size_t colon = std::min(line.find(':'), line.size());
    headers.push_back({{"name", line.substr(0, colon)},
                       {"value", withoutBlanks(line.substr(std::min(colon + 1, line.size())))}});
  }
  value["headers"] = std::move(headers);
}

}  // namespace

std::string reportJson(const StoredReport& report) { return valueOf(report).text(); }

std::string reportListJson(const std::vector<StoredReport>& reports) {
  Json list = Json::array();
  for (const StoredReport& report : reports) list.push_back(valueOf(report));
  return list.text();
}

std::string statisticsJson(const Statistics& statistics, std::uint64_t arrivals) {
  Json minutes = Json::array();
  for (const auto& minute : statistics.minutes) {
    minutes.push_back({{"accepted", minute.accepted},
                       {"failed", minute.failed},
                       {"minute", timestamp(minute.begin)},
                       {"refused", minute.refused}});
  }
  Json results = Json::array();
  for (const auto& result : statistics.results) {
    results.push_back({{"count", result.count}, {"result", result.result}});
  }
  Json steps = Json::array();
  for (const auto& step : statistics.steps) {
    steps.push_back({{"count", step.count},
                     {"longest", step.longest.count()},
                     {"mean", step.mean.count()},
                     {"name", step.name},
                     {"shortest", step.shortest.count()}});
  }
  return Json{{"arrivals", arrivals},          {"bytes", statistics.bytes},
              {"minutes", std::move(minutes)}, {"reports", statistics.reports},
              {"results", std::move(results)}, {"steps", std::move(steps)},
              {"tests", statistics.tests},     {"unread", statistics.unread}}
      .text();
}

std::string countJson(const char* name, std::uint64_t count) { return Json{{name, count}}.text(); }

std::string reportDetailsJson(const StoredReport& report, const ReportBytes& bytes,
                              const std::vector<std::uint64_t>& sameId) {
  Json value = valueOf(report);
  value["sameId"] = Json::array({sameId.begin(), sameId.end()});
  value["request"] = "";
  addHead(bytes.head, value);
  const auto [content, fault] = reader::readReportUpToFault(bytes.body);
  Details details(content);
  value["content"] = details.pools();
  value["complete"] = details.isComplete();
  value["fault"] = fault ? Json(fault->what()) : Json();
  value.sortMembers();
  return value.text();
}

}  // namespace zt::inbox
