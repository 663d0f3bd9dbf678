#pragma once

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
  /// followed. Returns why that failed.
  std::error_code save(const ZtString& reportId, std::string_view text) const;
  /// Paths of the saved reports, in the order in which the system lists them.
  std::vector<std::string> files() const;
  /// Failures are logged only.
  static void remove(const std::string& file);
  /// The request in a saved report: its XML parsed and written back in UTF-8. Nothing when the
  /// file cannot be read or is not well-formed.
  static std::optional<std::string> request(const std::string& file);

 private:
  explicit ReportStore(std::string folder) : _folder(std::move(folder)) {}

  std::string _folder;
};

}  // namespace zt
