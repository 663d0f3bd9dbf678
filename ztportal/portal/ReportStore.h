// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "ztportal/base/ZtString.h"

namespace zt {

/// The offline store of the host: the folder "reports" in its own folder, one file per report,
/// `{<report ID>}.ztr`. It is not locked. A store is a light value; it reads the folder anew in
/// every operation.
class ReportStore {
 public:
  /// Creates the folder if it does not exist, for its owner alone. Nothing when that fails; `errno`
  /// says why.
  static std::optional<ReportStore> open();

  const std::string& folder() const { return _folder; }
  /// Path of the report's file, whether it exists or not.
  std::string fileOf(const ZtString& reportId) const;

  /// Writes the file of the report, readable by its owner only; a link in its place is not
  /// followed. Then enforces the limits of `ZtReportStore`. Returns why writing failed.
  std::error_code save(const ZtString& reportId, std::string_view text) const;
  /// Paths of the saved reports, in the order in which the system lists them.
  std::vector<std::string> files() const { return filesIn(_folder); }
  /// Paths of the files in `folder` that have the ending of a saved report.
  static std::vector<std::string> filesIn(const std::string& folder);
  /// Whether the file was removed. A failure is logged.
  static bool remove(const std::string& file);
  /// The request in a saved report: its XML parsed and written back in UTF-8. Nothing when the
  /// file cannot be read or is not well-formed; then `problem`, unless it is null, says why.
  static std::optional<std::string> request(const std::string& file,
                                            std::string* problem = nullptr);

 private:
  explicit ReportStore(std::string folder) : _folder(std::move(folder)) {}

  std::string _folder;
};

/// The ending of the name of a saved report.
inline constexpr std::string_view kReportEnding = ".ztr";
/// File beside the folder of the reports: what `ZtReportStore::send` must remember.
inline constexpr std::string_view kSendingState = "sending.state";
/// Path of `name` beside the folder `reports`; empty if that is.
std::string besideReports(std::string_view reports, std::string_view name);

/// Whether a file of the store with this time of its last change may still be being written.
inline bool mayBeIncomplete(std::chrono::system_clock::time_point time) {
  const auto age = std::chrono::system_clock::now() - time;
  return age >= std::chrono::seconds(0) && age < std::chrono::seconds(10);
}

/// Removes the oldest files of the store with the folder `reports` that exceed the limits of
/// `ZtReportStore`, and likewise those in its folder "unsendable". Returns how many.
std::size_t enforceStoreLimits(const std::string& reports);

}  // namespace zt
