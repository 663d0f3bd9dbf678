#pragma once

#include "tools/ztreport/description/JsonValue.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

/// Whether a description may let the library examine the machine, which starts subprocesses.
enum class MachineCheck { Allowed, Skipped };

/// Adds the pool that `object` describes to a document. Throws `JsonError` at the first error.
void addPool(const JsonValue& object, ZtPortalData& document, MachineCheck check);

}  // namespace zt::tools
