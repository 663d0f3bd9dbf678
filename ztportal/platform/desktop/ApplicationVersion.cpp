// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/desktop/ApplicationVersion.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>

#include "ztportal/base/RegularFile.h"
#include "ztportal/base/Text.h"
#include "ztportal/platform/desktop/ApplicationFiles.h"
#include "ztportal/platform/desktop/DesktopEntries.h"
#include "ztportal/platform/desktop/Metainfo.h"
#include "ztportal/platform/desktop/PackageVersion.h"

namespace zt {

namespace {

/// The value in a line that consists of `key`, `separator` and the value, with blanks around each;
/// nothing for any other line.
std::optional<std::string_view> valueOf(std::string_view line, std::string_view key,
                                        char separator) {
  const std::size_t at = line.find(separator);
  if (at == std::string_view::npos || trimmed(line.substr(0, at)) != key) return std::nullopt;
  return trimmed(line.substr(at + 1));
}

/// `Version` in the section `[App]`.
std::string versionOfMozilla(const std::string& folder) {
  const std::optional<std::string> content =
      regularFile(folder + "/application.ini", kSettingsFileLimit);
  std::string_view rest = content ? *content : std::string_view();
  bool isApplication = false;
  while (!rest.empty()) {
    const std::string_view line = trimmed(takeLine(rest));
    if (line.starts_with('[')) isApplication = line == "[App]";
    if (!isApplication) continue;
    if (const auto version = valueOf(line, "Version", '=')) return std::string(*version);
  }
  return {};
}

/// `version` at the top level, in quotes or without.
std::string versionOfSnap(const std::string& file) {
  const std::optional<std::string> content = regularFile(file, kSettingsFileLimit);
  std::string_view rest = content ? *content : std::string_view();
  while (!rest.empty()) {
    const std::string_view line = takeLine(rest);
    if (line.starts_with(' ')) continue;
    auto version = valueOf(line, "version", ':');
    if (!version) continue;
    const bool isQuoted = version->size() >= 2 && version->front() == version->back() &&
                          (version->front() == '\'' || version->front() == '"');
    return std::string(isQuoted ? version->substr(1, version->size() - 2) : *version);
  }
  return {};
}

std::string versionOfPackage(const DesktopApplication& application, const std::string& desktopId,
                             const std::vector<std::string>& dataFolders, const std::string& root) {
  std::vector<std::string> files{application.entry};
  for (const std::string& file : desktopEntryFiles(dataFolders, desktopId)) {
    if (file != application.entry) files.push_back(file);
  }
  std::vector<std::string> guesses{desktopId.substr(0, desktopId.rfind(".desktop"))};
  if (!application.command.empty()) {
    guesses.push_back(std::filesystem::path(application.command.front()).filename().string());
  }
  for (const std::string& file : files) {
    std::string version = packageVersion(file, guesses, root);
    if (!version.empty()) return version;
  }
  return {};
}

}  // namespace

std::string versionOf(const DesktopApplication& application,
                      const std::vector<std::string>& dataFolders, const std::string& root) {
  const ApplicationFiles files = applicationFiles(application.command, root);
  for (const std::string& folder : files.programFolders) {
    std::string version = versionOfMozilla(folder);
    if (!version.empty()) return version;
  }
  const std::string desktopId = desktopIdOf(dataFolders, application.entry);
  std::string version = newestRelease(files.dataFolders, desktopId);
  if (version.empty()) version = newestRelease(dataFolders, desktopId);
  if (version.empty() && !files.snapInfo.empty()) version = versionOfSnap(files.snapInfo);
  if (!version.empty()) return version;
  return versionOfPackage(application, desktopId, dataFolders, root);
}

}  // namespace zt
