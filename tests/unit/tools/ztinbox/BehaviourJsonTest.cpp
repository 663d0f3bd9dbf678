// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "tools/ztinbox/Fault.h"
#include "tools/ztinbox/faults/BehaviourJson.h"

namespace {

using std::chrono::milliseconds;
using zt::inbox::AnswerKind;
using zt::inbox::Behaviour;
using zt::inbox::BehaviourSettings;
using zt::inbox::readBehaviourChange;
using zt::inbox::readScenario;
using zt::inbox::ScenarioStep;

template <class Read>
std::string faultOf(Read read, const std::string& json) {
  try {
    read(json);
    return "";
  } catch (const zt::inbox::InputFault& fault) {
    return fault.what();
  }
}

struct Fault {
  const char* json;
  const char* reason;
};

constexpr const char* kAnswerRule =
    "must be accept, refuse, garbage, error:STATUS (200 to 599), hang, drop or truncate";

TEST(BehaviourJsonTest, WritesAllSettings) {
  BehaviourSettings settings;
  settings.answer = {AnswerKind::kError, 503};
  settings.slow = milliseconds(20);
  settings.failRate = 0.25;
  settings.seed = 18446744073709551615U;
  settings.scenario = {{{AnswerKind::kDrop}, 2, milliseconds(5)}, {{AnswerKind::kAccept}, 1, {}}};
  EXPECT_EQ(zt::inbox::behaviourJson(settings),
            R"({"answer":"error:503","failRate":0.25,"scenario":[{"answer":"drop","slow":5,)"
            R"("times":2},{"answer":"accept","times":1}],"seed":18446744073709551615,"slow":20})");
}

TEST(BehaviourJsonTest, ReadsWhatItWrites) {
  BehaviourSettings settings;
  settings.answer = {AnswerKind::kTruncate};
  settings.slow = milliseconds(3'600'000);
  settings.failRate = 1;
  settings.seed = 12;
  settings.scenario = {{{AnswerKind::kHang}, 1'000'000'000, milliseconds(0)}};
  Behaviour behaviour({});
  behaviour.change(readBehaviourChange(zt::inbox::behaviourJson(settings)));
  EXPECT_EQ(behaviour.settings(), settings);
}

TEST(BehaviourJsonTest, ReadsOnlyWhatIsThere) {
  const auto change = readBehaviourChange(R"({"slow": 5})");
  EXPECT_EQ(change.slow, milliseconds(5));
  EXPECT_FALSE(change.answer || change.failRate || change.seed || change.scenario);
}

TEST(BehaviourJsonTest, ReadsAScenario) {
  const std::vector<ScenarioStep> expected{{{AnswerKind::kError, 503}, 2, {}},
                                           {{AnswerKind::kDrop}, 1, milliseconds(100)},
                                           {{AnswerKind::kAccept}, 1, {}}};
  EXPECT_EQ(readScenario(R"([{"answer": "error:503", "times": 2},
                             {"answer": "drop", "slow": 100}, {"answer": "accept"}])"),
            expected);
  EXPECT_TRUE(readScenario("[]").empty());
}

TEST(BehaviourJsonTest, NamesTheFaultOfAChange) {
  const std::string answerFault = std::string("/answer: ") + kAnswerRule;
  const Fault faults[] = {
      {"", "not JSON (at byte 1)"},
      {"{", "not JSON (at byte 2)"},
      {"{}x", "not JSON (at byte 3)"},
      {"[]", "must be an object"},
      {"null", "must be an object"},
      {R"({"answer": "maybe"})", answerFault.c_str()},
      {R"({"answer": 1})", answerFault.c_str()},
      {R"({"answer": null})", answerFault.c_str()},
      {R"({"slow": -1})", "/slow: must be a whole number from 0 to 3600000"},
      {R"({"slow": 1.5})", "/slow: must be a whole number from 0 to 3600000"},
      {R"({"slow": "1"})", "/slow: must be a whole number from 0 to 3600000"},
      {R"({"slow": 3600001})", "/slow: must be a whole number from 0 to 3600000"},
      {R"({"failRate": 1.01})", "/failRate: must be a number from 0 to 1"},
      {R"({"failRate": -0.5})", "/failRate: must be a number from 0 to 1"},
      {R"({"failRate": true})", "/failRate: must be a number from 0 to 1"},
      {R"({"seed": -1})", "/seed: must be a whole number from 0 to 18446744073709551615"},
      {R"({"a/b~c": 1})", "/a~1b~0c: unknown key"},
      {R"({"scenario": {}})", "/scenario: must be a list of steps"},
      {R"({"scenario": [{"answer": "drop"}, 7]})", "/scenario/1: must be an object"},
      {R"({"scenario": [{"answer": "drop", "times": 0}]})",
       "/scenario/0/times: must be a whole number from 1 to 1000000000"},
  };
  for (const Fault& fault : faults) {
    EXPECT_EQ(faultOf(readBehaviourChange, fault.json), fault.reason) << fault.json;
  }
}

TEST(BehaviourJsonTest, NamesTheFaultOfAScenario) {
  const std::string answerFault = std::string("/1/answer: ") + kAnswerRule;
  const Fault faults[] = {
      {"{}", "must be a list of steps"},
      {R"([{"answer": "drop"}, {"answer": "error:99"}])", answerFault.c_str()},
      {R"([{}])", "/0: needs an answer"},
      {R"([{"answer": "drop", "time": 1}])", "/0/time: unknown key"},
      {R"([{"answer": "drop", "slow": null}])",
       "/0/slow: must be a whole number from 0 to 3600000"},
      {"[1,", "not JSON (at byte 4)"},
  };
  for (const Fault& fault : faults) {
    EXPECT_EQ(faultOf(readScenario, fault.json), fault.reason) << fault.json;
  }
}

}  // namespace
