// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "ztportal/base/ZtString.h"

namespace zt {

/// A running process whose program is in a bundle.
struct RunningApplication {
  ZtString bundleIdentifier;  ///< "CFBundleIdentifier" of the bundle; missing if it has none
  std::string bundlePath;
};

/// The running applications of the user and of the administrator. Those of other users do not
/// count: they must not change how this one's reports are sent.
class RunningApplications {
 public:
  virtual ~RunningApplications() = default;

  /// One entry for each process, in the order of the system's process table. A process that ends
  /// meanwhile, or that the user may not inspect, is skipped.
  virtual std::vector<RunningApplication> list() = 0;
};

}  // namespace zt
