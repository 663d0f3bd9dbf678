// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ztportal/base/ZtString.h"
#include "ztportal/platform/process/LinuxSubprocesses.h"

namespace zt {

/// An application as its desktop entry describes it.
struct DesktopApplication {
  std::string entry;  // path of the entry's file
  ZtString name;      // the one without a language; missing if the entry has none
  std::vector<std::string> command;
};

class DesktopAnswers;

/// Asks GIO about applications: which desktop entries are usable, their names and commands, the
/// user's default applications. GIO starts threads, so it runs in the program
/// `ztportal-applications`, once for each question unless `asking` has asked it before. Without
/// that program there is no answer.
///
/// Throws a ZtException if the program exists but cannot be started. Without state: one object
/// serves all threads.
class DesktopApplications {
 public:
  /// The arguments of the program.
  using Question = std::vector<std::string>;

  /// `libexec` is the folder with the library's programs.
  explicit DesktopApplications(std::string libexec);

  /// The application of the first usable entry of `files`. An entry without a program is skipped; a
  /// hidden one ends the list, because it overrides the next ones.
  std::optional<DesktopApplication> firstOf(const std::vector<std::string>& files);

  /// The user's default application for URLs of a scheme ("http") among those in `dataFolders`.
  std::optional<DesktopApplication> defaultFor(const std::string& scheme,
                                               const std::vector<std::string>& dataFolders);

  /// The questions of the two functions above; empty if the answer is known to be none.
  static Question questionForFirstOf(const std::vector<std::string>& files);
  static Question questionForDefault(const std::string& scheme,
                                     const std::vector<std::string>& dataFolders);

  /// Starts the program for all `questions` and returns without waiting for it. The result answers
  /// them, and those about single entries that it has seen, from the program's output; other
  /// questions, and all if the program cannot be started, like this object. Used by one thread.
  DesktopApplications asking(const std::vector<Question>& questions) const;

 private:
  std::optional<DesktopApplication> ask(const Question& question);

  std::string _program;
  LinuxSubprocesses _subprocesses;
  std::shared_ptr<DesktopAnswers> _answers;  // null if questions are asked when needed
};

}  // namespace zt
