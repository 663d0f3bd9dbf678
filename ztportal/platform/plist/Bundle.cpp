// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/plist/Bundle.h"

#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "ztportal/base/Log.h"
#include "ztportal/base/RegularFile.h"
#include "ztportal/platform/files/LinuxFiles.h"
#include "ztportal/platform/files/TrustedFiles.h"

namespace zt {

namespace {

namespace fs = std::filesystem;

fs::path infoFile(const fs::path& bundle) { return bundle / "Contents" / "Info.plist"; }
fs::path resourceFolder(const fs::path& bundle) { return bundle / "Contents" / "Resources"; }

bool isFile(const fs::path& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored);
}

/// Whether nobody else may change the file or folder `path`.
bool isSafe(const fs::path& path, uid_t owner) {
  if (isTrusted(path, owner)) return true;
  logOnce(ZtLogLevel::Warning, "configuration", path.native(),
          " is ignored, because another user may change it");
  return false;
}

bool isBundle(const fs::path& folder, uid_t owner) {
  const fs::path info = infoFile(folder);
  return isFile(info) && isSafe(info, owner) && isSafe(info.parent_path(), owner) &&
         isSafe(folder, owner);
}

std::optional<std::string> bundleAbove(const std::string& executable, uid_t owner) {
  fs::path folder = fs::path(executable).parent_path();
  while (!folder.empty()) {
    if (isBundle(folder, owner)) return folder.string();
    fs::path above = folder.parent_path();
    if (above == folder) break;
    folder = std::move(above);
  }
  return std::nullopt;
}

}  // namespace

Bundle::Bundle(std::string path, PropertyListStrings info)
    : _path(std::move(path)), _info(std::move(info)) {}

std::optional<Bundle> Bundle::at(const std::string& path) {
  return isBundle(path, ::geteuid()) ? read(path) : std::nullopt;
}

std::optional<Bundle> Bundle::above(const std::string& executable) {
  const std::optional<std::string> path = bundleAbove(executable, ownerOf(executable));
  return path ? read(*path) : std::nullopt;
}

std::optional<std::string> Bundle::pathAbove(const std::string& executable) {
  return bundleAbove(executable, ::geteuid());
}

std::optional<Bundle> Bundle::read(const std::string& path) {
  const std::optional<std::string> content = regularFile(infoFile(path), kSettingsFileLimit);
  std::optional<PropertyListStrings> info = content ? parsePropertyList(*content) : std::nullopt;
  if (!info) {
    logOnce(ZtLogLevel::Warning, "configuration", infoFile(path).native(),
            " cannot be read as a property list");
    return std::nullopt;
  }
  return Bundle(path, std::move(*info));
}

ZtString Bundle::info(const std::string& key) const {
  const auto found = _info.find(key);
  return found == _info.end() ? ZtString() : found->second;
}

std::optional<std::string> Bundle::resource(std::string_view name, std::string_view type) const {
  std::string file(name);
  if (!type.empty()) (file += '.') += type;
  const fs::path path = resourceFolder(_path) / file;
  const uid_t user = ::geteuid();
  if (!isFile(path) || !isSafe(path, user) || !isSafe(path.parent_path(), user)) {
    return std::nullopt;
  }
  return path.string();
}

std::vector<std::string> Bundle::localizations() const {
  constexpr std::string_view kEnding = ".lproj";
  std::vector<std::string> names;
  LinuxFiles files;
  const fs::path folder = resourceFolder(_path);
  for (std::string& name : files.list(folder).value_or(std::vector<std::string>())) {
    if (name.size() <= kEnding.size() || !name.ends_with(kEnding)) continue;
    if (!files.isFolder(folder / name)) continue;
    name.resize(name.size() - kEnding.size());
    names.push_back(std::move(name));
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace zt
