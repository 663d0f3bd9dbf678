#pragma once

#include "tools/common/Json.h"
#include "tools/common/ReportReader.h"

namespace zt::tools {

/// The description (see `Description`) of a report. Rendered in the time zone and language in which
/// the report was written, it is the same text again except for the IDs of report and machine,
/// which a description does not have. Throws `reader::ReadError` with the place of the first thing
/// that no description can express.
///
/// Values that reports do not carry are absent: the configuration, and the values of some pools
/// that are for the host alone. "(null)" becomes null.
Json describedReport(const reader::ParsedReport& report);

}  // namespace zt::tools
