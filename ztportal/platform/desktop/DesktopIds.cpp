#include "ztportal/platform/desktop/DesktopIds.h"

namespace zt {

namespace {

constexpr std::string_view kEnding = ".desktop";

struct DesktopId {
  std::string_view bundleIdentifier;
  std::string_view desktopId;
};

/// Those of one identifier in their order. Beta and nightly channels are other applications.
constexpr DesktopId kDesktopIds[] = {
    {"org.mozilla.firefox", "firefox.desktop"},              // most distributions, the vendor
    {"org.mozilla.firefox", "firefox-esr.desktop"},          // Debian, openSUSE
    {"org.mozilla.firefox", "org.mozilla.firefox.desktop"},  // Flatpak, Fedora
    {"org.mozilla.firefox", "firefox_firefox.desktop"},      // Snap
    {"org.mozilla.firefox", "mozilla-firefox.desktop"},      // older Fedora

    {"org.mozilla.thunderbird", "thunderbird.desktop"},                  // most distributions
    {"org.mozilla.thunderbird", "thunderbird-esr.desktop"},              // openSUSE
    {"org.mozilla.thunderbird", "net.thunderbird.Thunderbird.desktop"},  // Fedora
    {"org.mozilla.thunderbird", "org.mozilla.thunderbird.desktop"},      // Flatpak, Fedora 40
    {"org.mozilla.thunderbird", "org.mozilla.thunderbird_esr.desktop"},  // Flatpak
    {"org.mozilla.thunderbird", "org.mozilla.Thunderbird.desktop"},      // Flatpak until 2026
    {"org.mozilla.thunderbird", "thunderbird_thunderbird.desktop"},      // Snap
    {"org.mozilla.thunderbird", "mozilla-thunderbird.desktop"},          // older Fedora

    {"com.operasoftware.Opera", "opera.desktop"},            // the vendor
    {"com.operasoftware.Opera", "opera-stable.desktop"},     // by the name of the package
    {"com.operasoftware.Opera", "com.opera.Opera.desktop"},  // Flatpak
    {"com.operasoftware.Opera", "opera_opera.desktop"},      // Snap

    {"com.google.Chrome", "google-chrome.desktop"},         // the vendor
    {"com.google.Chrome", "google-chrome-stable.desktop"},  // by the name of the package
    {"com.google.Chrome", "com.google.Chrome.desktop"},     // Flatpak, the vendor's newer packages
};

bool isTaken(std::string_view desktopId) {
  for (const DesktopId& each : kDesktopIds) {
    if (each.desktopId == desktopId) return true;
  }
  return false;
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
  if (!isTaken(own)) ids.push_back(own);
  return ids;
}

std::string bundleIdentifierOf(std::string_view desktopId) {
  for (const DesktopId& each : kDesktopIds) {
    if (each.desktopId == desktopId) return std::string(each.bundleIdentifier);
  }
  if (desktopId.ends_with(kEnding)) desktopId.remove_suffix(kEnding.size());
  return std::string(desktopId);
}

}  // namespace zt
