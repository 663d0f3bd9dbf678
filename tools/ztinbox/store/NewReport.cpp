#include "tools/ztinbox/store/NewReport.h"

#include <utility>

namespace zt::inbox {

void NewReport::read(std::string_view body) {
  ReportContent content = readContent(body);
  report.identity = std::move(content.identity);
  report.result = std::move(content.result);
  report.duration = content.duration;
  report.size = body.size();
  steps = std::move(content.steps);
}

std::size_t NewReport::memory() const {
  std::size_t bytes = sizeof(NewReport) + head.size() + packedBody.size();
  const ReportIdentity& identity = report.identity;
  for (const auto* value : {&identity.reportId, &identity.machineId, &identity.customerId,
                            &identity.applicationId, &identity.applicationVersion}) {
    if (*value) bytes += (*value)->size();
  }
  for (const std::string& pool : identity.pools) bytes += sizeof(std::string) + pool.size();
  for (const StepDuration& step : steps) bytes += sizeof(StepDuration) + step.name.size();
  return bytes;
}

}  // namespace zt::inbox
