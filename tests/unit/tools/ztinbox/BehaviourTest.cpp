// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tools/ztinbox/faults/Behaviour.h"

namespace {

using std::chrono::milliseconds;
using zt::inbox::Answer;
using zt::inbox::AnswerKind;
using zt::inbox::Behaviour;
using zt::inbox::BehaviourSettings;
using zt::inbox::FaultGenerator;
using zt::inbox::Reaction;

constexpr Answer kDrop{AnswerKind::kDrop};
constexpr Answer kRefuse{AnswerKind::kRefuse};
constexpr Answer kAccept{AnswerKind::kAccept};

std::string words(Behaviour& behaviour, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += zt::inbox::answerWord(behaviour.next().answer) + " ";
  return all;
}

BehaviourSettings failing(double rate, std::uint64_t seed) {
  BehaviourSettings settings;
  settings.failRate = rate;
  settings.seed = seed;
  return settings;
}

TEST(BehaviourTest, AcceptsAtOnceUnlessToldOtherwise) {
  Behaviour behaviour({});
  EXPECT_EQ(behaviour.next(), (Reaction{kAccept, milliseconds(0)}));
}

TEST(BehaviourTest, GivesTheGeneralAnswerToEveryReport) {
  BehaviourSettings settings;
  settings.answer = kRefuse;
  settings.slow = milliseconds(70);
  Behaviour behaviour(settings);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(behaviour.next(), (Reaction{kRefuse, milliseconds(70)}));
}

TEST(BehaviourTest, PlaysAScenarioInOrderAndStaysAtItsLastStep) {
  BehaviourSettings settings;
  settings.answer = {AnswerKind::kGarbage};
  settings.failRate = 1;
  settings.slow = milliseconds(7);
  settings.scenario = {
      {{AnswerKind::kError, 503}, 2, {}}, {kDrop, 1, milliseconds(100)}, {kAccept, 1, {}}};
  Behaviour behaviour(settings);
  EXPECT_EQ(behaviour.next(), (Reaction{{AnswerKind::kError, 503}, milliseconds(7)}));
  EXPECT_EQ(behaviour.next(), (Reaction{{AnswerKind::kError, 503}, milliseconds(7)}));
  EXPECT_EQ(behaviour.next(), (Reaction{kDrop, milliseconds(100)}));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(behaviour.next(), (Reaction{kAccept, milliseconds(7)}));
}

TEST(BehaviourTest, ASeedGivesTheSameFaultsEverywhere) {
  Behaviour half(failing(0.5, 7));
  EXPECT_EQ(words(half, 16),
            "accept refuse refuse accept error:500 accept refuse accept accept accept accept "
            "garbage error:500 error:500 accept accept ");
  Behaviour always(failing(1, 7));
  EXPECT_EQ(words(always, 16),
            "refuse refuse refuse drop error:500 error:503 refuse truncate error:503 error:500 "
            "error:500 garbage error:500 error:500 refuse error:500 ");
}

TEST(BehaviourTest, FailsAboutAsOftenAsTheRateSays) {
  Behaviour behaviour(failing(0.25, 42));
  int failures = 0;
  for (int i = 0; i < 10'000; ++i) {
    if (behaviour.next().answer != kAccept) ++failures;
  }
  EXPECT_EQ(failures, 2481);
}

TEST(BehaviourTest, AFaultDoesNotDependOnEarlierRates) {
  FaultGenerator steady(3);
  FaultGenerator changing(3);
  for (int i = 0; i < 100; ++i) {
    steady.next(1);
    changing.next(i % 2);
  }
  EXPECT_EQ(steady.next(1), changing.next(1));
}

TEST(BehaviourTest, AChangeKeepsWhatItDoesNotName) {
  BehaviourSettings settings = failing(0.5, 9);
  settings.answer = kDrop;
  settings.slow = milliseconds(5);
  settings.scenario = {{kRefuse, 3, {}}};
  Behaviour behaviour(settings);
  behaviour.change({});
  EXPECT_EQ(behaviour.settings(), settings);

  behaviour.change({.answer = kRefuse});
  settings.answer = kRefuse;
  EXPECT_EQ(behaviour.settings(), settings);

  behaviour.change({.slow = milliseconds(6),
                    .failRate = 0.25,
                    .seed = 10,
                    .scenario = std::vector<zt::inbox::ScenarioStep>{}});
  settings.slow = milliseconds(6);
  settings.failRate = 0.25;
  settings.seed = 10;
  settings.scenario.clear();
  EXPECT_EQ(behaviour.settings(), settings);
}

TEST(BehaviourTest, AGivenSeedStartsTheFaultsAnew) {
  Behaviour behaviour(failing(1, 7));
  const std::string first = words(behaviour, 8);
  EXPECT_NE(words(behaviour, 8), first);
  behaviour.change({.seed = 7});
  EXPECT_EQ(words(behaviour, 8), first);
}

TEST(BehaviourTest, AGivenScenarioStartsAtItsFirstStep) {
  BehaviourSettings settings;
  settings.scenario = {{kDrop, 1, {}}, {kAccept, 1, {}}};
  Behaviour behaviour(settings);
  EXPECT_EQ(words(behaviour, 3), "drop accept accept ");
  behaviour.change({.slow = milliseconds(1)});
  EXPECT_EQ(words(behaviour, 1), "accept ");
  behaviour.change({.scenario = settings.scenario});
  EXPECT_EQ(words(behaviour, 2), "drop accept ");
}

using zt::inbox::parseAnswer;

struct AnswerRow {
  const char* word;
  Answer answer;
  const char* outcome;
};

constexpr AnswerRow kRows[] = {
    {"accept", {AnswerKind::kAccept}, "accepted"},
    {"refuse", {AnswerKind::kRefuse}, "refused"},
    {"garbage", {AnswerKind::kGarbage}, "garbage"},
    {"error:200", {AnswerKind::kError, 200}, "error 200"},
    {"error:503", {AnswerKind::kError, 503}, "error 503"},
    {"error:599", {AnswerKind::kError, 599}, "error 599"},
    {"hang", {AnswerKind::kHang}, "no answer"},
    {"drop", {AnswerKind::kDrop}, "dropped"},
    {"truncate", {AnswerKind::kTruncate}, "truncated"},
};

TEST(AnswerTest, ReadsEveryWordAndWritesItBack) {
  for (const AnswerRow& row : kRows) {
    const auto answer = parseAnswer(row.word);
    ASSERT_TRUE(answer) << row.word;
    EXPECT_EQ(*answer, row.answer) << row.word;
    EXPECT_EQ(zt::inbox::answerWord(*answer), row.word);
    EXPECT_EQ(zt::inbox::outcome(*answer), row.outcome);
  }
}

TEST(AnswerTest, ReadsNothingElse) {
  for (const char* word :
       {"", "Accept", "accept ", "error", "error:", "error:50", "error:5030", "error:199",
        "error:100", "error:600", "error:+50", "error:-50", "error:5e2", "error: 50", "hang:1"}) {
    EXPECT_FALSE(parseAnswer(word)) << word;
  }
}

}  // namespace
