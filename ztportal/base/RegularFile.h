// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <string>

#include "ztportal/base/FileDescriptor.h"

namespace zt {

/// Largest size of a property list, configuration, desktop entry or another small file of settings.
inline constexpr std::size_t kSettingsFileLimit = std::size_t{1} << 20U;
/// Largest size of a saved report.
inline constexpr std::size_t kReportFileLimit = std::size_t{64} << 20U;
/// Largest size of a file in the database of a package manager.
inline constexpr std::size_t kPackageFileLimit = std::size_t{64} << 20U;

/// The content of the file at `path`. Nothing if it cannot be read, is no regular file or is larger
/// than `limit` bytes. All files of other programs are read by this function, since anything may be
/// in a file's place: it never waits for the writer of a FIFO, and never reads a device or an
/// enormous file into memory. Symbolic links are followed.
///
///     if (auto content = regularFile("/etc/os-release", kSettingsFileLimit)) parse(*content);
inline std::optional<std::string> regularFile(const std::string& path, std::size_t limit) {
  // The system would cut a path off at its first NUL byte.
  if (path.find('\0') != std::string::npos) return std::nullopt;
  int number = -1;
  do {
    number = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
  } while (number < 0 && errno == EINTR);
  const FileDescriptor file(number);
  struct stat status {};
  if (!file.isOpen() || ::fstat(file.number(), &status) != 0) return std::nullopt;
  const auto told = static_cast<std::size_t>(status.st_size);
  if (!S_ISREG(status.st_mode) || told > limit) return std::nullopt;
  // The kernel tells no size for files of its own, and any other file may grow meanwhile.
  constexpr std::size_t kLeastBlock = 4096;
  std::size_t expected = std::max(told, kLeastBlock);
  std::string content;
  while (content.size() <= limit) {
    const std::size_t size = content.size();
    // One byte more than expected shows the end of the file without another allocation.
    content.resize(std::min(expected, limit) + 1);
    const ssize_t count = ::read(file.number(), content.data() + size, content.size() - size);
    if (count < 0 && errno != EINTR) return std::nullopt;
    content.resize(size + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count == 0) return content;
    if (content.size() > expected) expected = 2 * content.size();
  }
  return std::nullopt;
}

}  // namespace zt
