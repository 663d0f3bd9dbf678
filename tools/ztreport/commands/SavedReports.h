#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zt::tools {

/// A file of the store, as it is found.
struct SavedReport {
  std::string name;
  std::string path;
  std::optional<std::uintmax_t> size;       ///< bytes; nothing where it cannot be told
  std::optional<std::chrono::seconds> age;  ///< since the file was last written; the same
  std::string fault;  ///< why it cannot be sent again, with the place in it; empty when it can
};

/// Paths of the saved reports in `folder`, in the order in which they are sent again, which is the
/// one in which the system lists them. Raises a `Failure` when the folder cannot be read.
std::vector<std::string> savedReportPaths(const std::string& folder);

/// Looks at the saved reports in `folder`, in the same order. Each is read as it is when it is sent
/// again, so one without a fault can be sent, and one with a fault stops all behind it.
std::vector<SavedReport> savedReports(const std::string& folder);

}  // namespace zt::tools
