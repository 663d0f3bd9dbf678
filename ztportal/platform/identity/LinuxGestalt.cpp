// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/identity/LinuxGestalt.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>
#include <utility>

#include "ztportal/base/RegularFile.h"
#include "ztportal/base/Text.h"

namespace zt {

namespace {

struct Version {
  std::array<std::int32_t, 3> numbers{};  // 0 where the text has none
  std::size_t count = 0;
};

/// Up to three numbers, separated by dots, at the start of `text`; nothing if there is none or one
/// is too large.
std::optional<Version> leadingVersion(std::string_view text) {
  Version version;
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); version.count < version.numbers.size(); ++at) {
    if (at == end || *at < '0' || *at > '9') break;
    const auto [rest, error] = std::from_chars(at, end, version.numbers[version.count]);
    if (error != std::errc()) return std::nullopt;
    ++version.count;
    if (rest == end || *rest != '.') break;
    at = rest;
  }
  if (version.count == 0) return std::nullopt;
  return version;
}

bool refines(const Version& finer, const Version& version) {
  return finer.count > version.count &&
         std::equal(version.numbers.begin(),
                    version.numbers.begin() + static_cast<std::ptrdiff_t>(version.count),
                    finer.numbers.begin());
}

bool isBlank(char character) { return character == ' ' || character == '\t' || character == '\r'; }

/// The right-hand side of an assignment as a shell reads it; nothing for an open quote.
std::optional<std::string> unquoted(std::string_view text) {
  constexpr std::string_view kEscapedInQuotes = "\\\"$`";
  std::string value;
  char quote = '\0';
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char character = text[i];
    const bool hasNext = i + 1 < text.size();
    if (quote == '\0' && isBlank(character)) break;
    if (character == quote) {
      quote = '\0';
    } else if (quote == '\0' && (character == '"' || character == '\'')) {
      quote = character;
    } else if (character == '\\' && hasNext &&
               (quote == '\0' ||
                (quote == '"' && kEscapedInQuotes.find(text[i + 1]) != std::string_view::npos))) {
      value += text[++i];
    } else {
      value += character;
    }
  }
  if (quote != '\0') return std::nullopt;
  return value;
}

struct Release {
  std::string id;
  std::string version;  // for people: "22.04.3 LTS (Jammy Jellyfish)"
  std::string versionId;
};

Release parseRelease(std::string_view text) {
  Release release;
  while (!text.empty()) {
    std::string_view line = takeLine(text);
    while (!line.empty() && isBlank(line.front())) line.remove_prefix(1);
    const std::size_t equals = line.find('=');
    if (line.starts_with('#') || equals == std::string_view::npos) continue;
    const std::string_view name = line.substr(0, equals);
    std::string* const target = name == "ID"           ? &release.id
                                : name == "VERSION"    ? &release.version
                                : name == "VERSION_ID" ? &release.versionId
                                                       : nullptr;
    if (target == nullptr) continue;
    if (auto value = unquoted(line.substr(equals + 1))) *target = std::move(*value);
  }
  return release;
}

class ReleaseFiles {
 public:
  explicit ReleaseFiles(const std::string& root) : _root(root) {}

  std::optional<Version> version() {
    std::optional<std::string> text = read("/etc/os-release");
    if (!text) text = read("/usr/lib/os-release");
    if (!text) return std::nullopt;
    const Release release = parseRelease(*text);
    const std::optional<Version> version = leadingVersion(release.versionId);
    if (!version) return std::nullopt;
    for (const auto& finer :
         {debianVersion(release), releaseSentence("/etc/redhat-release"),
          releaseSentence("/etc/centos-release"), leadingVersion(release.version)}) {
      if (finer && refines(*finer, *version)) return finer;
    }
    return version;
  }

 private:
  std::optional<std::string> read(const char* path) {
    return regularFile(_root + path, kSettingsFileLimit);
  }

  /// Distributions derived from Debian have the file, too, with Debian's number.
  std::optional<Version> debianVersion(const Release& release) {
    if (release.id != "debian") return std::nullopt;
    const std::optional<std::string> text = read("/etc/debian_version");
    return text ? leadingVersion(*text) : std::nullopt;
  }

  /// "CentOS Linux release 7.9.2009 (Core)"
  std::optional<Version> releaseSentence(const char* path) {
    constexpr std::string_view kBeforeNumber = "release ";
    const std::optional<std::string> text = read(path);
    if (!text) return std::nullopt;
    const std::size_t at = text->find(kBeforeNumber);
    if (at == std::string::npos) return std::nullopt;
    return leadingVersion(std::string_view(*text).substr(at + kBeforeNumber.size()));
  }

  const std::string& _root;
};

std::int32_t packed(const Version& version) {
  constexpr std::int32_t kLeast = 0x1040;
  const std::int32_t major = std::min(version.numbers[0], 99);
  const std::int32_t minor = std::min(version.numbers[1], 9);
  const std::int32_t bugFix = std::min(version.numbers[2], 9);
  return std::max(major / 10 * 0x1000 + major % 10 * 0x100 + minor * 0x10 + bugFix, kLeast);
}

}  // namespace

LinuxGestalt::LinuxGestalt(std::string root) : _root(std::move(root)) {}

std::optional<std::int32_t> LinuxGestalt::ask(std::uint32_t selector) {
  if (selector != kGestaltSystemVersion && selector != kGestaltSystemVersionMajor &&
      selector != kGestaltSystemVersionMinor && selector != kGestaltSystemVersionBugFix) {
    return std::nullopt;
  }
  const std::optional<Version> version = ReleaseFiles(_root).version();
  if (!version) return std::nullopt;
  switch (selector) {
    case kGestaltSystemVersionMajor:
      return version->numbers[0];
    case kGestaltSystemVersionMinor:
      return version->numbers[1];
    case kGestaltSystemVersionBugFix:
      return version->numbers[2];
    default:
      return packed(*version);
  }
}

}  // namespace zt
