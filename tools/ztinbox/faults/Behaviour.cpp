// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/faults/Behaviour.h"

#include <algorithm>
#include <array>
#include <utility>

#include "ztportal/base/Text.h"

namespace zt::inbox {

namespace {

struct Row {
  AnswerKind kind;
  std::string_view word;
  std::string_view outcome;
};

constexpr std::array<Row, 6> kPlainAnswers{{
    {AnswerKind::kAccept, "accept", "accepted"},
    {AnswerKind::kRefuse, "refuse", "refused"},
    {AnswerKind::kGarbage, "garbage", "garbage"},
    {AnswerKind::kHang, "hang", "no answer"},
    {AnswerKind::kDrop, "drop", "dropped"},
    {AnswerKind::kTruncate, "truncate", "truncated"},
}};

constexpr std::string_view kErrorPrefix = "error:";
constexpr std::size_t kStatusDigits = 3;
constexpr int kLowestStatus = 200;
constexpr int kHighestStatus = 599;

std::optional<Answer> parseError(std::string_view status) {
  if (status.size() != kStatusDigits) return std::nullopt;
  const auto number = parseNumber<int>(status);
  if (!number || *number < kLowestStatus || *number > kHighestStatus) return std::nullopt;
  return Answer{AnswerKind::kError, *number};
}

const Row* rowOf(AnswerKind kind) {
  const auto* row = std::ranges::find(kPlainAnswers, kind, &Row::kind);
  return row == kPlainAnswers.end() ? nullptr : row;
}

constexpr std::array<Answer, 6> kFaults{{
    {AnswerKind::kRefuse},
    {AnswerKind::kGarbage},
    {AnswerKind::kError, 500},
    {AnswerKind::kError, 503},
    {AnswerKind::kDrop},
    {AnswerKind::kTruncate},
}};

/// The upper 53 bits as a number from 0 to below 1.
double fraction(std::uint64_t number) { return static_cast<double>(number >> 11) * 0x1p-53; }

}  // namespace

std::optional<Answer> parseAnswer(std::string_view word) {
  if (word.starts_with(kErrorPrefix)) return parseError(word.substr(kErrorPrefix.size()));
  const auto* row = std::ranges::find(kPlainAnswers, word, &Row::word);
  if (row == kPlainAnswers.end()) return std::nullopt;
  return Answer{row->kind};
}

std::string answerWord(const Answer& answer) {
  const Row* row = rowOf(answer.kind);
  return row != nullptr ? std::string(row->word)
                        : std::string(kErrorPrefix) + std::to_string(answer.status);
}

std::string outcome(const Answer& answer) {
  const Row* row = rowOf(answer.kind);
  return row != nullptr ? std::string(row->outcome) : "error " + std::to_string(answer.status);
}

std::optional<Answer> FaultGenerator::next(double rate) {
  const double chance = fraction(_numbers());
  const std::uint64_t choice = _numbers();
  if (chance >= rate) return std::nullopt;
  return kFaults[choice % kFaults.size()];
}

Behaviour::Behaviour(BehaviourSettings settings)
    : _settings(std::move(settings)), _faults(_settings.seed) {}

Reaction Behaviour::next() {
  const std::lock_guard lock(_mutex);
  if (!_settings.scenario.empty()) {
    const ScenarioStep& step = nextStep();
    return {step.answer, step.slow.value_or(_settings.slow)};
  }
  if (_settings.failRate > 0) {
    if (const auto fault = _faults.next(_settings.failRate)) return {*fault, _settings.slow};
  }
  return {_settings.answer, _settings.slow};
}

const ScenarioStep& Behaviour::nextStep() {
  const bool last = _step + 1 == _settings.scenario.size();
  if (!last && _played == _settings.scenario[_step].times) {
    ++_step;
    _played = 0;
  }
  const ScenarioStep& step = _settings.scenario[_step];
  if (_played < step.times) ++_played;
  return step;
}

BehaviourSettings Behaviour::settings() const {
  const std::lock_guard lock(_mutex);
  return _settings;
}

void Behaviour::change(const BehaviourChange& change) {
  const std::lock_guard lock(_mutex);
  if (change.answer) _settings.answer = *change.answer;
  if (change.slow) _settings.slow = *change.slow;
  if (change.failRate) _settings.failRate = *change.failRate;
  if (change.seed) {
    _settings.seed = *change.seed;
    _faults = FaultGenerator(*change.seed);
  }
  if (change.scenario) {
    _settings.scenario = *change.scenario;
    _step = 0;
    _played = 0;
  }
}

}  // namespace zt::inbox
