#pragma once

#include "tools/common/Json.h"
#include "tools/common/ParsedReport.h"

namespace zt::tools {

/// The description (see `Description`) of a report. In the time zone and language in which the
/// report was written it is written as the same text again, but for the IDs of report and machine,
/// which a description does not have. Raises `reader::ReadError` with the place of the first thing
/// for which that would not be so.
///
/// What reports do not carry is absent: the configuration, and the values of some pools that are
/// for the host alone. "(null)" becomes null.
Json describedReport(const reader::ParsedReport& report);

}  // namespace zt::tools
