#pragma once

#include <string_view>

namespace zt::inbox {

/// The description of the JSON API (OpenAPI 3.1): the text of openapi.json.
extern const std::string_view kOpenApi;

}  // namespace zt::inbox
