#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "tools/ztinbox/soap/Report.h"

namespace zt::inbox {

// What the JSON texts of the API are put together from.

/// Bytes that are not UTF-8 become U+FFFD.
std::string jsonText(const nlohmann::json& value);

/// Everything about a report but its bytes.
nlohmann::json reportValue(const Report& report);

/// Null for nothing.
nlohmann::json orNull(const std::optional<std::string>& value);
nlohmann::json orNull(const std::optional<std::chrono::milliseconds>& value);

}  // namespace zt::inbox
