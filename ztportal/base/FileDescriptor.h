// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace zt {

/// Owns a file descriptor and closes it; -1 means none.
///
///     const FileDescriptor file(::open(path, O_RDONLY | O_CLOEXEC));
///     if (!file.isOpen()) return false;        // errno says why
///     ::fstat(file.number(), &status);
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int number) : _number(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : _number(other.release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(_number, other._number);
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() { close(); }

  bool isOpen() const { return _number >= 0; }
  int number() const { return _number; }
  /// Gives up ownership: the caller must close the returned descriptor.
  int release() { return std::exchange(_number, -1); }
  void close() {
    if (isOpen()) ::close(release());
  }

 private:
  int _number = -1;
};

/// `file` with a number above those of the standard streams: a host that has closed those may still
/// write to them. Not open if `file` is not, or if there are too many descriptors.
inline FileDescriptor aboveStandardStreams(FileDescriptor file) {
  if (!file.isOpen() || file.number() > STDERR_FILENO) return file;
  return FileDescriptor(::fcntl(file.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

}  // namespace zt
