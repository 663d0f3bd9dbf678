// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/common/ReportReader.h"
#include "ztportal/platform/json/Json.h"

namespace zt::tools {

/// The description (see `Description`) of a report. Rendered in the time zone and language in which
/// the report was written, it is the same text again, except for the IDs of report and machine,
/// which a description does not have. Throws `reader::ReadError` with the position of the first
/// part that a description cannot express.
///
/// Values that are not in reports are absent: the configuration, and the values of some pools that
/// are for the host's own use. "(null)" becomes null.
Json describedReport(const reader::ParsedReport& report);

}  // namespace zt::tools
