#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// The file system, as far as saved reports and configuration copies need it. Paths are byte
/// strings, relative ones start at the working directory. No operation throws for a failure.
class Files {
 public:
  virtual ~Files() = default;

  virtual bool exists(const std::string& path) = 0;
  virtual bool isFolder(const std::string& path) = 0;
  /// Creates the folder and every missing one above it, with default attributes. An existing
  /// folder is a success.
  virtual bool createFolders(const std::string& path) = 0;
  /// The same for `root`/`relative`, but new folders are for their owner alone, and no symbolic
  /// link below `root` is followed: with one in the place of a folder it fails.
  virtual bool createFoldersBelow(const std::string& root, const std::string& relative) = 0;
  /// Names of the entries, without "." and "..", in the order in which the system lists them.
  virtual std::optional<std::vector<std::string>> list(const std::string& folder) = 0;
  virtual std::optional<std::string> read(const std::string& path) = 0;
  /// Replaces the content of the file, in place. A file that did not exist is readable and
  /// writable by its owner alone, whatever the umask. After a failure midway nothing of a regular
  /// file is left.
  virtual bool write(const std::string& path, std::string_view content) = 0;
  /// The same for `root`/`relative`, but no symbolic link below `root` is followed, and only a
  /// regular file is written to: with anything else in its place it fails.
  virtual bool writeBelow(const std::string& root, const std::string& relative,
                          std::string_view content) = 0;
  virtual bool remove(const std::string& path) = 0;
};

}  // namespace zt
