#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/ztinbox/soap/Report.h"

namespace zt::inbox {

/// How long a step took, by its name.
struct StepDuration {
  std::string name;
  std::chrono::milliseconds duration;
};

/// What is read out of a report's text once, when it comes in, so that it can be listed and
/// counted without reading it again.
struct ReportContent {
  ReportIdentity identity;
  std::optional<std::string> result;
  std::optional<std::chrono::milliseconds> duration;
  std::vector<StepDuration> steps;
};

/// Limits of what is kept of a report's steps beside its text.
inline constexpr std::size_t kMostCountedSteps = 1'000;
inline constexpr std::size_t kLongestStepName = 200;

ReportContent readContent(std::string_view report);

}  // namespace zt::inbox
