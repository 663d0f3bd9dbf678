#pragma once

#include "tools/ztreport/Failure.h"

namespace zt::tools {

/// Prints what the inventory of this computer finds: as aligned lines, or as one JSON object that
/// can stand as a pool in a report description.
Exit probe(bool json);

}  // namespace zt::tools
