#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "tools/inbox/Blanks.h"
#include "tools/inbox/JsonText.h"
#include "tools/inbox/ReportJson.h"
#include "tools/inbox/ReportRun.h"
#include "tools/inbox/ReportText.h"

namespace zt::inbox {

namespace {

using nlohmann::json;

// The details of one report are for a person to look at; its bytes are there for the rest.
constexpr std::size_t kLongestShown = std::size_t{64} * 1024;
constexpr std::size_t kMostShown = std::size_t{8} * 1024 * 1024;
constexpr std::size_t kMostFieldsShown = 20'000;

/// Turns the pools of a report into JSON until enough is shown.
class Details {
 public:
  explicit Details(const ReportText& text) : _text(text), _complete(text.complete) {}

  json pools() {
    json list = json::array();
    for (const ReportPool& pool : _text.pools) {
      if (isFull()) break;
      list.push_back(poolValue(pool));
    }
    return list;
  }
  /// After pools().
  bool isComplete() const { return _complete; }

 private:
  using Fields = std::vector<ReportField>;

  json poolValue(const ReportPool& pool) {
    ++_count;
    json value{{"type", shown(pool.type)}, {"date", shown(pool.date)}};
    auto field = pool.fields.begin();
    value["fields"] = fieldList(field, pool.fields.end(), 0, 0);
    if (const auto run = readRun(pool)) {
      value["result"] = run->result ? json(*run->result) : json(nullptr);
      value["duration"] = orNull(run->duration);
      value["steps"] = stepList(run->steps);
    }
    return value;
  }

  /// The fields of one group; leaves `field` behind them.
  json fieldList(Fields::const_iterator& field, Fields::const_iterator end, std::size_t depth,
                 std::size_t group) {
    json list = json::array();
    while (field != end && field->depth == depth && field->group == group && !isFull()) {
      list.push_back(fieldValue(field, end));
    }
    return list;
  }

  json fieldValue(Fields::const_iterator& field, Fields::const_iterator end) {
    const ReportField& here = *field++;
    ++_count;
    json value{{"name", shown(here.name)}, {"type", shown(here.type)}};
    if (!here.isArray()) {
      value["value"] = shown(here.value);
      if (here.value.size() > kLongestShown) value["size"] = here.value.size();
      return value;
    }
    json groups = json::array();
    while (field != end && field->depth > here.depth && !isFull()) {
      groups.push_back(fieldList(field, end, field->depth, field->group));
    }
    value["groups"] = std::move(groups);
    return value;
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

  const ReportText& _text;
  bool _complete;
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
  const ReportText text = readReportText(bytes.body);
  Details details(text);
  value["content"] = details.pools();
  value["complete"] = details.isComplete();
  return jsonText(value);
}

}  // namespace zt::inbox
