#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace zt::tools {

/// A span of time in its largest unit, cut off: "59 s", "2 min", "47 h", "2 d"; "in the future"
/// for one below zero, which a file has whose date is ahead of the clock.
std::string ageText(std::chrono::seconds age);

/// A size in the first unit that needs four digits at most, cut off: "812 bytes", "19 KiB".
std::string sizeText(std::uintmax_t bytes);

}  // namespace zt::tools
