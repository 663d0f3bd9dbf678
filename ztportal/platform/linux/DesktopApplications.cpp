#include "ztportal/platform/linux/DesktopApplications.h"

#include <cstddef>
#include <iterator>
#include <utility>

#include "ztportal/platform/linux/ProgramPath.h"

namespace zt {

namespace {

std::vector<std::string> terminatedTexts(const std::string& output) {
  std::vector<std::string> texts;
  std::size_t start = 0;
  for (std::size_t end = output.find('\0'); end != std::string::npos;
       end = output.find('\0', start)) {
    texts.push_back(output.substr(start, end - start));
    start = end + 1;
  }
  return texts;
}

}  // namespace

DesktopApplications::DesktopApplications(std::string libexec)
    : _program(libexec + "/ztportal-applications"), _childProcess(std::move(libexec)) {}

std::optional<DesktopApplication> DesktopApplications::firstOf(
    const std::vector<std::string>& files) {
  if (files.empty()) return std::nullopt;
  std::vector<std::string> question{"entry"};
  question.insert(question.end(), files.begin(), files.end());
  return ask(question);
}

std::optional<DesktopApplication> DesktopApplications::defaultFor(const std::string& scheme) {
  if (scheme.empty()) return std::nullopt;
  return ask({"default", scheme});
}

std::optional<DesktopApplication> DesktopApplications::ask(
    const std::vector<std::string>& question) {
  constexpr std::size_t kBeforeCommand = 2;
  if (programPath(_program).empty()) return std::nullopt;
  std::vector<std::string> texts = terminatedTexts(_childProcess.output(_program, question));
  if (texts.size() < kBeforeCommand) return std::nullopt;
  DesktopApplication application;
  application.entry = std::move(texts[0]);
  if (!texts[1].empty()) application.name = texts[1];
  application.command.assign(std::make_move_iterator(texts.begin() + kBeforeCommand),
                             std::make_move_iterator(texts.end()));
  return application;
}

}  // namespace zt
