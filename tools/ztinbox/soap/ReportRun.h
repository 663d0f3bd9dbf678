#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "tools/common/ParsedReport.h"

namespace zt::inbox {

/// One step of a run or of a diagnosis.
struct RunStep {
  std::string_view name;
  std::string_view type;  ///< ENTER, ERROR, …; of a diagnosis MANUAL, AUTOMATIC, …
  std::string_view message;
  std::string_view code;
  bool failed = false;  ///< an error, or a repair without success
  /// Since the run's start; only an execution's steps have a time.
  std::optional<std::chrono::milliseconds> offset = std::nullopt;
  /// Of a step that is entered: up to where the step of the same name is left, else to the next
  /// step's time, else to the run's end.
  std::optional<std::chrono::milliseconds> duration = std::nullopt;
};

/// What an execution or diagnose pool tells about its run.
struct PoolRun {
  std::optional<std::string_view> result = std::nullopt;  ///< succeeded, failed or cancelled
  std::optional<std::chrono::milliseconds> duration = std::nullopt;
  std::vector<RunStep> steps;
};

/// Whether pools of this type tell about a run.
bool isRun(std::string_view poolType);

/// Nothing for a pool of any other type. `pool` is one of `report`. Texts are views into its text.
std::optional<PoolRun> readRun(const reader::ParsedReport& report, const reader::Pool& pool);

}  // namespace zt::inbox
