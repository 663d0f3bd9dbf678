#pragma once

#include "tools/common/Json.h"
#include "tools/common/ParsedReport.h"
#include "tools/ztreport/description/DescribedValue.h"

namespace zt::tools {

/// The description of a pool that is written as the same text again: one of the kind that the
/// pool's type names if it has exactly that kind's fields, else a generic one. Raises
/// `Undescribable` when neither is possible.
Json describedPool(const reader::ParsedReport& report, const reader::Pool& pool,
                   ValueDescriber& values);

}  // namespace zt::tools
