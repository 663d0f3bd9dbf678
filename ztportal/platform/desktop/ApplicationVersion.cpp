#include "ztportal/platform/desktop/ApplicationVersion.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include "ztportal/base/RegularFile.h"
#include "ztportal/base/Text.h"
#include "ztportal/platform/desktop/ApplicationFiles.h"
#include "ztportal/platform/desktop/DesktopEntries.h"
#include "ztportal/platform/desktop/Metainfo.h"
#include "ztportal/platform/files/LinuxFiles.h"
#include "ztportal/platform/process/LinuxSubprocesses.h"
#include "ztportal/platform/process/ProgramPath.h"

namespace zt {

namespace {

constexpr std::string_view kListEnding = ".list";

bool hasLine(std::string_view text, std::string_view line) {
  for (std::size_t at = text.find(line); at != std::string_view::npos;
       at = text.find(line, at + 1)) {
    const std::size_t end = at + line.size();
    if ((at == 0 || text[at - 1] == '\n') && (end == text.size() || text[end] == '\n')) return true;
  }
  return false;
}

/// The value in a line that starts with `field` ("Version: 1.2").
std::optional<std::string_view> fieldOf(std::string_view line, std::string_view field) {
  if (!line.starts_with(field)) return std::nullopt;
  line.remove_prefix(field.size());
  while (line.starts_with(' ')) line.remove_prefix(1);
  return line;
}

/// The name of the package that contains `path`. The list of a package that can be installed for
/// several architectures is named "PACKAGE:ARCHITECTURE.list".
std::string ownerOf(const std::string& path, const std::vector<std::string>& guesses,
                    const std::string& lists) {
  const auto owns = [&](const std::string& list) {
    const std::optional<std::string> content = regularFile(lists + list, kPackageFileLimit);
    return content && hasLine(*content, path);
  };
  for (const std::string& guess : guesses) {
    if (owns(guess + std::string(kListEnding))) return guess;
  }
  for (const std::string& name : LinuxFiles().list(lists).value_or(std::vector<std::string>())) {
    if (!name.ends_with(kListEnding) || !owns(name)) continue;
    return name.substr(0, std::min(name.find(':'), name.size() - kListEnding.size()));
  }
  return {};
}

std::string upstreamPart(std::string_view version) {
  const std::size_t colon = version.find(':');
  if (colon != std::string_view::npos) version.remove_prefix(colon + 1);
  return std::string(version.substr(0, version.rfind('-')));
}

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
    std::string version = dpkgVersion(file, guesses, root);
    if (version.empty()) version = rpmVersion(file, root);
    if (!version.empty()) return version;
  }
  return {};
}

}  // namespace

std::string dpkgVersion(const std::string& path, const std::vector<std::string>& guesses,
                        const std::string& root) {
  const std::string folder = root + "/var/lib/dpkg/";
  const std::string owner = ownerOf(path, guesses, folder + "info/");
  if (owner.empty()) return {};
  const std::optional<std::string> status = regularFile(folder + "status", kPackageFileLimit);
  std::string_view rest = status ? *status : std::string_view();
  bool isOwner = false;
  while (!rest.empty()) {
    const std::string_view line = takeLine(rest);
    if (const auto package = fieldOf(line, "Package:")) isOwner = *package == owner;
    const auto version = fieldOf(line, "Version:");
    if (isOwner && version) return upstreamPart(*version);
  }
  return {};
}

std::string rpmVersion(const std::string& path, const std::string& root) {
  constexpr std::array<const char*, 6> kDatabases = {"/var/lib/rpm/rpmdb.sqlite",
                                                     "/var/lib/rpm/Packages.db",
                                                     "/var/lib/rpm/Packages",
                                                     "/usr/lib/sysimage/rpm/rpmdb.sqlite",
                                                     "/usr/lib/sysimage/rpm/Packages.db",
                                                     "/usr/lib/sysimage/rpm/Packages"};
  std::error_code ignored;
  const bool hasDatabase = std::any_of(kDatabases.begin(), kDatabases.end(), [&](const char* file) {
    return std::filesystem::exists(root + file, ignored);
  });
  const std::string program = hasDatabase ? programPath("rpm") : "";
  if (program.empty()) return {};
  // rpm also writes its errors to standard output, so the version is marked.
  const std::string output = LinuxSubprocesses("").output(
      program, {"-q", "-f", "--queryformat", "Version: %{VERSION}\\n", path});
  std::string_view rest = output;
  while (!rest.empty()) {
    if (const auto version = fieldOf(takeLine(rest), "Version:")) return std::string(*version);
  }
  return {};
}

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
