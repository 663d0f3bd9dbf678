#include "tools/ztinbox/faults/Behaviour.h"

#include <utility>

namespace zt::inbox {

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
