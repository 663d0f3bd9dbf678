#include "ztportal/platform/desktop/DesktopAnswers.h"

#include <charconv>
#include <cstddef>
#include <iterator>
#include <utility>

namespace zt {

namespace {

/// Takes the next text, which a NUL byte ends, out of `rest`; nothing when there is none.
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

/// Takes the texts of an answer, led by their number; nothing when they are not all there.
std::optional<std::vector<std::string>> takeTexts(std::string_view& rest) {
  const auto number = takeText(rest);
  std::size_t count = 0;
  if (!number ||
      std::from_chars(number->data(), number->data() + number->size(), count).ec != std::errc()) {
    return std::nullopt;
  }
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < count; ++i) {
    const auto text = takeText(rest);
    if (!text) return std::nullopt;
    texts.emplace_back(*text);
  }
  return texts;
}

}  // namespace

DesktopAnswers::Question DesktopAnswers::words(const std::vector<Question>& questions) {
  Question words{"several"};
  for (const Question& question : questions) {
    words.push_back(std::to_string(question.size()));
    words.insert(words.end(), question.begin(), question.end());
  }
  return words;
}

DesktopAnswers::Answer DesktopAnswers::parse(std::string_view output) {
  return applicationOf(textsOf(output));
}

DesktopAnswers::DesktopAnswers(std::vector<Question> questions,
                               std::unique_ptr<RunningChild> program)
    : _questions(std::move(questions)), _program(std::move(program)) {}

const DesktopAnswers::Answer* DesktopAnswers::find(const Question& question) {
  if (_program != nullptr) readAll();
  const auto found = _answers.find(question);
  return found != _answers.end() ? &found->second : nullptr;
}

void DesktopAnswers::readAll() {
  const std::string output = _program->readToEnd();
  _program.reset();
  std::string_view rest = output;
  for (const Question& question : _questions) {
    auto texts = takeTexts(rest);
    if (!texts) return;
    const Answer& answer = _answers[question] = applicationOf(*std::move(texts));
    // An entry that was found is usable, which is all that there is to say of it alone.
    if (answer) _answers[DesktopApplications::questionForFirstOf({answer->entry})] = answer;
  }
}

}  // namespace zt
