// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "ztportal/platform/desktop/DesktopApplications.h"

namespace zt {

/// The version of an installed application, found without starting it; empty if it is unknown. The
/// sources in order of precedence:
///
/// 1. the application itself: a Mozilla `application.ini` among its files;
/// 2. its newest metainfo release;
/// 3. the `meta/snap.yaml` of a Snap;
/// 4. the package database for the entry, or for one of the same ID in another folder of
///    `dataFolders` (a user may have a copy of a package's entry).
///
/// `root` is the root folder of the system's files.
std::string versionOf(const DesktopApplication& application,
                      const std::vector<std::string>& dataFolders, const std::string& root);

}  // namespace zt
