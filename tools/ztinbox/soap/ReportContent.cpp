// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/soap/ReportContent.h"

#include <algorithm>
#include <array>
#include <unordered_map>

#include "tools/common/ReportReader.h"
#include "ztportal/platform/time/Rfc3339.h"

namespace zt::inbox {

namespace {

using reader::Field;
using reader::FieldRange;
using reader::FieldType;
using std::chrono::milliseconds;

constexpr std::string_view kTrue = "TRUE";

/// The names of a step's fields, which differ between the two kinds of pools.
struct StepNames {
  std::string_view poolType;
  std::string_view array;
  std::string_view name;
  std::string_view type;
  std::string_view message;
  std::string_view code;
  std::string_view time;
  std::string_view success;
};

constexpr std::array<StepNames, 2> kStepNames{{
    {"EXECUTION", "INSTALLATIONSTEPS", "STEP_NAME", "STEP_TYPE", "STEP_MESSAGESTRING",
     "STEP_MESSAGECODE", "STEP_TIMESTAMP", ""},
    {"DIAGNOSE", "DIAGNOSESTEPS", "DIAGNOSE_STEPNAME", "DIAGNOSE_DIAGNOSETYPE",
     "DIAGNOSE_MESSAGESTRING", "DIAGNOSE_MESSAGECODE", "", "DIAGNOSE_SUCCESSFULLREPAIR"},
}};

/// A timestamp of a report: yyyy-MM-dd'T'HH:mm:ss.SSS and a few letters for the sender's time zone,
/// which do not identify a zone. Timestamps of one report are compared, as if they were in UTC, if
/// their letters are equal.
struct ReportTime {
  milliseconds time;  ///< since 1970 on the sender's clock
  std::string_view zone;
};

std::optional<ReportTime> reportTimeOf(std::string_view text) {
  const auto read = readRfc3339Time(text);
  if (!read || read->fractionDigits == 0) return std::nullopt;
  return ReportTime{read->time, read->rest};
}

struct TimedStep {
  RunStep step;
  std::optional<ReportTime> time;
};

std::string_view valueOf(const FieldRange& fields, std::string_view name) {
  for (const Field& field : fields) {
    if (field.name == name) return field.value;
  }
  return {};
}

/// Returns nullopt if the sender's clock was set back in between.
std::optional<milliseconds> between(const std::optional<ReportTime>& start,
                                    const std::optional<ReportTime>& end) {
  if (!start || !end || start->zone != end->zone || end->time < start->time) return std::nullopt;
  return end->time - start->time;
}

void take(const Field& field, const StepNames& names, TimedStep& step) {
  if (field.name == names.name) {
    step.step.name = field.value;
  } else if (field.name == names.type) {
    step.step.type = field.value;
    step.step.failed = step.step.failed || field.value == "ERROR";
  } else if (field.name == names.message) {
    step.step.message = field.value;
  } else if (field.name == names.code) {
    step.step.code = field.value;
  } else if (!names.time.empty() && field.name == names.time) {
    step.time = reportTimeOf(field.value);
  } else if (!names.success.empty() && field.name == names.success) {
    step.step.failed = field.value != kTrue;
  }
}

std::vector<TimedStep> readSteps(const FieldRange& fields, const StepNames& names) {
  std::vector<TimedStep> steps;
  for (const Field& field : fields) {
    if (field.type != FieldType::Records || field.name != names.array) continue;
    for (const Field& record : fieldsOf(field)) {
      TimedStep& step = steps.emplace_back();
      for (const Field& value : fieldsOf(record)) take(value, names, step);
    }
    break;
  }
  return steps;
}

void setTimes(std::vector<TimedStep>& steps, const std::optional<ReportTime>& start,
              const std::optional<ReportTime>& end) {
  // Iterates backwards, so that the next step that leaves each name is known.
  std::unordered_map<std::string_view, const TimedStep*> left;
  const std::optional<ReportTime>* next = &end;
  // NOLINTNEXTLINE(modernize-loop-convert): Clang 14 cannot compile std::views::reverse.
  for (auto timed = steps.rbegin(); timed != steps.rend(); ++timed) {
    RunStep& step = timed->step;
    step.offset = between(start, timed->time);
    if (step.type == "LEAVE" || step.type == "EXIT") {
      left[step.name] = &*timed;
    } else if (step.type == "ENTER") {
      const auto leaving = left.find(step.name);
      step.duration = between(timed->time, leaving != left.end() ? leaving->second->time : *next);
      if (leaving != left.end()) left.erase(leaving);
    }
    if (timed->time) next = &timed->time;
  }
}

/// A value that was not found is a view without an address.
std::optional<std::string> bounded(std::string_view value) {
  if (value.data() == nullptr) return std::nullopt;
  return std::string(value.substr(0, kLongestIdentityValue));
}

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

std::optional<PoolRun> readRun(const reader::ParsedReport& report, const reader::Pool& pool) {
  const auto* const names = std::ranges::find(kStepNames, pool.type, &StepNames::poolType);
  if (names == kStepNames.end()) return std::nullopt;
  PoolRun run;
  const FieldRange fields = report.fieldsOf(pool);
  std::vector<TimedStep> steps = readSteps(fields, *names);
  if (!names->time.empty()) {
    const auto start = reportTimeOf(valueOf(fields, "START_TIME"));
    const auto end = reportTimeOf(valueOf(fields, "END_TIME"));
    run.duration = between(start, end);
    const std::string_view success = valueOf(fields, "SUCCESSFULL");
    if (valueOf(fields, "CANCELLED") == kTrue) {
      run.result = "cancelled";
    } else if (!success.empty()) {
      run.result = success == kTrue ? "succeeded" : "failed";
    }
    setTimes(steps, start, end);
  }
  run.steps.reserve(steps.size());
  for (TimedStep& timed : steps) run.steps.push_back(timed.step);
  return run;
}

ReportIdentity identityOf(const reader::ParsedReport& report) {
  ReportIdentity identity;
  identity.reportId = bounded(report.reportId);
  identity.machineId = bounded(report.machineId);
  identity.customerId = bounded(report.customerId);
  identity.applicationId = bounded(report.applicationId);
  identity.applicationVersion = bounded(report.applicationVersion);
  for (const reader::Pool& pool : report.pools) {
    if (identity.pools.size() == kMostPools) break;
    identity.pools.emplace_back(pool.type.substr(0, kLongestIdentityValue));
  }
  for (const std::string_view type : report.laterPools) {
    if (identity.pools.size() == kMostPools) break;
    identity.pools.emplace_back(type.substr(0, kLongestIdentityValue));
  }
  return identity;
}

ReportContent readContent(std::string_view report) {
  const reader::ParsedReport parsed = reader::readReportUpToFault(report).report;
  ReportContent content;
  content.identity = identityOf(parsed);
  for (const reader::Pool& pool : parsed.pools) {
    if (const auto run = readRun(parsed, pool)) addRun(*run, content);
  }
  return content;
}

}  // namespace zt::inbox
