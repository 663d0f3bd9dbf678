#pragma once

#include <optional>
#include <string>

namespace zt::tools {

/// What a file is called in messages: its path, or "standard input" for "-".
std::string nameOf(const std::string& file);

/// The content of a file, or of standard input for "-". Nothing, with errno set, on failure.
std::optional<std::string> contentOf(const std::string& file);

/// The same; raises a `Failure` that names the file.
std::string readAll(const std::string& file);

/// Writes to standard output at once; raises a `Failure` when that cannot be written.
void print(const std::string& text);

}  // namespace zt::tools
