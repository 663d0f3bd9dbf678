#pragma once

#include "tools/ztreport/description/JsonValue.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

/// Whether a description may have the library look at the machine, which starts a child process.
enum class MachineCheck { Allowed, Skipped };

/// Adds the pool that `object` describes to a document. Raises `JsonError` at the first fault.
void addPool(const JsonValue& object, ZtPortalData& document, MachineCheck check);

}  // namespace zt::tools
