#pragma once

#include <optional>
#include <string>

namespace zt {

/// The content of `path`; nothing when it is no regular file (whose reading may never end) or
/// cannot be read.
std::optional<std::string> regularFile(const std::string& path);

}  // namespace zt
