#pragma once

#include <optional>
#include <string_view>

#include "ztportal/base/ZtDate.h"

namespace zt::tools {

/// Reads a moment in the form of RFC 3339: "2026-11-21T12:00:00Z", with up to nine digits of a
/// second's fraction (cut off after the third) and "Z" or an offset such as "+02:00". Nothing for
/// any other text and for days and times that do not exist.
std::optional<ZtDate> parseMoment(std::string_view text);

}  // namespace zt::tools
