#include "tools/ztinbox/api/JsonText.h"

#include <nlohmann/json.hpp>

#include "tools/ztinbox/api/Moment.h"

namespace zt::inbox {

using nlohmann::json;

std::string jsonText(const json& value) {
  return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

json orNull(const std::optional<std::string>& value) {
  return value ? json(*value) : json(nullptr);
}

json orNull(const std::optional<std::chrono::milliseconds>& value) {
  return value ? json(value->count()) : json(nullptr);
}

json reportValue(const Report& report) {
  const ReportIdentity& identity = report.identity;
  return {{"number", report.number},
          {"received", momentText(report.received)},
          {"sender", report.sender},
          {"size", report.size},
          {"test", report.test},
          {"read", report.read},
          {"answer", outcome(report.answer)},
          {"reportId", orNull(identity.reportId)},
          {"machineId", orNull(identity.machineId)},
          {"customerId", orNull(identity.customerId)},
          {"applicationId", orNull(identity.applicationId)},
          {"applicationVersion", orNull(identity.applicationVersion)},
          {"pools", identity.pools},
          {"result", orNull(report.result)},
          {"duration", orNull(report.duration)},
          {"duplicateOf", report.duplicateOf ? json(*report.duplicateOf) : json(nullptr)}};
}

}  // namespace zt::inbox
