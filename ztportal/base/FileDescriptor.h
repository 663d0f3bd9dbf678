#pragma once

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

}  // namespace zt
