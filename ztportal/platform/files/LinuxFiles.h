#pragma once

#include "ztportal/platform/files/Files.h"

namespace zt {

/// The file system through the standard library and POSIX. Without state: one object serves all
/// threads. Links are followed unless an operation says otherwise; a path with a NUL byte in it
/// names nothing.
class LinuxFiles final : public Files {
 public:
  bool exists(const std::string& path) override;
  bool isFolder(const std::string& path) override;
  /// "Default attributes" are 0777 without the bits of the umask for others than the owner.
  bool createFolders(const std::string& path) override;
  /// New folders get mode 0700.
  bool createFoldersBelow(const std::string& root, const std::string& relative) override;
  std::optional<std::vector<std::string>> list(const std::string& folder) override;
  std::optional<std::string> read(const std::string& path) override;
  /// A new file gets mode 0600, an existing one keeps its mode. A device or FIFO is written to
  /// and never removed.
  bool write(const std::string& path, std::string_view content) override;
  bool writeBelow(const std::string& root, const std::string& relative,
                  std::string_view content) override;
  /// Removes a file, a link or an empty folder; false when there is none.
  bool remove(const std::string& path) override;
};

}  // namespace zt
