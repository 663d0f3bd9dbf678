// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/desktop/DesktopEntries.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>

#include "ztportal/base/Text.h"
#include "ztportal/platform/files/LinuxFiles.h"
#include "ztportal/platform/locale/UserLocale.h"

namespace zt {

namespace {

constexpr std::string_view kEnding = ".desktop";

struct DesktopId {
  std::string_view bundleIdentifier;
  std::string_view desktopId;
};

/// In order of precedence. Beta and nightly channels are other applications.
constexpr DesktopId kDesktopIds[] = {
    {"org.mozilla.firefox", "firefox.desktop"},              // most distributions, the vendor
    {"org.mozilla.firefox", "firefox-esr.desktop"},          // Debian, openSUSE
    {"org.mozilla.firefox", "org.mozilla.firefox.desktop"},  // Flatpak, Fedora
    {"org.mozilla.firefox", "firefox_firefox.desktop"},      // Snap
    {"org.mozilla.firefox", "firefox-bin.desktop"},          // Gentoo
    {"org.mozilla.firefox", "mozilla-firefox.desktop"},      // older Fedora

    {"org.mozilla.thunderbird", "thunderbird.desktop"},                  // most distributions
    {"org.mozilla.thunderbird", "thunderbird-esr.desktop"},              // openSUSE
    {"org.mozilla.thunderbird", "net.thunderbird.Thunderbird.desktop"},  // Fedora
    {"org.mozilla.thunderbird", "org.mozilla.thunderbird.desktop"},      // Flatpak, Fedora 40
    {"org.mozilla.thunderbird", "org.mozilla.thunderbird_esr.desktop"},  // Flatpak
    {"org.mozilla.thunderbird", "org.mozilla.Thunderbird.desktop"},      // Flatpak until 2026
    {"org.mozilla.thunderbird", "thunderbird_thunderbird.desktop"},      // Snap
    {"org.mozilla.thunderbird", "thunderbird-bin.desktop"},              // Gentoo
    {"org.mozilla.thunderbird", "mozilla-thunderbird.desktop"},          // older Fedora

    {"com.operasoftware.Opera", "opera.desktop"},            // the vendor
    {"com.operasoftware.Opera", "opera-stable.desktop"},     // by the name of the package
    {"com.operasoftware.Opera", "com.opera.Opera.desktop"},  // Flatpak
    {"com.operasoftware.Opera", "opera_opera.desktop"},      // Snap

    {"com.google.Chrome", "google-chrome.desktop"},         // the vendor
    {"com.google.Chrome", "google-chrome-stable.desktop"},  // by the name of the package
    {"com.google.Chrome", "com.google.Chrome.desktop"},     // Flatpak, the vendor's newer packages
};

std::string joined(std::string_view start, std::string_view end) {
  std::string path;
  appendText(path, start, end);
  return path;
}

/// The bundle identifier in the table; empty if the ID is not in it.
std::string_view knownIdentifierOf(std::string_view desktopId) {
  for (const DesktopId& each : kDesktopIds) {
    if (each.desktopId == desktopId) return each.bundleIdentifier;
  }
  return {};
}

/// The bundle identifier for an entry that an application made for itself; empty for any other. The
/// program alone does not tell: a test version of Firefox also has the program "firefox".
std::string_view identifierOfUsersEntry(std::string_view desktopId, std::string_view program) {
  constexpr std::string_view kStart = "userapp-";
  if (!desktopId.starts_with(kStart)) return {};
  const std::string name = lowerCase(desktopId.substr(kStart.size()));
  const std::string_view file = program.substr(program.rfind('/') + 1);
  if (file.empty() || !name.starts_with(file.substr(0, file.find('-')))) return {};
  return knownIdentifierOf(joined(file, kEnding));
}

namespace fs = std::filesystem;

constexpr std::string_view kApplications = "/applications/";

/// Adds an absolute path. Relative paths in the variables are invalid (XDG base directories).
void addFolder(std::vector<std::string>& folders, std::string_view folder) {
  folder = withoutTrailingSlashes(folder);
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

std::vector<std::string> desktopIdsOf(std::string_view bundleIdentifier) {
  std::vector<std::string> ids;
  for (const DesktopId& each : kDesktopIds) {
    if (each.bundleIdentifier == bundleIdentifier) ids.emplace_back(each.desktopId);
  }
  if (!ids.empty() || bundleIdentifier.empty()) return ids;
  std::string own(bundleIdentifier);
  own += kEnding;
  if (knownIdentifierOf(own).empty()) ids.push_back(own);
  return ids;
}

std::string bundleIdentifierOf(std::string_view desktopId, std::string_view program) {
  std::string_view known = knownIdentifierOf(desktopId);
  if (known.empty()) known = identifierOfUsersEntry(desktopId, program);
  if (!known.empty()) return std::string(known);
  if (desktopId.ends_with(kEnding)) desktopId.remove_suffix(kEnding.size());
  return std::string(desktopId);
}

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
  while (!rest.empty()) addFolder(folders, takeLine(rest, ':'));

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
