// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/desktop/DesktopApplications.h"

#include <cstddef>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ztportal/base/Log.h"
#include "ztportal/base/Text.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/platform/process/ProgramPath.h"

namespace zt {

/// The replies of `ztportal-applications` to several questions, read when the first of them is
/// needed. Used by one thread.
class DesktopAnswers {
 public:
  using Question = DesktopApplications::Question;
  using Answer = std::optional<DesktopApplication>;

  /// `program` has been started with the arguments for `questions`.
  DesktopAnswers(std::vector<Question> questions, std::unique_ptr<RunningSubprocess> program);

  /// The answer, valid as long as this object; null if the program did not reply to `question`.
  const Answer* find(const Question& question);

 private:
  void readAll();

  std::vector<Question> _questions;
  std::unique_ptr<RunningSubprocess> _program;  // null once its output has been read
  std::map<Question, Answer> _answers;
};

namespace {

/// Removes the next string, which a NUL byte ends, from `rest`; nothing if there is none.
std::optional<std::string_view> takeText(std::string_view& rest) {
  const std::size_t end = rest.find('\0');
  if (end == std::string_view::npos) return std::nullopt;
  const std::string_view text = rest.substr(0, end);
  rest.remove_prefix(end + 1);
  return text;
}

std::vector<std::string> textsOf(std::string_view output) {
  std::vector<std::string> texts;
  while (const auto text = takeText(output)) texts.emplace_back(*text);
  return texts;
}

DesktopAnswers::Answer applicationOf(std::vector<std::string> texts) {
  constexpr std::size_t kBeforeCommand = 2;
  if (texts.size() < kBeforeCommand) return std::nullopt;
  DesktopApplication application;
  application.entry = std::move(texts[0]);
  if (!texts[1].empty()) application.name = texts[1];
  application.command.assign(std::make_move_iterator(texts.begin() + kBeforeCommand),
                             std::make_move_iterator(texts.end()));
  return application;
}

/// Removes the strings of an answer, which follow their number; nothing if they are incomplete.
std::optional<std::vector<std::string>> takeTexts(std::string_view& rest) {
  const auto number = takeText(rest);
  const auto count = number ? parseNumber<std::size_t>(*number) : std::nullopt;
  if (!count) return std::nullopt;
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < *count; ++i) {
    const auto text = takeText(rest);
    if (!text) return std::nullopt;
    texts.emplace_back(*text);
  }
  return texts;
}

/// The arguments that ask the program all `questions`.
DesktopAnswers::Question wordsOf(const std::vector<DesktopAnswers::Question>& questions) {
  DesktopAnswers::Question words{"several"};
  for (const DesktopAnswers::Question& question : questions) {
    words.push_back(std::to_string(question.size()));
    words.insert(words.end(), question.begin(), question.end());
  }
  return words;
}

}  // namespace

DesktopAnswers::DesktopAnswers(std::vector<Question> questions,
                               std::unique_ptr<RunningSubprocess> program)
    : _questions(std::move(questions)), _program(std::move(program)) {}

const DesktopAnswers::Answer* DesktopAnswers::find(const Question& question) {
  if (_program != nullptr) readAll();
  const auto found = _answers.find(question);
  return found != _answers.end() ? &found->second : nullptr;
}

void DesktopAnswers::readAll() {
  const std::optional<std::string> output = _program->readToEnd();
  _program.reset();
  // A program that hangs is not asked again.
  if (!output) {
    for (const Question& question : _questions) _answers[question] = std::nullopt;
    return;
  }
  std::string_view rest = *output;
  for (const Question& question : _questions) {
    auto texts = takeTexts(rest);
    if (!texts) {
      log(ZtLogLevel::Warning, "inventory", "ztportal-applications did not answer every question");
      return;
    }
    const Answer& answer = _answers[question] = applicationOf(*std::move(texts));
    // An entry that was found is usable, so this also answers the question for it alone.
    if (answer) _answers[DesktopApplications::questionForFirstOf({answer->entry})] = answer;
  }
}

DesktopApplications::DesktopApplications(std::string libexec)
    : _program(libexec + "/ztportal-applications"), _subprocesses(std::move(libexec)) {}

std::optional<DesktopApplication> DesktopApplications::firstOf(
    const std::vector<std::string>& files) {
  return ask(questionForFirstOf(files));
}

std::optional<DesktopApplication> DesktopApplications::defaultFor(
    const std::string& scheme, const std::vector<std::string>& dataFolders) {
  return ask(questionForDefault(scheme, dataFolders));
}

DesktopApplications::Question DesktopApplications::questionForFirstOf(
    const std::vector<std::string>& files) {
  if (files.empty()) return {};
  Question question{"entry"};
  question.insert(question.end(), files.begin(), files.end());
  return question;
}

DesktopApplications::Question DesktopApplications::questionForDefault(
    const std::string& scheme, const std::vector<std::string>& dataFolders) {
  if (scheme.empty()) return {};
  Question question{"default", scheme};
  question.insert(question.end(), dataFolders.begin(), dataFolders.end());
  return question;
}

DesktopApplications DesktopApplications::asking(const std::vector<Question>& questions) const {
  DesktopApplications prepared = *this;
  if (questions.empty()) return prepared;
  if (programPath(_program).empty()) {
    logOnce(ZtLogLevel::Warning, "inventory",
            "ztportal-applications is not installed, or others may change its folder: no "
            "applications are found");
    return prepared;
  }
  try {
    prepared._answers = std::make_shared<DesktopAnswers>(
        questions, _subprocesses.start(_program, wordsOf(questions)));
  } catch (const ZtException&) {
    // The questions are asked one by one, and fail then.
  }
  return prepared;
}

std::optional<DesktopApplication> DesktopApplications::ask(const Question& question) {
  if (question.empty() || programPath(_program).empty()) return std::nullopt;
  if (_answers != nullptr) {
    if (const DesktopAnswers::Answer* known = _answers->find(question)) return *known;
  }
  return applicationOf(textsOf(_subprocesses.start(_program, question)->readToEnd().value_or("")));
}

}  // namespace zt
