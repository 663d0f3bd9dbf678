#include "tools/ztinbox/Version.h"

namespace zt::inbox {

std::string_view nameAndVersion() { return "ztinbox " ZT_VERSION; }

}  // namespace zt::inbox
