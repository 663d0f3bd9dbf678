#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ztportal/platform/desktop/DesktopApplications.h"
#include "ztportal/platform/process/RunningChild.h"

namespace zt {

/// What the program `ztportal-applications` says, and its answers to several questions at once,
/// read when the first of them is asked for. Used by one thread.
class DesktopAnswers {
 public:
  using Question = DesktopApplications::Question;
  using Answer = std::optional<DesktopApplication>;

  /// The words that ask the program all `questions`.
  static Question words(const std::vector<Question>& questions);
  /// The answer to a single question.
  static Answer parse(std::string_view output);

  /// `program` was started with the words of `questions`.
  DesktopAnswers(std::vector<Question> questions, std::unique_ptr<RunningChild> program);

  /// The answer, valid as long as this object; null when there is none, not even that there is no
  /// such application.
  const Answer* find(const Question& question);

 private:
  void readAll();

  std::vector<Question> _questions;
  std::unique_ptr<RunningChild> _program;  // null once its answers were read
  std::map<Question, Answer> _answers;
};

}  // namespace zt
