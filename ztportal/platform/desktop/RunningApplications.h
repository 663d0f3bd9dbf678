#pragma once

#include <string>
#include <vector>

#include "ztportal/base/ZtString.h"

namespace zt {

/// A running process whose executable stands in a bundle.
struct RunningApplication {
  ZtString bundleIdentifier;  ///< "CFBundleIdentifier" of the bundle; missing if it has none
  std::string bundlePath;
};

/// The applications that run now, as far as the user may see them.
class RunningApplications {
 public:
  virtual ~RunningApplications() = default;

  /// One entry a process, in the order of the system's process table. A process that vanishes
  /// meanwhile or is not the user's to read is left out.
  virtual std::vector<RunningApplication> list() = 0;
};

}  // namespace zt
