#include "ztportal/platform/desktop/DesktopEntryFiles.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>

#include "ztportal/base/Text.h"
#include "ztportal/platform/files/LinuxSupportFolder.h"

namespace zt {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kApplications = "/applications/";

std::string joined(std::string_view start, std::string_view end) {
  std::string path;
  appendText(path, start, end);
  return path;
}

/// Relative paths in the variables do not count, by their definition.
void addFolder(std::vector<std::string>& folders, std::string_view folder) {
  while (folder.size() > 1 && folder.ends_with('/')) folder.remove_suffix(1);
  if (!folder.starts_with('/')) return;
  if (std::find(folders.begin(), folders.end(), folder) != folders.end()) return;
  folders.emplace_back(folder);
}

/// The file of the ID `rest` in `folder`, which ends in a slash.
std::optional<std::string> entryIn(const std::string& folder, std::string_view rest) {
  std::error_code ignored;
  std::string file = joined(folder, rest);
  if (fs::is_regular_file(file, ignored)) return file;
  for (std::size_t dash = rest.find('-'); dash != std::string_view::npos;
       dash = rest.find('-', dash + 1)) {
    std::string below = folder;
    below.append(rest.substr(0, dash)).append("/");
    if (dash == 0 || !fs::is_directory(below, ignored)) continue;
    if (auto found = entryIn(below, rest.substr(dash + 1))) return found;
  }
  return std::nullopt;
}

}  // namespace

std::vector<std::string> dataFolders(const std::string& root) {
  std::vector<std::string> folders;
  const std::optional<std::string> own = LinuxSupportFolder().path(kUserDomain);
  if (own) addFolder(folders, *own);

  const char* const variable = std::getenv("XDG_DATA_DIRS");
  std::string_view rest = variable != nullptr ? variable : "";
  if (rest.empty()) {
    addFolder(folders, joined(root, "/usr/local/share"));
    addFolder(folders, joined(root, "/usr/share"));
  }
  while (!rest.empty()) {
    const std::size_t colon = std::min(rest.find(':'), rest.size());
    addFolder(folders, rest.substr(0, colon));
    rest.remove_prefix(std::min(colon + 1, rest.size()));
  }

  if (own) addFolder(folders, joined(*own, "/flatpak/exports/share"));
  addFolder(folders, joined(root, "/var/lib/flatpak/exports/share"));
  addFolder(folders, joined(root, "/var/lib/snapd/desktop"));
  return folders;
}

std::vector<std::string> desktopEntryFiles(const std::vector<std::string>& dataFolders,
                                           std::string_view desktopId) {
  std::vector<std::string> files;
  if (desktopId.find('/') != std::string_view::npos) return files;
  for (const std::string& folder : dataFolders) {
    if (auto file = entryIn(joined(folder, kApplications), desktopId)) {
      files.push_back(*std::move(file));
    }
  }
  return files;
}

std::string desktopIdOf(const std::vector<std::string>& dataFolders, const std::string& path) {
  for (const std::string& folder : dataFolders) {
    const std::string start = joined(folder, kApplications);
    if (!path.starts_with(start)) continue;
    std::string id = path.substr(start.size());
    std::replace(id.begin(), id.end(), '/', '-');
    return id;
  }
  return path.substr(path.rfind('/') + 1);
}

}  // namespace zt
