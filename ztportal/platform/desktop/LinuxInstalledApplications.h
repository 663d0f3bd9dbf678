#pragma once

#include <string>
#include <vector>

#include "ztportal/platform/desktop/DesktopApplications.h"
#include "ztportal/platform/desktop/InstalledApplications.h"
#include "ztportal/platform/process/LibexecFolder.h"

namespace zt {

/// Applications on Linux: bundles, and what the desktop knows by desktop entries.
///
/// A bundle is looked for by its "CFBundleIdentifier" among the folders in `~/Applications`,
/// `/Applications` and `/opt`, in this order. Where there is none, an application is known by its
/// desktop entry (as freedesktop.org defines them) under one of the names of `DesktopIds.h`, and
/// the path is that of the entry's file. An entry that is hidden, or whose program is not there, is
/// no application; one that is only left out of menus is.
///
/// The default application is that of GIO, which honours `mimeapps.list`. Where the program of its
/// entry stands in a bundle, the path is the bundle's.
///
/// "CFBundleName" of an entry is its name in the user's language, "CFBundleShortVersionString"
/// what `ApplicationVersion.h` finds; each is absent where nothing tells it. No program of an
/// application is started. The files and the environment are read at each call; without state: one
/// object serves all threads.
class LinuxInstalledApplications final : public InstalledApplications {
 public:
  /// `libexec` is the folder with the library's programs; without it nothing is known of desktop
  /// entries. `root` is the folder that the system's files stand in.
  explicit LinuxInstalledApplications(std::string libexec = libexecFolder(), std::string root = {});

  std::optional<std::string> withIdentifier(std::string_view bundleIdentifier) override;
  std::optional<std::string> defaultFor(std::string_view url) override;
  std::optional<Info> info(const std::string& path) override;
  std::unique_ptr<InstalledApplications> prepared(
      std::span<const std::string_view> bundleIdentifiers,
      std::span<const std::string_view> urls) override;

 private:
  LinuxInstalledApplications(DesktopApplications desktop, std::string root);

  std::optional<std::string> bundleWithIdentifier(std::string_view bundleIdentifier);

  DesktopApplications _desktop;
  std::string _root;
};

}  // namespace zt
