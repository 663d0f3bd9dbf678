// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zt::tools {

/// A file in the store.
struct SavedReport {
  std::string name;
  std::string path;
  std::optional<std::uintmax_t> size;       ///< bytes; empty when it cannot be read
  std::optional<std::chrono::seconds> age;  ///< since the file was last written; empty likewise
  std::string fault;  ///< why it cannot be sent, with line and column; empty when it can
};

extern const char* const kNoStoreFolder;  ///< message for a store folder that cannot be created

/// The store's folder, created if necessary. Throws a `Failure` when that fails.
std::string storeFolder();

/// Paths of the saved reports in `folder`, in the order of sending, which is the order in which the
/// system lists them. Throws a `Failure` when the folder cannot be read.
std::vector<std::string> savedReportPaths(const std::string& folder);

/// The saved report at `path`, parsed as it is for sending.
SavedReport savedReport(const std::string& path);

/// The saved reports in `folder`, in the same order. A report with a fault blocks all reports after
/// it.
std::vector<SavedReport> savedReports(const std::string& folder);

/// A time span in its largest unit, rounded down: "59 s", "2 min", "47 h", "2 d". A file whose date
/// is ahead of the clock is "in the future".
std::string ageText(std::chrono::seconds age);

/// A size in the first unit that needs at most four digits, rounded down: "812 bytes", "19 KiB".
std::string sizeText(std::uintmax_t bytes);

}  // namespace zt::tools
