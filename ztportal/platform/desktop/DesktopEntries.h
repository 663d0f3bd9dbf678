// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// The desktop IDs that an application with a bundle identifier may have, in order of precedence:
/// as a distribution's package, from its vendor, as Flatpak and as Snap. An identifier that is not
/// in the table has the desktop ID of the same name:
///
///     desktopIdsOf("org.mozilla.firefox")    "firefox.desktop", "firefox-esr.desktop", ...
///     desktopIdsOf("chromium")               "chromium.desktop"
///     desktopIdsOf("com.apple.Safari")       "com.apple.Safari.desktop", which nobody installs
///
/// A desktop ID (freedesktop.org, desktop entries) is the file's path below `applications` with
/// dashes for slashes. Letter case matters.
std::vector<std::string> desktopIdsOf(std::string_view bundleIdentifier);

/// The reverse: each desktop ID belongs to one identifier. An entry that an application made for
/// itself, as GIO names it ("userapp-NAME-XXXXXX.desktop"), is that of the application whose name
/// it has and whose program it starts, which has the path `program`.
///
///     bundleIdentifierOf("firefox-esr.desktop", "")    "org.mozilla.firefox"
///     bundleIdentifierOf("userapp-Firefox-AB12CD.desktop", "/opt/firefox/firefox")
///                                                      "org.mozilla.firefox"
///     bundleIdentifierOf("chromium.desktop", "")       "chromium"
std::string bundleIdentifierOf(std::string_view desktopId, std::string_view program);

/// The folders with the shared data of applications: `$XDG_DATA_HOME` and `$XDG_DATA_DIRS` or their
/// defaults (XDG base directories), then those to which Flatpak and Snap export. The latter are
/// missing from the environment of a session that started before Flatpak or Snap was installed.
/// `root` is the root folder of the system's files; it does not apply to the variables.
std::vector<std::string> dataFolders(const std::string& root);

/// The files of a desktop ID in `dataFolders`, in order of precedence. A dash in the ID may stand
/// for a slash, so "kde4-mail.desktop" is `applications/kde4-mail.desktop` or
/// `applications/kde4/mail.desktop`.
std::vector<std::string> desktopEntryFiles(const std::vector<std::string>& dataFolders,
                                           std::string_view desktopId);

/// The desktop ID of the file `path`; its name if it is not in `dataFolders`.
std::string desktopIdOf(const std::vector<std::string>& dataFolders, const std::string& path);

}  // namespace zt
