// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ztportal/platform/desktop/RunningApplications.h"

namespace zt {

/// The processes of `/proc` (proc(5)) that the user of this process or root started, each by the
/// link to its executable. An executable that has been deleted or replaced still counts for its
/// bundle; one whose bundle is gone, or has no readable `Info.plist`, does not.
///
/// The command line counts where the executable says nothing: for a script, whose executable is an
/// interpreter, and for a process of root, whose executable other users may not know. The paths of
/// a process inside Flatpak start at its own root folder; the path of its bundle is valid until it
/// ends. Other containers are other machines: nothing in them counts.
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
