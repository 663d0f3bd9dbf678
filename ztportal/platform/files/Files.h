// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ztportal/base/RegularFile.h"

namespace zt {

struct FileFacts {
  std::uint64_t bytes = 0;
  std::chrono::system_clock::time_point time;  ///< of the last change of its content

  bool operator==(const FileFacts&) const = default;
};

/// An advisory lock.
struct FileLock {
  std::shared_ptr<const void> held;  ///< releases the lock when it goes; null without the lock
  bool isBusy = false;               ///< another process or another holder of this one has it
};

/// The file system, as far as saved reports and configuration copies need it. Paths are byte
/// strings; relative ones start at the working directory. No operation throws on failure; `errno`
/// says why a folder was not created or a file not written.
class Files {
 public:
  virtual ~Files() = default;

  virtual bool exists(const std::string& path) = 0;
  virtual bool isFolder(const std::string& path) = 0;
  /// Creates the folder and every missing one above it, with default attributes. An existing
  /// folder is a success.
  virtual bool createFolders(const std::string& path) = 0;
  /// The same, but only their owner may use new folders, whatever the umask.
  virtual bool createPrivateFolders(const std::string& path) = 0;
  /// Names of the entries, without "." and "..", in the order in which the system lists them.
  virtual std::optional<std::vector<std::string>> list(const std::string& folder) = 0;
  /// As `regularFile`: nothing for anything else than a regular file of at most `limit` bytes.
  virtual std::optional<std::string> read(const std::string& path, std::size_t limit) = 0;
  /// Replaces the content of the file, in place, or creates the file with default attributes. If
  /// writing fails midway, a regular file is removed.
  virtual bool write(const std::string& path, std::string_view content) = 0;
  /// The same, but only its owner may read and write a new file, whatever the umask, and anything
  /// else than a regular file in its place, such as a symbolic link, is an error.
  virtual bool writePrivate(const std::string& path, std::string_view content) = 0;
  /// Replaces the file as a whole, so that a reader sees either the old content or the new one, or
  /// creates it; only its owner may read and write it. On failure the old file stays.
  virtual bool replacePrivate(const std::string& path, std::string_view content) = 0;
  virtual bool remove(const std::string& path) = 0;
  /// Nothing if nothing exists at `path`. Links are followed.
  virtual std::optional<FileFacts> facts(const std::string& path) = 0;
  /// Renames, but replaces nothing and does not leave the file system.
  virtual bool move(const std::string& from, const std::string& to) = 0;
  /// Locks the file at `path`, which is created for its owner alone; a link in its place is not
  /// followed. Does not wait. The lock ends with the process at the latest.
  virtual FileLock lock(const std::string& path) = 0;
};

}  // namespace zt
