#pragma once

#include <string>
#include <vector>

#include "ztportal/platform/desktop/DesktopApplications.h"

namespace zt {

/// The version of an installed application, which is not started for it; empty when nothing tells
/// it. The first of these counts:
///
/// 1. the application itself: a Mozilla `application.ini` among its files;
/// 2. its newest metainfo release;
/// 3. the `meta/snap.yaml` of a Snap;
/// 4. the package database: dpkg, rpm, for the entry or one of the same ID in another folder of
///    `dataFolders` (a user may have a copy of a package's).
///
/// `root` is the folder that the system's files stand in.
std::string versionOf(const DesktopApplication& application,
                      const std::vector<std::string>& dataFolders, const std::string& root);

}  // namespace zt
