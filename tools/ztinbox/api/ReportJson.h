#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/ztinbox/soap/Report.h"
#include "tools/ztinbox/store/Statistics.h"

namespace zt::inbox {

// JSON texts of the API, each described in openapi.json. Bytes of a report that are not UTF-8
// become U+FFFD.

/// Everything about a report but its bytes; what it does not hold is null:
///
///     {"answer":"refused","applicationId":null,…,"number":1,"pools":["EXECUTION"],
///      "received":"2026-11-21T12:00:00.123Z","size":2345,"test":false}
std::string reportJson(const Report& report);
std::string reportListJson(const std::vector<Report>& reports);

/// The same, and what the report's request holds: headers, pools with their fields, steps.
/// `sameId` are the numbers of the other reports with its report ID.
std::string reportDetailsJson(const Report& report, const ReportBytes& bytes,
                              const std::vector<std::uint64_t>& sameId);

std::string statisticsJson(const Statistics& statistics, std::uint64_t arrivals);

/// {"error":"no such report"}
std::string errorJson(std::string_view reason);
/// {"deleted":3}
std::string countJson(const char* name, std::uint64_t count);

}  // namespace zt::inbox
