// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ztportal/base/ZtString.h"

namespace zt {

/// Whether the table of `ZtReport` has a customer with exactly this ID.
bool isCustomer(const ZtString& id);

}  // namespace zt
