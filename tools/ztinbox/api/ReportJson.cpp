#include "tools/ztinbox/api/ReportJson.h"

#include <nlohmann/json.hpp>

#include "tools/ztinbox/api/JsonText.h"
#include "tools/ztinbox/api/Moment.h"

namespace zt::inbox {

using nlohmann::json;

std::string reportJson(const Report& report) { return jsonText(reportValue(report)); }

std::string reportListJson(const std::vector<Report>& reports) {
  json list = json::array();
  for (const Report& report : reports) list.push_back(reportValue(report));
  return jsonText(list);
}

std::string statisticsJson(const Statistics& statistics, std::uint64_t arrivals) {
  json minutes = json::array();
  for (const auto& minute : statistics.minutes) {
    minutes.push_back({{"minute", momentText(minute.begin)},
                       {"accepted", minute.accepted},
                       {"refused", minute.refused},
                       {"failed", minute.failed}});
  }
  json results = json::array();
  for (const auto& result : statistics.results) {
    results.push_back({{"result", result.result}, {"count", result.count}});
  }
  json steps = json::array();
  for (const auto& step : statistics.steps) {
    steps.push_back({{"name", step.name},
                     {"count", step.count},
                     {"shortest", step.shortest.count()},
                     {"mean", step.mean.count()},
                     {"longest", step.longest.count()}});
  }
  return jsonText({{"arrivals", arrivals},
                   {"reports", statistics.reports},
                   {"bytes", statistics.bytes},
                   {"unread", statistics.unread},
                   {"tests", statistics.tests},
                   {"minutes", std::move(minutes)},
                   {"results", std::move(results)},
                   {"steps", std::move(steps)}});
}

std::string errorJson(std::string_view reason) { return jsonText(json{{"error", reason}}); }

std::string countJson(const char* name, std::uint64_t count) {
  return jsonText(json{{name, count}});
}

}  // namespace zt::inbox
