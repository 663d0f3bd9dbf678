// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ztportal/Version.h"

namespace zt::inbox {

/// For `--version` and the version response.
inline constexpr const char* kNameAndVersion = "ztinbox " ZTPORTAL_VERSION;

}  // namespace zt::inbox
