#include "tools/ztinbox/http/Answer.h"

#include <algorithm>
#include <array>
#include <charconv>

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
  int number = 0;
  const auto [end, error] = std::from_chars(status.data(), status.data() + status.size(), number);
  if (error != std::errc() || end != status.data() + status.size()) return std::nullopt;
  if (number < kLowestStatus || number > kHighestStatus) return std::nullopt;
  return Answer{AnswerKind::kError, number};
}

const Row* rowOf(AnswerKind kind) {
  const auto* row = std::ranges::find(kPlainAnswers, kind, &Row::kind);
  return row == kPlainAnswers.end() ? nullptr : row;
}

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

}  // namespace zt::inbox
