#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tools/inbox/Report.h"

namespace zt::inbox {

// JSON texts of the API. Bytes of a report that are not UTF-8 become U+FFFD.

/// Everything about a report but its body; what it does not hold is null:
///
///     {"answer":"refused","applicationId":null,…,"number":1,"pools":["EXECUTION"],
///      "received":"2026-11-21T12:00:00.123Z","size":2345,"test":false}
std::string reportJson(const Report& report);
std::string reportListJson(const std::vector<std::shared_ptr<const Report>>& reports);

/// {"error":"no such report"}
std::string errorJson(std::string_view reason);
/// {"deleted":3}
std::string countJson(const char* name, std::uint64_t count);

}  // namespace zt::inbox
