#pragma once

#include <nlohmann/json.hpp>

#include "tools/common/Report.h"

namespace zt::tools {

/// The description (see `Description`) of a report. Rendered in the time zone and language in which
/// the report was written, it is the same text again except for the IDs of report and machine,
/// which a description does not have. Throws `reader::ReadError` with the place of the first thing
/// that no description can express.
///
/// Values that reports do not carry are absent: the configuration, and the values of some pools
/// that are for the host alone. "(null)" becomes null.
nlohmann::ordered_json describedReport(const reader::Report& report);

}  // namespace zt::tools
