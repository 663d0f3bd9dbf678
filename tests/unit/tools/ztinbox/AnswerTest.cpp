#include <gtest/gtest.h>

#include <string>

#include "tools/ztinbox/http/Answer.h"

namespace {

using zt::inbox::Answer;
using zt::inbox::AnswerKind;
using zt::inbox::parseAnswer;

struct Row {
  const char* word;
  Answer answer;
  const char* outcome;
};

constexpr Row kRows[] = {
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
  for (const Row& row : kRows) {
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
