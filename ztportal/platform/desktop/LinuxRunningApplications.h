#pragma once

#include "ztportal/platform/desktop/RunningApplications.h"

namespace zt {

/// The processes of `/proc` (proc(5)), each by the link to its executable. An executable that was
/// deleted or replaced since still counts for the bundle that it stood in; one whose bundle is
/// gone, or has no readable `Info.plist`, does not.
///
/// A call looks once at each folder above an executable, however many stand below it, and reads
/// each bundle's `Info.plist` once. Without state: one object serves all threads.
class LinuxRunningApplications final : public RunningApplications {
 public:
  /// `processTable` is the folder that the process table is mounted at.
  explicit LinuxRunningApplications(std::string processTable = "/proc");

  std::vector<RunningApplication> list() override;

 private:
  std::string _processTable;
};

}  // namespace zt
