#pragma once

#include <string>

#include "tools/ztinbox/http/Fd.h"

namespace zt::inbox {

/// The inbox's folder among the user's data (XDG base directories): $XDG_DATA_HOME/ztinbox, or
/// ~/.local/share/ztinbox. Throws MachineFault when the user has no home folder.
std::string defaultDataFolder();

/// A folder that this process alone keeps its reports in, for as long as the object lives.
class DataFolder {
 public:
  /// Creates the folder, readable by its owner alone, with those above it. Throws MachineFault:
  /// it cannot be created, or another inbox uses it.
  explicit DataFolder(std::string path);

  const std::string& path() const { return _path; }
  std::string databaseFile() const { return _path + "/reports.db"; }

 private:
  std::string _path;
  Fd _lock;
};

}  // namespace zt::inbox
