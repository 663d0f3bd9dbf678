// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// The version of an application's newest release according to its metainfo file (AppStream); empty
/// if no file in the folders `metainfo` and `appdata` of `dataFolders` has the desktop ID as its
/// `<launchable>` or `<id>` and a release. Releases without a date are older than those with one;
/// among equals the first is the newest, because metainfo files usually list the newest release
/// first.
std::string newestRelease(const std::vector<std::string>& dataFolders, std::string_view desktopId);

/// The same for the content of one metainfo file.
std::string newestReleaseIn(std::string_view content, std::string_view desktopId);

}  // namespace zt
