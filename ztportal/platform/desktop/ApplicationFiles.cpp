// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/desktop/ApplicationFiles.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include "ztportal/platform/files/LinuxFiles.h"
#include "ztportal/platform/process/ProgramPath.h"

namespace zt {

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

std::string nameOf(const std::string& path) { return fs::path(path).filename().string(); }

std::string withLinksFollowed(const std::string& path) {
  std::error_code error;
  const fs::path real = fs::canonical(path, error);
  return error ? path : real.string();
}

void addOnce(std::vector<std::string>& folders, const fs::path& folder) {
  std::string text = folder.string();
  if (std::find(folders.begin(), folders.end(), text) == folders.end()) {
    folders.push_back(std::move(text));
  }
}

/// The command that env(1) runs; `command` itself if it does not start with env.
Words withoutEnv(const Words& command) {
  if (command.empty() || nameOf(command.front()) != "env") return command;
  auto word = command.begin() + 1;
  while (word != command.end() &&
         (word->starts_with('-') || word->find('=') != std::string::npos)) {
    word += *word == "-u" && command.end() - word > 1 ? 2 : 1;
  }
  return {word, command.end()};
}

/// flatpak-run(1): the application is the first word after "run" that is not an option.
ApplicationFiles filesOfFlatpak(const Words& command, const std::string& root) {
  constexpr std::string_view kCommandOption = "--command=";
  std::string name;
  auto word = std::find(command.begin(), command.end(), "run");
  if (word != command.end()) ++word;
  for (; word != command.end() && word->starts_with('-'); ++word) {
    if (word->starts_with(kCommandOption)) name = nameOf(word->substr(kCommandOption.size()));
  }
  ApplicationFiles files;
  if (word == command.end()) return files;
  std::vector<std::string> installations;
  if (const auto own = LinuxSupportFolder().path(kUserDomain)) {
    installations.push_back(*own + "/flatpak");
  }
  installations.push_back(root + "/var/lib/flatpak");
  for (const std::string& installation : installations) {
    const fs::path deployed = fs::path(installation) / "app" / *word / "current/active/files";
    if (!name.empty()) files.programFolders.push_back(deployed / "lib" / name);
    files.dataFolders.push_back(deployed / "share");
  }
  return files;
}

/// The folder of the Snap whose program has the path `program`: a file in a folder "snap/bin" is
/// named after the Snap, or after it and its application ("chromium.chromedriver").
std::optional<fs::path> snapOf(const fs::path& program) {
  const fs::path bin = program.parent_path();
  if (bin.filename() != "bin" || bin.parent_path().filename() != "snap") return std::nullopt;
  const std::string name = program.filename().string();
  return bin.parent_path() / name.substr(0, name.find('.'));
}

ApplicationFiles filesOfSnap(const fs::path& snap) {
  const fs::path current = snap / "current";
  ApplicationFiles files;
  files.programFolders = {current / "usr/lib" / snap.filename(), current};
  files.dataFolders = {current / "usr/share"};
  files.snapInfo = current / "meta/snap.yaml";
  return files;
}

}  // namespace

std::string programOf(const Words& command) {
  const Words words = withoutEnv(command);
  const std::string path = words.empty() ? "" : programPath(words.front());
  return path.empty() ? path : withLinksFollowed(path);
}

ApplicationFiles applicationFiles(const Words& command, const std::string& root) {
  const Words words = withoutEnv(command);
  if (words.empty()) return {};
  if (nameOf(words.front()) == "flatpak") return filesOfFlatpak(words, root);
  const std::string called = programPath(words.front());
  if (called.empty()) return {};
  if (const auto snap = snapOf(called)) return filesOfSnap(*snap);

  ApplicationFiles files;
  const std::string real = withLinksFollowed(called);
  addOnce(files.programFolders, fs::path(real).parent_path());
  for (const fs::path& program : {fs::path(real), fs::path(called)}) {
    const fs::path prefix = program.parent_path().parent_path();
    addOnce(files.programFolders, prefix / "lib" / program.filename());
    addOnce(files.programFolders, prefix / "lib64" / program.filename());
    addOnce(files.programFolders, fs::path(root + "/opt") / program.filename());
  }
  return files;
}

}  // namespace zt
