#include "tools/ztinbox/soap/ReportRun.h"

#include <algorithm>
#include <array>
#include <string>
#include <unordered_map>

#include "tools/ztinbox/api/Moment.h"

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

struct TimedStep {
  RunStep step;
  std::optional<ReportMoment> time;
};

std::string_view valueOf(const FieldRange& fields, std::string_view name) {
  for (const Field& field : fields) {
    if (field.name == name) return field.value;
  }
  return {};
}

/// Nothing, too, when the sender's clock was set back meanwhile.
std::optional<milliseconds> between(const std::optional<ReportMoment>& start,
                                    const std::optional<ReportMoment>& end) {
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
    step.time = parseReportMoment(field.value);
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

void setTimes(std::vector<TimedStep>& steps, const std::optional<ReportMoment>& start,
              const std::optional<ReportMoment>& end) {
  // From the last step to the first, so that the next leaving of a name is at hand.
  std::unordered_map<std::string_view, const TimedStep*> left;
  const std::optional<ReportMoment>* next = &end;
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

}  // namespace

bool isRun(std::string_view poolType) {
  return std::ranges::find(kStepNames, poolType, &StepNames::poolType) != kStepNames.end();
}

std::optional<PoolRun> readRun(const reader::ParsedReport& report, const reader::Pool& pool) {
  const auto* const names = std::ranges::find(kStepNames, pool.type, &StepNames::poolType);
  if (names == kStepNames.end()) return std::nullopt;
  PoolRun run;
  const FieldRange fields = report.fieldsOf(pool);
  std::vector<TimedStep> steps = readSteps(fields, *names);
  if (!names->time.empty()) {
    const auto start = parseReportMoment(valueOf(fields, "START_TIME"));
    const auto end = parseReportMoment(valueOf(fields, "END_TIME"));
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

}  // namespace zt::inbox
