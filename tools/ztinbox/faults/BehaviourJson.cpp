#include "tools/ztinbox/faults/BehaviourJson.h"

#include <nlohmann/json.hpp>
#include <optional>

#include "tools/ztinbox/faults/Fault.h"

namespace zt::inbox {

namespace {

using nlohmann::json;
using Pointer = json::json_pointer;

constexpr std::uint64_t kMostTimes = 1'000'000'000;

[[noreturn]] void fail(const Pointer& where, const std::string& reason) {
  const std::string pointer = where.to_string();
  throw InputFault(pointer.empty() ? reason : pointer + ": " + reason);
}

json parse(std::string_view text) {
  try {
    return json::parse(text);
  } catch (const json::parse_error& error) {
    throw InputFault("not JSON (at byte " + std::to_string(error.byte) + ")");
  }
}

Answer readAnswer(const json& value, const Pointer& where) {
  if (value.is_string()) {
    if (const auto answer = parseAnswer(value.get_ref<const std::string&>())) return *answer;
  }
  fail(where, "must be " + std::string(kAnswerWords));
}

std::uint64_t readWhole(const json& value, const Pointer& where, std::uint64_t least,
                        std::uint64_t most) {
  if (value.is_number_unsigned()) {
    const auto number = value.get<std::uint64_t>();
    if (number >= least && number <= most) return number;
  }
  fail(where,
       "must be a whole number from " + std::to_string(least) + " to " + std::to_string(most));
}

std::chrono::milliseconds readSlow(const json& value, const Pointer& where) {
  const auto most = static_cast<std::uint64_t>(kSlowest.count());
  return std::chrono::milliseconds(readWhole(value, where, 0, most));
}

double readRate(const json& value, const Pointer& where) {
  if (value.is_number()) {
    const auto rate = value.get<double>();
    if (rate >= 0 && rate <= 1) return rate;
  }
  fail(where, "must be a number from 0 to 1");
}

ScenarioStep readStep(const json& value, const Pointer& where) {
  if (!value.is_object()) fail(where, "must be an object");
  ScenarioStep step;
  std::optional<Answer> answer;
  for (const auto& [key, entry] : value.items()) {
    const Pointer here = where / key;
    if (key == "answer") {
      answer = readAnswer(entry, here);
    } else if (key == "times") {
      step.times = static_cast<std::uint32_t>(readWhole(entry, here, 1, kMostTimes));
    } else if (key == "slow") {
      step.slow = readSlow(entry, here);
    } else {
      fail(here, "unknown key");
    }
  }
  if (!answer) fail(where, "needs an answer");
  step.answer = *answer;
  return step;
}

std::vector<ScenarioStep> readSteps(const json& value, const Pointer& where) {
  if (!value.is_array()) fail(where, "must be a list of steps");
  std::vector<ScenarioStep> steps;
  steps.reserve(value.size());
  for (const json& entry : value) steps.push_back(readStep(entry, where / steps.size()));
  return steps;
}

json stepJson(const ScenarioStep& step) {
  json value{{"answer", answerWord(step.answer)}, {"times", step.times}};
  if (step.slow) value["slow"] = step.slow->count();
  return value;
}

}  // namespace

std::string behaviourJson(const BehaviourSettings& settings) {
  json scenario = json::array();
  for (const ScenarioStep& step : settings.scenario) scenario.push_back(stepJson(step));
  return json{{"answer", answerWord(settings.answer)},
              {"slow", settings.slow.count()},
              {"failRate", settings.failRate},
              {"seed", settings.seed},
              {"scenario", std::move(scenario)}}
      .dump();
}

BehaviourChange readBehaviourChange(std::string_view text) {
  const json value = parse(text);
  if (!value.is_object()) fail(Pointer(), "must be an object");
  BehaviourChange change;
  for (const auto& [key, entry] : value.items()) {
    const Pointer here = Pointer() / key;
    if (key == "answer") {
      change.answer = readAnswer(entry, here);
    } else if (key == "slow") {
      change.slow = readSlow(entry, here);
    } else if (key == "failRate") {
      change.failRate = readRate(entry, here);
    } else if (key == "seed") {
      change.seed = readWhole(entry, here, 0, std::numeric_limits<std::uint64_t>::max());
    } else if (key == "scenario") {
      change.scenario = readSteps(entry, here);
    } else {
      fail(here, "unknown key");
    }
  }
  return change;
}

std::vector<ScenarioStep> readScenario(std::string_view text) {
  return readSteps(parse(text), Pointer());
}

}  // namespace zt::inbox
