// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "ztportal/platform/files/Files.h"
#include "ztportal/platform/files/SupportFolder.h"

namespace zt {

/// The file system. Links are followed unless an operation says otherwise; a path with a NUL byte
/// names no file. Without state: one object serves all threads.
class LinuxFiles final : public Files {
 public:
  bool exists(const std::string& path) override;
  bool isFolder(const std::string& path) override;
  /// "Default attributes" are 0777 without the bits of the umask for others than the owner.
  bool createFolders(const std::string& path) override;
  /// New folders get mode 0700.
  bool createPrivateFolders(const std::string& path) override;
  std::optional<std::vector<std::string>> list(const std::string& folder) override;
  std::optional<std::string> read(const std::string& path, std::size_t limit) override;
  /// A new file gets mode 0666 without the bits of the umask, an existing one keeps its mode. A
  /// link to a missing file creates that file. A device or FIFO is written to but never removed.
  bool write(const std::string& path, std::string_view content) override;
  /// A new file gets mode 0600.
  bool writePrivate(const std::string& path, std::string_view content) override;
  /// Removes a file, a link or an empty folder.
  bool replacePrivate(const std::string& path, std::string_view content) override;
  bool remove(const std::string& path) override;
  std::optional<FileFacts> facts(const std::string& path) override;
  bool move(const std::string& from, const std::string& to) override;
  /// By flock(): a child that the process forks meanwhile does not keep the lock when its parent
  /// releases it.
  FileLock lock(const std::string& path) override;
};

/// The user's data folder (XDG base directories): `$XDG_DATA_HOME`, or `.local/share` in the user's
/// home, which is `$HOME` or else the one of the user database. A variable that holds no absolute
/// path counts as unset. Reads the environment at each call.
class LinuxSupportFolder final : public SupportFolder {
 public:
  std::optional<std::string> path(std::int16_t domain) override;
};

}  // namespace zt
