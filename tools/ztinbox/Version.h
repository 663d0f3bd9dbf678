#pragma once

#include <string_view>

namespace zt::inbox {

/// What `--version` and the version answer say: "ztinbox 1.0.0".
std::string_view nameAndVersion();

}  // namespace zt::inbox
