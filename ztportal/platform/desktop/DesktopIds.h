#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// The names of the desktop entries that an application with a bundle identifier is installed
/// under, as distribution package, from its vendor, as Flatpak and as Snap; those that go first
/// come first. Any other identifier is that of the entry of its own name:
///
///     desktopIdsOf("org.mozilla.firefox")    "firefox.desktop", "firefox-esr.desktop", ...
///     desktopIdsOf("chromium")               "chromium.desktop"
///     desktopIdsOf("com.apple.Safari")       "com.apple.Safari.desktop", which nobody installs
///
/// A desktop ID is that of freedesktop.org's desktop entries: the file's path below `applications`
/// with dashes for slashes. Letter case matters.
std::vector<std::string> desktopIdsOf(std::string_view bundleIdentifier);

/// The other way: each desktop ID belongs to one identifier.
///
///     bundleIdentifierOf("firefox-esr.desktop")    "org.mozilla.firefox"
///     bundleIdentifierOf("chromium.desktop")       "chromium"
std::string bundleIdentifierOf(std::string_view desktopId);

}  // namespace zt
