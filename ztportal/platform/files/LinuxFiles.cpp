#include "ztportal/platform/files/LinuxFiles.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "ztportal/base/FileDescriptor.h"

namespace zt {

namespace {

/// The system would cut a path off at its first NUL byte.
bool canNameAFile(const std::string& path) {
  return !path.empty() && path.find('\0') == std::string::npos;
}

class OpenFile {
 public:
  OpenFile() = default;
  /// `path` is relative to `folder`, a file descriptor, unless it is absolute.
  OpenFile(int folder, const std::string& path, int flags, mode_t mode = 0) {
    int number = -1;
    do {
      number = ::openat(folder, path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode);
    } while (number < 0 && errno == EINTR);
    _descriptor = FileDescriptor(number);
  }

  bool isOpen() const { return _descriptor.isOpen(); }
  int descriptor() const { return _descriptor.number(); }
  bool isRegular() const {
    struct stat status {};
    return ::fstat(descriptor(), &status) == 0 && S_ISREG(status.st_mode);
  }
  bool writeAll(std::string_view content) const {
    while (!content.empty()) {
      const ssize_t written = ::write(descriptor(), content.data(), content.size());
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) return false;
      content.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
  }
  /// Whether the system accepted all data: some file systems report a full disk only now. EINTR is
  /// no failure: the descriptor is closed, and the data is on its way.
  bool close() { return ::close(_descriptor.release()) == 0 || errno == EINTR; }

 private:
  FileDescriptor _descriptor;
};

enum class Links { Follow, Refuse };

/// Opens the file `name` of `folder`, which is created if it is missing. If links are refused, so
/// is everything else that is no regular file.
OpenFile openForWriting(int folder, const std::string& name, Links links) {
  constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;
  OpenFile created(folder, name, O_WRONLY | O_CREAT | O_EXCL, kOwnerOnly);
  if (created.isOpen()) {
    // The umask may have removed the owner's permissions. A file system without modes may refuse,
    // which does no harm.
    ::fchmod(created.descriptor(), kOwnerOnly);
    return created;
  }
  if (errno != EEXIST) return created;
  if (links == Links::Follow) return {folder, name, O_WRONLY | O_TRUNC};
  // Opening a FIFO without a reader would block.
  OpenFile found(folder, name, O_WRONLY | O_NOFOLLOW | O_NONBLOCK);
  if (found.isOpen() && (!found.isRegular() || ::ftruncate(found.descriptor(), 0) != 0)) {
    return {};
  }
  return found;
}

bool writeTo(int folder, const std::string& name, Links links, std::string_view content) {
  OpenFile file = openForWriting(folder, name, links);
  if (!file.isOpen()) return false;
  const bool isRegular = file.isRegular();
  if (file.writeAll(content)) {
    if (file.close()) return true;
  } else if (isRegular) {
    // Also empties the target of a link.
    [[maybe_unused]] const int emptied = ::ftruncate(file.descriptor(), 0);
  }
  if (isRegular) ::unlinkat(folder, name.c_str(), 0);
  return false;
}

/// Creates the folder `name` unless it exists. Its owner may use it whatever the umask.
void makeFolder(int above, const std::string& name, mode_t mode) {
  if (::mkdirat(above, name.c_str(), mode) != 0) return;
  struct stat status {};
  if (::fstatat(above, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return;
  if (!S_ISDIR(status.st_mode) || (status.st_mode & S_IRWXU) == S_IRWXU) return;
  ::fchmodat(above, name.c_str(), (status.st_mode & 07777U) | S_IRWXU, 0);
}

/// Opens the folder `relative` below `root` without following links below `root`. Missing folders
/// are created with `newMode`, if there is one.
OpenFile openFolderBelow(const std::string& root, std::string_view relative,
                         std::optional<mode_t> newMode = std::nullopt) {
  constexpr int kFolder = O_PATH | O_DIRECTORY;
  OpenFile folder(AT_FDCWD, root, kFolder);
  while (folder.isOpen() && !relative.empty()) {
    const std::string name(relative.substr(0, relative.find('/')));
    relative.remove_prefix(std::min(name.size() + 1, relative.size()));
    if (name.empty() || name == ".") continue;
    if (newMode) makeFolder(folder.descriptor(), name, *newMode);
    folder = OpenFile(folder.descriptor(), name, kFolder | O_NOFOLLOW);
  }
  return folder;
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
  std::error_code error;
  return canNameAFile(path) && std::filesystem::exists(path, error);
}

bool LinuxFiles::isFolder(const std::string& path) {
  std::error_code error;
  return canNameAFile(path) && std::filesystem::is_directory(path, error);
}

bool LinuxFiles::createFolders(const std::string& path) {
  if (!canNameAFile(path)) return false;
  for (std::size_t end = 0; !isFolder(path) && end != std::string::npos;) {
    end = path.find('/', end + 1);
    makeFolder(AT_FDCWD, path.substr(0, end), S_IRWXU | S_IRWXG | S_IRWXO);
  }
  return isFolder(path);
}

bool LinuxFiles::createFoldersBelow(const std::string& root, const std::string& relative) {
  if (!canNameAFile(root) || !canNameAFile(relative)) return false;
  return openFolderBelow(root, relative, S_IRWXU).isOpen();
}

std::optional<std::vector<std::string>> LinuxFiles::list(const std::string& folder) {
  if (!canNameAFile(folder)) return std::nullopt;
  std::error_code error;
  std::filesystem::directory_iterator entry(folder, error);
  std::vector<std::string> names;
  while (!error && entry != std::filesystem::directory_iterator()) {
    names.push_back(entry->path().filename().string());
    entry.increment(error);
  }
  if (error) return std::nullopt;
  return names;
}

std::optional<std::string> LinuxFiles::read(const std::string& path, std::size_t limit) {
  return regularFile(path, limit);
}

bool LinuxFiles::write(const std::string& path, std::string_view content) {
  return canNameAFile(path) && writeTo(AT_FDCWD, path, Links::Follow, content);
}

bool LinuxFiles::writeBelow(const std::string& root, const std::string& relative,
                            std::string_view content) {
  if (!canNameAFile(root) || !canNameAFile(relative)) return false;
  const std::size_t nameAt = relative.rfind('/') + 1;  // 0 without a slash
  const OpenFile folder = openFolderBelow(root, std::string_view(relative).substr(0, nameAt));
  return folder.isOpen() &&
         writeTo(folder.descriptor(), relative.substr(nameAt), Links::Refuse, content);
}

bool LinuxFiles::remove(const std::string& path) {
  std::error_code error;
  return canNameAFile(path) && std::filesystem::remove(path, error);
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
