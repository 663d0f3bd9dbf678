// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace zt::inbox {

enum class AnswerKind { kAccept, kRefuse, kGarbage, kError, kHang, kDrop, kTruncate };

/// How a report is answered.
struct Answer {
  AnswerKind kind = AnswerKind::kAccept;
  int status = 0;  ///< only for kError: the HTTP status, 200 to 599

  friend bool operator==(const Answer&, const Answer&) = default;
};

/// The words of `--answer`, for messages.
inline constexpr std::string_view kAnswerWords =
    "accept, refuse, garbage, error:STATUS (200 to 599), hang, drop or truncate";

/// Parses a word of `--answer`; nullopt for any other text. An interim status (100 to 199) is not
/// accepted, because the client would keep waiting for the final response.
///
///     parseAnswer("error:503")  ->  {kError, 503}
std::optional<Answer> parseAnswer(std::string_view word);

/// The word that parseAnswer() reads: "error:503".
std::string answerWord(const Answer& answer);

/// What the client received, in the words of the report list: "accepted", "error 503", "no answer".
std::string outcome(const Answer& answer);

/// Decides for each report whether it fails, and how. The same seed produces the same faults on
/// every system. The C++ standard defines the output of std::mt19937_64, but not of the
/// distributions, so this class converts the numbers itself.
class FaultGenerator {
 public:
  explicit FaultGenerator(std::uint64_t seed) : _numbers(seed) {}

  /// The fault of the next report, with probability `rate` (0 to 1), or nullopt. It does not depend
  /// on the rates of earlier reports.
  std::optional<Answer> next(double rate);

 private:
  std::mt19937_64 _numbers;
};

/// One step of a scenario: the answer to the next `times` reports.
struct ScenarioStep {
  Answer answer;
  std::uint32_t times = 1;
  std::optional<std::chrono::milliseconds> slow;  ///< instead of BehaviourSettings::slow

  friend bool operator==(const ScenarioStep&, const ScenarioStep&) = default;
};

struct BehaviourSettings {
  Answer answer;
  std::chrono::milliseconds slow{0};  ///< delay before each answer
  double failRate = 0;                ///< 0 to 1
  std::uint64_t seed = 0;
  std::vector<ScenarioStep> scenario;

  friend bool operator==(const BehaviourSettings&, const BehaviourSettings&) = default;
};

/// The settings to change.
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

/// Decides how each report is answered: by the scenario if there is one, or else by a generated
/// fault, or else by the general answer. The last step of a scenario stays in force. Thread-safe.
class Behaviour {
 public:
  explicit Behaviour(BehaviourSettings settings);

  /// The reaction to the next report.
  Reaction next();

  BehaviourSettings settings() const;
  /// A new scenario starts at its first step, a new seed restarts the faults.
  void change(const BehaviourChange& change);

 private:
  const ScenarioStep& nextStep();

  mutable std::mutex _mutex;
  BehaviourSettings _settings;
  FaultGenerator _faults;
  std::size_t _step = 0;
  std::uint32_t _played = 0;  ///< how often the current step was played
};

}  // namespace zt::inbox
