#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "tools/common/ReportReader.h"
#include "tools/ztinbox/api/JsonText.h"
#include "tools/ztinbox/api/ReportJson.h"
#include "tools/ztinbox/http/Blanks.h"
#include "tools/ztinbox/soap/ReportRun.h"

namespace zt::inbox {

namespace {

using nlohmann::json;
using reader::Field;
using reader::FieldRange;
using reader::FieldType;

// The details of one report are for a person to look at; its bytes are there for the rest.
constexpr std::size_t kLongestShown = std::size_t{64} * 1024;
constexpr std::size_t kMostShown = std::size_t{8} * 1024 * 1024;
constexpr std::size_t kMostFieldsShown = 20'000;
constexpr std::size_t kDeepestShown = 32;  // arrays in arrays

/// Turns the pools of a report into JSON until enough is shown.
class Details {
 public:
  explicit Details(const reader::ParsedReport& report) : _report(report) {}

  json pools() {
    json list = json::array();
    for (const reader::Pool& pool : _report.pools) {
      if (isFull()) break;
      list.push_back(poolValue(pool));
    }
    return list;
  }
  /// After pools().
  bool isComplete() const { return _complete; }

 private:
  json poolValue(const reader::Pool& pool) {
    ++_count;
    json value{{"type", shown(pool.type)}, {"date", shown(pool.date)}};
    value["fields"] = fieldList(_report.fieldsOf(pool), 0);
    if (const auto run = readRun(_report, pool)) {
      value["result"] = run->result ? json(*run->result) : json(nullptr);
      value["duration"] = orNull(run->duration);
      value["steps"] = stepList(run->steps);
    }
    return value;
  }

  // NOLINTNEXTLINE(misc-no-recursion): goes no deeper than kDeepestShown.
  json fieldList(const FieldRange& fields, std::size_t depth) {
    json list = json::array();
    for (const Field& field : fields) {
      if (isFull()) break;
      list.push_back(fieldValue(field, depth));
    }
    return list;
  }

  // NOLINTNEXTLINE(misc-no-recursion)
  json fieldValue(const Field& field, std::size_t depth) {
    ++_count;
    json value{{"name", shown(field.name)}, {"type", typeName(field.type)}};
    if (field.type == FieldType::Array || field.type == FieldType::Records) {
      value["groups"] = groupList(field, depth + 1);
    } else {
      value["value"] = shown(field.value);
      if (field.value.size() > kLongestShown) value["size"] = field.value.size();
    }
    return value;
  }

  /// What is in an array is one group, each record of a list of them is one.
  // NOLINTNEXTLINE(misc-no-recursion)
  json groupList(const Field& array, std::size_t depth) {
    json groups = json::array();
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

  json stepList(const std::vector<RunStep>& steps) {
    json list = json::array();
    for (const RunStep& step : steps) {
      if (isFull()) break;
      ++_count;
      list.push_back({{"name", shown(step.name)},
                      {"type", shown(step.type)},
                      {"message", shown(step.message)},
                      {"code", shown(step.code)},
                      {"failed", step.failed},
                      {"offset", orNull(step.offset)},
                      {"duration", orNull(step.duration)}});
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

std::string_view trimmed(std::string_view text) {
  text.remove_prefix(blanksBefore(text));
  return text.substr(0, text.find_last_not_of(" \t") + 1);
}

/// Splits a request's head (RFC 9112) into its first line and its headers.
void addHead(std::string_view head, json& value) {
  json headers = json::array();
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
                       {"value", trimmed(line.substr(std::min(colon + 1, line.size())))}});
  }
  value["headers"] = std::move(headers);
}

}  // namespace

std::string reportDetailsJson(const Report& report, const ReportBytes& bytes,
                              const std::vector<std::uint64_t>& sameId) {
  json value = reportValue(report);
  value["sameId"] = sameId;
  value["request"] = "";
  addHead(bytes.head, value);
  const auto [content, fault] = reader::readReportUpToFault(bytes.body);
  Details details(content);
  value["content"] = details.pools();
  value["complete"] = details.isComplete();
  value["fault"] = fault ? json(fault->what()) : json(nullptr);
  return jsonText(value);
}

}  // namespace zt::inbox
