#include "ztportal/platform/desktop/PackageVersion.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include "ztportal/base/Text.h"
#include "ztportal/platform/files/LinuxFiles.h"
#include "ztportal/platform/files/RegularFile.h"
#include "ztportal/platform/process/LinuxChildProcess.h"
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

/// The value behind `field` when `line` has it ("Version: 1.2").
std::optional<std::string_view> valueOf(std::string_view line, std::string_view field) {
  if (!line.starts_with(field)) return std::nullopt;
  line.remove_prefix(field.size());
  while (line.starts_with(' ')) line.remove_prefix(1);
  return line;
}

/// The name of the package that has `path`. Lists of packages that may be installed for several
/// architectures at once are named "PACKAGE:ARCHITECTURE.list".
std::string ownerOf(const std::string& path, const std::vector<std::string>& guesses,
                    const std::string& lists) {
  const auto owns = [&](const std::string& list) {
    const std::optional<std::string> content = regularFile(lists + list);
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

}  // namespace

std::string dpkgVersion(const std::string& path, const std::vector<std::string>& guesses,
                        const std::string& root) {
  const std::string folder = root + "/var/lib/dpkg/";
  const std::string owner = ownerOf(path, guesses, folder + "info/");
  if (owner.empty()) return {};
  const std::optional<std::string> status = regularFile(folder + "status");
  std::string_view rest = status ? *status : std::string_view();
  bool isOwner = false;
  while (!rest.empty()) {
    const std::string_view line = takeLine(rest);
    if (const auto package = valueOf(line, "Package:")) isOwner = *package == owner;
    const auto version = valueOf(line, "Version:");
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
  // It says on its standard output, too, that it knows no package: the version is marked.
  const std::string output = LinuxChildProcess("").output(
      program, {"-q", "-f", "--queryformat", "Version: %{VERSION}\\n", path});
  std::string_view rest = output;
  while (!rest.empty()) {
    if (const auto version = valueOf(takeLine(rest), "Version:")) return std::string(*version);
  }
  return {};
}

}  // namespace zt
