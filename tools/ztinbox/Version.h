#pragma once

namespace zt::inbox {

/// For `--version` and the version response; ZT_VERSION is defined by the build of this program.
inline constexpr const char* kNameAndVersion = "ztinbox " ZT_VERSION;

}  // namespace zt::inbox
