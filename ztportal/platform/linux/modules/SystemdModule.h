#pragma once

#include <map>
#include <string>

#include "ztportal/base/ZtString.h"

namespace zt {

/// What needs libsystemd.
struct SystemdModule {
  static constexpr const char* kName = "systemd";

  void (*post)(const ZtString& name, const ZtString& object,
               const std::map<std::string, ZtString>& userInfo);
  ZtString (*platformUUID)();
};

}  // namespace zt
