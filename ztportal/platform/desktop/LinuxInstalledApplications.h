// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "ztportal/platform/desktop/DesktopApplications.h"
#include "ztportal/platform/desktop/InstalledApplications.h"
#include "ztportal/platform/process/ProgramPath.h"

namespace zt {

/// Applications on Linux: bundles, and applications with desktop entries.
///
/// A bundle is looked up by its "CFBundleIdentifier" among the folders in `~/Applications`,
/// `/Applications` and `/opt`, in this order. Otherwise an application is looked up by its desktop
/// entry (as defined by freedesktop.org) under the names of `desktopIdsOf`, and the path is that of
/// the entry's file. An entry that is hidden, or whose program is missing, is not an application;
/// one that is only left out of menus is.
///
/// The default application is that of GIO, which honours `mimeapps.list`. If the program of its
/// entry is in a bundle, the path is the bundle's.
///
/// "CFBundleName" of an entry is its name without a language, so that it is the same for all users;
/// "CFBundleShortVersionString" is the result of `versionOf`; each is absent if it is unknown. No
/// program of an application is started. The files and the environment are read at each call.
/// Without state: one object serves all threads.
class LinuxInstalledApplications final : public InstalledApplications {
 public:
  /// `libexec` is the folder with the library's programs; without it no desktop entry is found.
  /// `root` is the root folder of the system's files.
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
