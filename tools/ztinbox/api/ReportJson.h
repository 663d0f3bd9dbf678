// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/ztinbox/store/Statistics.h"
#include "tools/ztinbox/store/StoredReport.h"

namespace zt::inbox {

// JSON texts of the API, each described in openapi.json. Bytes of a report that are not UTF-8
// become U+FFFD.

/// Everything about a report except its bytes; a missing value is null:
///
///     {"answer":"refused","applicationId":null,…,"number":1,"pools":["EXECUTION"],
///      "received":"2026-11-21T12:00:00.123Z","size":2345,"test":false}
std::string reportJson(const StoredReport& report);
std::string reportListJson(const std::vector<StoredReport>& reports);

/// The same, with the headers of the request and the pools of the report, their fields and steps.
/// `sameId` has the numbers of the other reports with the same report ID.
std::string reportDetailsJson(const StoredReport& report, const ReportBytes& bytes,
                              const std::vector<std::uint64_t>& sameId);

std::string statisticsJson(const Statistics& statistics, std::uint64_t arrivals);

/// {"deleted":3}
std::string countJson(const char* name, std::uint64_t count);

}  // namespace zt::inbox
