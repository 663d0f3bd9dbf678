#include "ztportal/platform/desktop/DesktopApplications.h"

#include <utility>

#include "ztportal/base/ZtException.h"
#include "ztportal/platform/desktop/DesktopAnswers.h"
#include "ztportal/platform/process/ProgramPath.h"

namespace zt {

DesktopApplications::DesktopApplications(std::string libexec)
    : _program(libexec + "/ztportal-applications"), _childProcess(std::move(libexec)) {}

std::optional<DesktopApplication> DesktopApplications::firstOf(
    const std::vector<std::string>& files) {
  return ask(questionForFirstOf(files));
}

std::optional<DesktopApplication> DesktopApplications::defaultFor(const std::string& scheme) {
  return ask(questionForDefault(scheme));
}

DesktopApplications::Question DesktopApplications::questionForFirstOf(
    const std::vector<std::string>& files) {
  if (files.empty()) return {};
  Question question{"entry"};
  question.insert(question.end(), files.begin(), files.end());
  return question;
}

DesktopApplications::Question DesktopApplications::questionForDefault(const std::string& scheme) {
  if (scheme.empty()) return {};
  return {"default", scheme};
}

DesktopApplications DesktopApplications::asking(const std::vector<Question>& questions) const {
  DesktopApplications prepared = *this;
  if (questions.empty() || programPath(_program).empty()) return prepared;
  try {
    prepared._answers = std::make_shared<DesktopAnswers>(
        questions, _childProcess.start(_program, DesktopAnswers::words(questions)));
  } catch (const ZtException&) {
    // Whoever asks will see.
  }
  return prepared;
}

std::optional<DesktopApplication> DesktopApplications::ask(const Question& question) {
  if (question.empty() || programPath(_program).empty()) return std::nullopt;
  if (_answers != nullptr) {
    if (const DesktopAnswers::Answer* known = _answers->find(question)) return *known;
  }
  return DesktopAnswers::parse(_childProcess.output(_program, question));
}

}  // namespace zt
