// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/ztinbox/store/ReportFilter.h"
#include "tools/ztinbox/store/Statistics.h"
#include "tools/ztinbox/store/sqlite/Database.h"

namespace zt::inbox {

/// Throws StoreFault.
Statistics readStatistics(Database& database, const ReportFilter& wanted);

}  // namespace zt::inbox
