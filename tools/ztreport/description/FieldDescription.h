#pragma once

#include "tools/ztreport/description/JsonValue.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

/// Adds the fields that a list describes to an array. Raises `JsonError` at the first fault.
void addFields(const JsonValue& list, ZtPortalPoolArray& array);

}  // namespace zt::tools
