#include "tools/ztinbox/soap/ReportContent.h"

#include <algorithm>

#include "tools/common/ReportReader.h"
#include "tools/ztinbox/soap/ReportRun.h"

namespace zt::inbox {

namespace {

void addRun(const PoolRun& run, ReportContent& content) {
  if (run.result && !content.result) {
    content.result = *run.result;
    content.duration = run.duration;
  }
  for (const RunStep& step : run.steps) {
    if (!step.duration || content.steps.size() == kMostCountedSteps) continue;
    content.steps.push_back({std::string(step.name.substr(0, kLongestStepName)), *step.duration});
  }
}

}  // namespace

ReportContent readContent(std::string_view report) {
  ReportContent content;
  content.identity = readIdentity(report);
  if (std::ranges::none_of(content.identity.pools, isRun)) return content;
  const reader::ParsedReport read = reader::readReportUpToFault(report).report;
  for (const reader::Pool& pool : read.pools) {
    if (const auto run = readRun(read, pool)) addRun(*run, content);
  }
  return content;
}

}  // namespace zt::inbox
