#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zt::inbox {

// Limits of what is searched: the rest of a longer value, or of a larger report, is not found.
inline constexpr std::size_t kLongestSearchedValue = std::size_t{64} * 1024;
inline constexpr std::size_t kLongestSearchText = std::size_t{1024} * 1024;

/// What the full-text search finds a report by: its identity, and the names and values of its
/// pools, a line each. Of a report whose pools cannot be read: all of it.
std::string searchText(std::string_view report);

}  // namespace zt::inbox
