// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/ztinbox/faults/Behaviour.h"

namespace zt::inbox {

/// Longest delay before an answer: one hour.
inline constexpr std::chrono::milliseconds kSlowest{3'600'000};

/// The settings as one JSON object, which readBehaviourChange() reads back:
///
///     {"answer":"accept","failRate":0.0,"scenario":[{"answer":"drop","times":2}],"seed":0,"slow":0}
std::string behaviourJson(const BehaviourSettings& settings);

/// Reads a JSON object with any of the keys of behaviourJson(). Throws InputFault for anything
/// else; the message begins with the JSON pointer (RFC 6901) of the error:
///
///     /scenario/0/times: must be a whole number from 1 to 1000000000
BehaviourChange readBehaviourChange(std::string_view text);

/// Reads a scenario file: a JSON list of steps. Throws as readBehaviourChange() does.
std::vector<ScenarioStep> readScenario(std::string_view text);

}  // namespace zt::inbox
