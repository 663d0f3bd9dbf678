#pragma once

#include "ztportal/platform/PlistReader.h"

namespace zt {

/// What needs libplist.
struct PlistModule {
  static constexpr const char* kName = "plist";

  decltype(&readPropertyList) read;
};

}  // namespace zt
