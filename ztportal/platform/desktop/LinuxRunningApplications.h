#pragma once

#include "ztportal/platform/desktop/RunningApplications.h"

namespace zt {

/// The processes of `/proc` (proc(5)), each by the link to its executable. An executable that has
/// been deleted or replaced still counts for its bundle; one whose bundle is gone, or has no
/// readable `Info.plist`, does not.
///
/// A call inspects each folder above any executable once, and reads each bundle's `Info.plist`
/// once. Without state: one object serves all threads.
class LinuxRunningApplications final : public RunningApplications {
 public:
  /// `processTable` is the mount point of the process table.
  explicit LinuxRunningApplications(std::string processTable = "/proc");

  std::vector<RunningApplication> list() override;

 private:
  std::string _processTable;
};

}  // namespace zt
