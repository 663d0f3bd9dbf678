// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/desktop/PackageVersion.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include "ztportal/base/RegularFile.h"
#include "ztportal/base/Text.h"
#include "ztportal/platform/files/LinuxFiles.h"
#include "ztportal/platform/process/LinuxSubprocesses.h"
#include "ztportal/platform/process/ProgramPath.h"

namespace zt {

namespace {

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

std::string upstreamPart(std::string_view version) {
  const std::size_t colon = version.find(':');
  if (colon != std::string_view::npos) version.remove_prefix(colon + 1);
  return std::string(version.substr(0, version.rfind('-')));
}

/// The folders in `folder`, those that begin with a guess first.
std::vector<std::string> guessedFirst(const std::string& folder,
                                      const std::vector<std::string>& guesses) {
  std::vector<std::string> names = LinuxFiles().list(folder).value_or(std::vector<std::string>());
  std::partition(names.begin(), names.end(), [&](const std::string& name) {
    return std::any_of(guesses.begin(), guesses.end(), [&](const std::string& guess) {
      return name.starts_with(guess) && name.substr(guess.size()).starts_with('-');
    });
  });
  return names;
}

constexpr std::string_view kListEnding = ".list";

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

/// The database of dpkg(1).
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

/// The database of rpm(8), which only that can read.
std::string rpmVersion(const std::string& path, const std::vector<std::string>& /*guesses*/,
                       const std::string& root) {
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

/// The database of pacman(8): a folder for each package, with the paths of its files without the
/// first slash.
std::string pacmanVersion(const std::string& path, const std::vector<std::string>& guesses,
                          const std::string& root) {
  const std::string folder = root + "/var/lib/pacman/local/";
  for (const std::string& package : guessedFirst(folder, guesses)) {
    const auto files = regularFile(folder + package + "/files", kPackageFileLimit);
    if (!files || !hasLine(*files, std::string_view(path).substr(1))) continue;
    const auto description = regularFile(folder + package + "/desc", kPackageFileLimit);
    std::string_view rest = description ? *description : std::string_view();
    while (!rest.empty()) {
      if (takeLine(rest) == "%VERSION%") return upstreamPart(takeLine(rest));
    }
  }
  return {};
}

/// The database of apk: one file with a line "V:" for each package, and for its files the folder in
/// a line "F:", without the first slash, and the name in a line "R:".
std::string apkVersion(const std::string& path, const std::vector<std::string>& /*guesses*/,
                       const std::string& root) {
  const std::size_t slash = path.rfind('/');
  const std::string folder = "F:" + path.substr(1, std::max<std::size_t>(slash, 1) - 1);
  const std::string name = "R:" + path.substr(slash + 1);
  for (const char* file : {"/lib/apk/db/installed", "/usr/lib/apk/db/installed"}) {
    const auto content = regularFile(root + file, kPackageFileLimit);
    std::string_view rest = content ? *content : std::string_view();
    std::string_view version;
    bool isInFolder = false;
    while (!rest.empty()) {
      const std::string_view line = takeLine(rest);
      if (const auto value = fieldOf(line, "V:")) version = *value;
      if (line.starts_with("F:")) isInFolder = line == folder;
      if (isInFolder && line == name) return upstreamPart(version);
    }
  }
  return {};
}

/// The version in the name of a Portage package: "128.5.0" in "firefox-bin-128.5.0-r1".
std::string portageVersionIn(std::string_view package) {
  const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
  const std::size_t revision = package.rfind("-r");
  if (revision != std::string_view::npos && revision + 2 < package.size() &&
      std::all_of(package.begin() + static_cast<std::ptrdiff_t>(revision) + 2, package.end(),
                  isDigit)) {
    package = package.substr(0, revision);
  }
  return std::string(package.substr(package.rfind('-') + 1));
}

/// The database of Portage: a folder for each category, and in it one for each package, whose
/// content has a line "obj PATH CHECKSUM TIME" for each file.
std::string portageVersion(const std::string& path, const std::vector<std::string>& guesses,
                           const std::string& root) {
  const std::string folder = root + "/var/db/pkg/";
  const std::string start = "obj " + path + " ";
  const std::string lineStart = "\n" + start;
  for (const std::string& category : guessedFirst(folder, {})) {
    const std::string packages = folder + category + "/";
    for (const std::string& package : guessedFirst(packages, guesses)) {
      std::string file = packages;
      file.append(package).append("/CONTENTS");
      const auto content = regularFile(file, kPackageFileLimit);
      if (!content) continue;
      if (content->starts_with(start) || content->find(lineStart) != std::string::npos) {
        return portageVersionIn(package);
      }
    }
  }
  return {};
}

}  // namespace

std::string packageVersion(const std::string& path, const std::vector<std::string>& guesses,
                           const std::string& root) {
  if (!path.starts_with('/')) return {};
  for (const auto find : {dpkgVersion, rpmVersion, pacmanVersion, apkVersion, portageVersion}) {
    std::string version = find(path, guesses, root);
    if (!version.empty()) return version;
  }
  return {};
}

}  // namespace zt
