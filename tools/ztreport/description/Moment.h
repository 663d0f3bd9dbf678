#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "ztportal/base/ZtDate.h"

namespace zt::tools {

/// Reads a moment in the form of RFC 3339: "2026-11-21T12:00:00Z", with up to nine digits of a
/// second's fraction (cut off after the third) and "Z" or an offset such as "+02:00". Nothing for
/// any other text and for days and times that do not exist.
std::optional<ZtDate> parseMoment(std::string_view text);

/// A moment in that form, "2026-11-21T14:00:00.000+02:00", with the offset asked for where the form
/// has room for it: an offset of a day or more is left out ("Z"), and where the year would not be
/// one of 0 to 9999, the offset is one that brings it there if there is any.
std::string momentText(ZtDate moment, std::chrono::minutes offset);

}  // namespace zt::tools
