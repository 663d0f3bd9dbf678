// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/files/LinuxFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

#include "ztportal/base/FileDescriptor.h"
#include "ztportal/base/Free.h"

namespace zt {

namespace {

/// The system would cut a path off at its first NUL byte.
bool canNameAFile(const std::string& path) {
  if (!path.empty() && path.find('\0') == std::string::npos) return true;
  errno = EINVAL;
  return false;
}

bool isFolderAt(const std::string& path) {
  struct stat status {};
  return canNameAFile(path) && ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

FileDescriptor opened(const std::string& path, int flags, mode_t mode = 0) {
  int number = -1;
  do {
    number = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | flags, mode);
  } while (number < 0 && errno == EINTR);
  return FileDescriptor(number);
}

bool isRegular(const FileDescriptor& file) {
  struct stat status {};
  return ::fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode);
}

bool writeAll(const FileDescriptor& file, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = ::write(file.number(), content.data(), content.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

/// Whether the system accepted all data: some file systems report a full disk only now. EINTR is no
/// failure: the descriptor is closed, and the data is on its way.
bool isClosed(FileDescriptor& file) { return ::close(file.release()) == 0 || errno == EINTR; }

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

/// The umask may have removed the owner's permissions. A file system without modes may refuse,
/// which does no harm.
void restoreMode(const FileDescriptor& file) { ::fchmod(file.number(), kOwnerOnly); }

FileDescriptor openFile(const std::string& path) {
  // In a folder like /tmp the kernel may refuse O_CREAT for an existing file of another user.
  FileDescriptor found = opened(path, O_TRUNC);
  if (found.isOpen() || errno != ENOENT) return found;
  return opened(path, O_CREAT | O_TRUNC, 0666);
}

FileDescriptor openPrivateFile(const std::string& path) {
  FileDescriptor created = opened(path, O_CREAT | O_EXCL, kOwnerOnly);
  if (created.isOpen()) restoreMode(created);
  if (created.isOpen() || errno != EEXIST) return created;
  // Opening a FIFO without a reader would block.
  FileDescriptor found = opened(path, O_NOFOLLOW | O_NONBLOCK);
  if (!found.isOpen()) return found;
  if (!isRegular(found)) {
    errno = EEXIST;
    return {};
  }
  return ::ftruncate(found.number(), 0) == 0 ? std::move(found) : FileDescriptor();
}

/// Writes to `file`, which is open for `path`.
bool writeTo(FileDescriptor file, const std::string& path, std::string_view content) {
  if (!file.isOpen()) return false;
  const bool mayBeRemoved = isRegular(file);
  const bool isWritten = writeAll(file, content);
  if (isWritten && isClosed(file)) return true;
  const int error = errno;
  if (mayBeRemoved) {
    // Also empties the target of a link.
    if (!isWritten) {
      [[maybe_unused]] const int emptied = ::ftruncate(file.number(), 0);
    }
    ::unlink(path.c_str());
  }
  errno = error;
  return false;
}

/// Creates the folder. Its owner may use it whatever the umask. Returns 0 or why it was not
/// created.
int makeFolder(const std::string& path, mode_t mode) {
  if (::mkdir(path.c_str(), mode) != 0) return errno;
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) return errno;
  if (!S_ISDIR(status.st_mode) || (status.st_mode & S_IRWXU) == S_IRWXU) return 0;
  ::chmod(path.c_str(), (status.st_mode & 07777U) | S_IRWXU);
  return 0;
}

bool makeFolders(const std::string& path, mode_t mode) {
  if (!canNameAFile(path)) return false;
  int firstError = 0;
  for (std::size_t end = 0; !isFolderAt(path) && end != std::string::npos;) {
    end = path.find('/', end + 1);
    const int error = makeFolder(path.substr(0, end), mode);
    if (firstError == 0 && error != EEXIST) firstError = error;
  }
  if (isFolderAt(path)) return true;
  errno = firstError != 0 ? firstError : EEXIST;
  return false;
}

bool isAbsolute(const char* path) { return path != nullptr && path[0] == '/'; }

}  // namespace

std::string homeOfUserDatabase() {
  constexpr std::size_t kFirstSize = 1024;
  constexpr std::size_t kLargestSize = kFirstSize * 1024;
  for (std::size_t size = kFirstSize; size <= kLargestSize; size *= 2) {
    std::vector<char> texts(size);
    struct passwd entry {};
    struct passwd* found = nullptr;
    const int error = ::getpwuid_r(::getuid(), &entry, texts.data(), texts.size(), &found);
    if (error == ERANGE || error == EINTR) continue;
    return found != nullptr && isAbsolute(found->pw_dir) ? found->pw_dir : "";
  }
  return {};
}

bool LinuxFiles::exists(const std::string& path) {
  struct stat status {};
  return canNameAFile(path) && ::stat(path.c_str(), &status) == 0;
}

bool LinuxFiles::isFolder(const std::string& path) { return isFolderAt(path); }

bool LinuxFiles::createFolders(const std::string& path) {
  return makeFolders(path, S_IRWXU | S_IRWXG | S_IRWXO);
}

bool LinuxFiles::createPrivateFolders(const std::string& path) {
  return makeFolders(path, S_IRWXU);
}

std::optional<std::vector<std::string>> LinuxFiles::list(const std::string& folder) {
  if (!canNameAFile(folder)) return std::nullopt;
  // The iterators of std::filesystem end the process when memory runs out.
  const std::unique_ptr<DIR, Free<::closedir>> open(::opendir(folder.c_str()));
  if (!open) return std::nullopt;
  std::vector<std::string> names;
  errno = 0;
  while (const dirent* entry = ::readdir(open.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
    errno = 0;
  }
  if (errno != 0) return std::nullopt;
  return names;
}

std::optional<std::string> LinuxFiles::read(const std::string& path, std::size_t limit) {
  return regularFile(path, limit);
}

bool LinuxFiles::write(const std::string& path, std::string_view content) {
  return canNameAFile(path) && writeTo(openFile(path), path, content);
}

bool LinuxFiles::writePrivate(const std::string& path, std::string_view content) {
  return canNameAFile(path) && writeTo(openPrivateFile(path), path, content);
}

bool LinuxFiles::replacePrivate(const std::string& path, std::string_view content) {
  if (!canNameAFile(path)) return false;
  std::string temporary = path + ".XXXXXX";
  FileDescriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
  if (!file.isOpen()) return false;
  restoreMode(file);
  if (writeAll(file, content) && ::fsync(file.number()) == 0 && isClosed(file) &&
      ::rename(temporary.c_str(), path.c_str()) == 0) {
    return true;
  }
  const int error = errno;
  ::unlink(temporary.c_str());
  errno = error;
  return false;
}

bool LinuxFiles::remove(const std::string& path) {
  return canNameAFile(path) && std::remove(path.c_str()) == 0;
}

std::optional<FileFacts> LinuxFiles::facts(const std::string& path) {
  struct stat status {};
  if (!canNameAFile(path) || ::stat(path.c_str(), &status) != 0) return std::nullopt;
  const auto sinceEpoch = std::chrono::seconds(status.st_mtim.tv_sec) +
                          std::chrono::nanoseconds(status.st_mtim.tv_nsec);
  return FileFacts{static_cast<std::uint64_t>(status.st_size),
                   std::chrono::system_clock::time_point(sinceEpoch)};
}

bool LinuxFiles::move(const std::string& from, const std::string& to) {
  if (!canNameAFile(from) || !canNameAFile(to)) return false;
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  // Some file systems cannot rename without replacing.
  return errno == EINVAL && ::link(from.c_str(), to.c_str()) == 0 && ::unlink(from.c_str()) == 0;
}

FileLock LinuxFiles::lock(const std::string& path) {
  if (!canNameAFile(path)) return {};
  FileDescriptor file(::open(path.c_str(),
                             O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY,
                             S_IRUSR | S_IWUSR));
  if (!file.isOpen()) return {};
  if (::flock(file.number(), LOCK_EX | LOCK_NB) != 0) return {nullptr, errno == EWOULDBLOCK};
  // To close the file would not be enough while a forked process has it as well.
  const auto unlock = [](FileDescriptor* held) {
    ::flock(held->number(), LOCK_UN);
    delete held;
  };
  return {std::shared_ptr<FileDescriptor>(new FileDescriptor(std::move(file)), unlock), false};
}

std::string homeFolder() {
  const char* const home = std::getenv("HOME");
  return isAbsolute(home) ? home : homeOfUserDatabase();
}

std::optional<std::string> LinuxSupportFolder::path(std::int16_t domain) {
  if (domain != kUserDomain) return std::nullopt;
  const char* const dataFolder = std::getenv("XDG_DATA_HOME");
  if (dataFolder != nullptr && dataFolder[0] == '/') return dataFolder;
  std::string home = homeFolder();
  if (home.empty()) return std::nullopt;
  if (home.back() != '/') home += '/';
  return home += ".local/share";
}

}  // namespace zt
