// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ztportal/portal/ZtPortalData.h"
#include "ztportal/portal/description/JsonValue.h"

namespace zt {

/// Adds the pool that `object` describes to a document. Throws `JsonError` at the first error.
/// Without `mayExamineMachine` an inventory that the description asks for stays empty.
void addPool(const JsonValue& object, ZtPortalData& document, bool mayExamineMachine);

}  // namespace zt
