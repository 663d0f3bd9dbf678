#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "tools/ztinbox/faults/FaultGenerator.h"
#include "tools/ztinbox/http/Answer.h"

namespace zt::inbox {

/// One step of a scenario: the answer to the next `times` reports.
struct ScenarioStep {
  Answer answer;
  std::uint32_t times = 1;
  std::optional<std::chrono::milliseconds> slow;  ///< instead of the general one

  friend bool operator==(const ScenarioStep&, const ScenarioStep&) = default;
};

struct BehaviourSettings {
  Answer answer;
  std::chrono::milliseconds slow{0};  ///< wait before each report's answer
  double failRate = 0;                ///< 0 to 1
  std::uint64_t seed = 0;
  std::vector<ScenarioStep> scenario;

  friend bool operator==(const BehaviourSettings&, const BehaviourSettings&) = default;
};

/// What is to change; the rest stays.
struct BehaviourChange {
  std::optional<Answer> answer = std::nullopt;
  std::optional<std::chrono::milliseconds> slow = std::nullopt;
  std::optional<double> failRate = std::nullopt;
  std::optional<std::uint64_t> seed = std::nullopt;
  std::optional<std::vector<ScenarioStep>> scenario = std::nullopt;
};

/// What happens to one report.
struct Reaction {
  Answer answer;
  std::chrono::milliseconds slow{0};

  friend bool operator==(const Reaction&, const Reaction&) = default;
};

/// Decides how each report is answered: as the scenario says, else by a generated fault, else by
/// the general answer. The last step of a scenario stays in force. Any thread may call it.
class Behaviour {
 public:
  explicit Behaviour(BehaviourSettings settings);

  /// The reaction to the next report.
  Reaction next();

  BehaviourSettings settings() const;
  /// A given scenario starts at its first step, a given seed starts its faults anew.
  void change(const BehaviourChange& change);

 private:
  const ScenarioStep& nextStep();

  mutable std::mutex _mutex;
  BehaviourSettings _settings;
  FaultGenerator _faults;
  std::size_t _step = 0;
  std::uint32_t _played = 0;  ///< times the current step was played
};

}  // namespace zt::inbox
