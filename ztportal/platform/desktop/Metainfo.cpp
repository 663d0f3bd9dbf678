// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/desktop/Metainfo.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <system_error>

#include "ztportal/base/RegularFile.h"
#include "ztportal/base/Text.h"
#include "ztportal/platform/files/LinuxFiles.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"

namespace zt {

namespace {

std::vector<std::string> metainfoFiles(const std::string& dataFolder) {
  std::vector<std::string> files;
  for (const char* kind : {"/metainfo", "/appdata"}) {
    const std::string folder = dataFolder + kind;
    std::vector<std::string> names = LinuxFiles().list(folder).value_or(std::vector<std::string>());
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) {
      if (!name.ends_with(".metainfo.xml") && !name.ends_with(".appdata.xml")) continue;
      files.emplace_back(folder).append("/").append(name);
    }
  }
  return files;
}

ZtString attribute(const ZtXMLNode& element, std::string_view name) {
  for (const auto& [each, value] : element.attributes()) {
    if (each == name) return value;
  }
  return {};
}

bool isOf(const ZtXMLNode& component, std::string_view desktopId, std::string_view withoutEnding) {
  for (const ZtXMLNode& child : component.children()) {
    const bool isLaunchable =
        child.name() == "launchable" && attribute(child, "type") == "desktop-id";
    const bool isId = child.isElement() && child.name() == "id";
    if (!isLaunchable && !isId) continue;
    const ZtString text = child.text();
    const std::string_view id = trimmed(text.view());
    if (id == desktopId || (!isLaunchable && id == withoutEnding)) return true;
  }
  return false;
}

/// Removes a whole number from the start of `text`.
std::optional<std::int64_t> takeNumber(std::string_view& text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

/// The same behind a hyphen.
std::optional<std::int64_t> takeAfterHyphen(std::string_view& text) {
  if (!text.starts_with('-')) return std::nullopt;
  text.remove_prefix(1);
  return takeNumber(text);
}

/// Seconds since 1970 at the start of the day of an ISO 8601 date ("2024-01-31T12:00:00Z").
std::optional<std::int64_t> startOfDay(std::string_view date) {
  const auto year = takeNumber(date);
  const auto month = takeAfterHyphen(date);
  const auto day = takeAfterHyphen(date);
  if (!year || !month || !day) return std::nullopt;
  // The date types below would truncate larger numbers.
  const bool isDate =
      *year >= 0 && *year <= 9999 && *month >= 1 && *month <= 12 && *day >= 1 && *day <= 31;
  if (!isDate) return std::nullopt;
  const std::chrono::year_month_day whole{std::chrono::year(static_cast<int>(*year)),
                                          std::chrono::month(static_cast<unsigned>(*month)),
                                          std::chrono::day(static_cast<unsigned>(*day))};
  if (!whole.ok()) return std::nullopt;
  return std::chrono::seconds(std::chrono::sys_days(whole).time_since_epoch()).count();
}

std::int64_t timeOf(const ZtXMLNode& release) {
  constexpr std::int64_t kLongAgo = std::numeric_limits<std::int64_t>::min();
  const ZtString timestamp = attribute(release, "timestamp");
  std::string_view digits = timestamp.view();
  if (const auto seconds = takeNumber(digits)) return *seconds;
  return startOfDay(attribute(release, "date").view()).value_or(kLongAgo);
}

std::string newestOf(const ZtXMLNode& component) {
  std::string version;
  std::int64_t newest = 0;
  for (const ZtXMLNode& list : component.children()) {
    if (list.name() != "releases") continue;
    for (const ZtXMLNode& release : list.children()) {
      const ZtString each = attribute(release, "version");
      if (release.name() != "release" || each.empty()) continue;
      const std::int64_t time = timeOf(release);
      if (!version.empty() && time <= newest) continue;
      version = each.view();
      newest = time;
    }
  }
  return version;
}

}  // namespace

std::string newestReleaseIn(std::string_view content, std::string_view desktopId) {
  const std::string_view withoutEnding = desktopId.substr(0, desktopId.rfind(".desktop"));
  // Most files are about other applications and need not be parsed.
  if (content.find(withoutEnding) == std::string_view::npos) return {};
  const auto document = ZtXMLDocument::parseFileContent(content);
  const auto component = document ? document->rootElement() : std::nullopt;
  if (!component || !isOf(*component, desktopId, withoutEnding)) return {};
  return newestOf(*component);
}

std::string newestRelease(const std::vector<std::string>& dataFolders, std::string_view desktopId) {
  for (const std::string& folder : dataFolders) {
    for (const std::string& file : metainfoFiles(folder)) {
      const std::optional<std::string> content = regularFile(file, kSettingsFileLimit);
      std::string version = content ? newestReleaseIn(*content, desktopId) : "";
      if (!version.empty()) return version;
    }
  }
  return {};
}

}  // namespace zt
