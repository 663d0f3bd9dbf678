// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/faults/BehaviourJson.h"

#include <limits>
#include <optional>
#include <utility>

#include "tools/ztinbox/Fault.h"
#include "ztportal/platform/json/Json.h"

namespace zt::inbox {

namespace {

constexpr std::uint64_t kMostTimes = 1'000'000'000;

/// A value and its JSON pointer.
struct Place {
  const Json& value;
  std::string pointer;

  [[noreturn]] void fail(const std::string& reason) const {
    throw InputFault(withPointer(pointer, reason));
  }
};

Json parse(std::string_view text) try {
  return parseJson(text, JsonDuplicates::LastCounts);
} catch (const JsonError& error) {
  if (!error.byte()) throw InputFault(error.what());
  throw InputFault("not JSON (at byte " + std::to_string(*error.byte()) + ")");
}

Answer readAnswer(const Place& place) {
  if (place.value.isString()) {
    if (const auto answer = parseAnswer(place.value.string())) return *answer;
  }
  place.fail("must be " + std::string(kAnswerWords));
}

std::uint64_t readWhole(const Place& place, std::uint64_t least, std::uint64_t most) {
  if (place.value.isUnsigned()) {
    const auto number = place.value.unsignedInteger();
    if (number >= least && number <= most) return number;
  }
  place.fail("must be a whole number from " + std::to_string(least) + " to " +
             std::to_string(most));
}

std::chrono::milliseconds readSlow(const Place& place) {
  const auto most = static_cast<std::uint64_t>(kSlowest.count());
  return std::chrono::milliseconds(readWhole(place, 0, most));
}

double readRate(const Place& place) {
  if (place.value.isNumber()) {
    const auto rate = place.value.number();
    if (rate >= 0 && rate <= 1) return rate;
  }
  place.fail("must be a number from 0 to 1");
}

ScenarioStep readStep(const Place& place) {
  if (!place.value.isObject()) place.fail("must be an object");
  ScenarioStep step;
  std::optional<Answer> answer;
  for (const auto& [key, entry] : place.value.members()) {
    const Place here{entry, childPointer(place.pointer, key)};
    if (key == "answer") {
      answer = readAnswer(here);
    } else if (key == "times") {
      step.times = static_cast<std::uint32_t>(readWhole(here, 1, kMostTimes));
    } else if (key == "slow") {
      step.slow = readSlow(here);
    } else {
      here.fail("unknown key");
    }
  }
  if (!answer) place.fail("needs an answer");
  step.answer = *answer;
  return step;
}

std::vector<ScenarioStep> readSteps(const Place& place) {
  if (!place.value.isArray()) place.fail("must be a list of steps");
  std::vector<ScenarioStep> steps;
  for (const Json& entry : place.value.values()) {
    steps.push_back(readStep({entry, childPointer(place.pointer, std::to_string(steps.size()))}));
  }
  return steps;
}

Json stepJson(const ScenarioStep& step) {
  Json value{{"answer", answerWord(step.answer)}};
  if (step.slow) value["slow"] = step.slow->count();
  value["times"] = step.times;
  return value;
}

}  // namespace

std::string behaviourJson(const BehaviourSettings& settings) {
  Json scenario = Json::array();
  for (const ScenarioStep& step : settings.scenario) scenario.push_back(stepJson(step));
  return Json{{"answer", answerWord(settings.answer)},
              {"failRate", settings.failRate},
              {"scenario", std::move(scenario)},
              {"seed", settings.seed},
              {"slow", settings.slow.count()}}
      .text();
}

BehaviourChange readBehaviourChange(std::string_view text) {
  const Json json = parse(text);
  const Place place{json, {}};
  if (!json.isObject()) place.fail("must be an object");
  BehaviourChange change;
  for (const auto& [key, entry] : json.members()) {
    const Place here{entry, childPointer(place.pointer, key)};
    if (key == "answer") {
      change.answer = readAnswer(here);
    } else if (key == "slow") {
      change.slow = readSlow(here);
    } else if (key == "failRate") {
      change.failRate = readRate(here);
    } else if (key == "seed") {
      change.seed = readWhole(here, 0, std::numeric_limits<std::uint64_t>::max());
    } else if (key == "scenario") {
      change.scenario = readSteps(here);
    } else {
      here.fail("unknown key");
    }
  }
  return change;
}

std::vector<ScenarioStep> readScenario(std::string_view text) {
  const Json json = parse(text);
  return readSteps({json, {}});
}

}  // namespace zt::inbox
