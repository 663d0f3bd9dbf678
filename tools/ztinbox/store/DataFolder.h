// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

#include "ztportal/base/FileDescriptor.h"

namespace zt::inbox {

/// Mode of every file with reports.
inline constexpr mode_t kOwnerOnly = 0600;

/// The inbox's folder in the user's data folder (XDG base directories): $XDG_DATA_HOME/ztinbox, or
/// ~/.local/share/ztinbox. Throws MachineFault if the user has no home folder.
std::string defaultDataFolder();

/// The folder of the reports. It is locked for this process as long as the object exists.
class DataFolder {
 public:
  /// Creates the folder, readable by its owner only, and its parents. Throws MachineFault if it
  /// cannot be created, another inbox uses it, or an earlier version left reports in its journal.
  explicit DataFolder(std::string_view path);

  const std::string& path() const { return _path; }
  std::string databaseFile() const { return _path + "/reports.db"; }

 private:
  std::string _path;
  FileDescriptor _lock;
};

}  // namespace zt::inbox
