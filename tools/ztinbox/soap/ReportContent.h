// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/common/ParsedReport.h"
#include "tools/ztinbox/store/StoredReport.h"

namespace zt::inbox {

// A page of the report list has the identities of up to a thousand reports.
inline constexpr std::size_t kLongestIdentityValue = 1024;  ///< bytes; longer ones are cut off
inline constexpr std::size_t kMostPools = 1'000;            ///< later ones are left out

/// Values that are missing from `report` are nullopt.
ReportIdentity identityOf(const reader::ParsedReport& report);

/// One step of a run or of a diagnosis.
struct RunStep {
  std::string_view name;
  std::string_view type;  ///< ENTER, ERROR, …; in a diagnosis MANUAL, AUTOMATIC, …
  std::string_view message;
  std::string_view code;
  bool failed = false;  ///< an error, or a repair without success
  /// Time since the run's start; only the steps of an execution have one.
  std::optional<std::chrono::milliseconds> offset = std::nullopt;
  /// Only for ENTER steps: the time until the step of the same name is left, or else until the next
  /// step, or else until the run's end.
  std::optional<std::chrono::milliseconds> duration = std::nullopt;
};

/// The run that an execution or diagnose pool describes.
struct PoolRun {
  std::optional<std::string_view> result = std::nullopt;  ///< succeeded, failed or cancelled
  std::optional<std::chrono::milliseconds> duration = std::nullopt;
  std::vector<RunStep> steps;
};

/// Returns nullopt for a pool of any other type. `pool` is one of `report`; the strings are views
/// into the report's text.
std::optional<PoolRun> readRun(const reader::ParsedReport& report, const reader::Pool& pool);

/// What the store keeps of a report's text, so that it can be listed and counted without parsing
/// the text again. If the text has an error, this is the content before it.
struct ReportContent {
  ReportIdentity identity;
  std::optional<std::string> result;
  std::optional<std::chrono::milliseconds> duration;
  std::vector<StepDuration> steps;
};

// Limits of the steps.
inline constexpr std::size_t kMostCountedSteps = 1'000;
inline constexpr std::size_t kLongestStepName = 200;

ReportContent readContent(std::string_view report);

}  // namespace zt::inbox
