#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "ztportal/base/ZtString.h"

namespace zt {

/// Path of `relativePath` below the application-support folder of `domain`. A folder is created
/// there unless something exists at that path already. Nullopt if there is no such domain or a
/// folder cannot be created.
std::optional<std::string> supportFolder(std::int16_t domain, std::string_view relativePath);

/// The host's own folder, `Kelvane/<name of the host>` in the user's application-support folder;
/// created like every support folder. Nullopt for a host without a name.
std::optional<std::string> hostFolder();

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
  /// Failures are silent.
  static void remove(const std::string& file);
  /// The request in a saved report: its XML parsed and written back in UTF-8. Nothing when the
  /// file cannot be read or is not well-formed.
  static std::optional<std::string> request(const std::string& file);

 private:
  explicit ReportStore(std::string folder) : _folder(std::move(folder)) {}

  std::string _folder;
};

}  // namespace zt
