#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ztportal/base/ZtString.h"
#include "ztportal/platform/process/LinuxChildProcess.h"

namespace zt {

/// An application as its desktop entry describes it.
struct DesktopApplication {
  std::string entry;  // path of the entry's file
  ZtString name;      // in the user's language; missing when the entry has none
  std::vector<std::string> command;
};

class DesktopAnswers;

/// What only the desktop's own library knows of applications: which entries are usable, their names
/// in the user's language, the user's default applications. GIO starts threads, so it is asked by
/// the program `ztportal-applications`, once a question unless it was asked before (`asking`).
/// Without that program there is no answer.
///
/// Raises a ZtException when the program is there, but cannot be started. Without state: one object
/// serves all threads.
class DesktopApplications {
 public:
  /// What the program is asked, in its own words.
  using Question = std::vector<std::string>;

  /// `libexec` is the folder with the library's programs.
  explicit DesktopApplications(std::string libexec);

  /// The application of the first usable entry of `files`. One that belongs to no program is left
  /// out; one that says that it is hidden ends the list, as it takes the place of those behind.
  std::optional<DesktopApplication> firstOf(const std::vector<std::string>& files);

  /// The user's default application for URLs of a scheme ("http").
  std::optional<DesktopApplication> defaultFor(const std::string& scheme);

  /// The questions of both; empty where there is nothing to ask.
  static Question questionForFirstOf(const std::vector<std::string>& files);
  static Question questionForDefault(const std::string& scheme);

  /// Starts the program to answer all `questions` at once, and returns without waiting for it. The
  /// result answers them, and as to the entries that it met, from what the program says; anything
  /// else, and all when the program cannot be started, as this object does. Used by one thread.
  DesktopApplications asking(const std::vector<Question>& questions) const;

 private:
  std::optional<DesktopApplication> ask(const Question& question);

  std::string _program;
  LinuxChildProcess _childProcess;
  std::shared_ptr<DesktopAnswers> _answers;  // null: every question is asked by itself
};

}  // namespace zt
