#include "ztportal/platform/files/LinuxFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

namespace zt {

namespace {

constexpr std::size_t kReadBlock = std::size_t{64} * 1024;

/// The system ends a path at its first NUL byte and would find another file than the one named.
bool canNameAFile(const std::string& path) {
  return !path.empty() && path.find('\0') == std::string::npos;
}

class OpenFile {
 public:
  /// `path` starts at `folder`, a descriptor, unless it is absolute.
  OpenFile(int folder, const std::string& path, int flags, mode_t mode = 0) {
    do {
      _descriptor = ::openat(folder, path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode);
    } while (_descriptor < 0 && errno == EINTR);
  }
  OpenFile(OpenFile&& other) noexcept : _descriptor(std::exchange(other._descriptor, -1)) {}
  OpenFile& operator=(OpenFile&& other) noexcept {
    std::swap(_descriptor, other._descriptor);
    return *this;
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (isOpen()) ::close(_descriptor);
  }

  static OpenFile none() { return {}; }
  bool isOpen() const { return _descriptor >= 0; }
  int descriptor() const { return _descriptor; }
  bool isRegular() const {
    struct stat status {};
    return ::fstat(_descriptor, &status) == 0 && S_ISREG(status.st_mode);
  }
  bool writeAll(std::string_view content) const {
    while (!content.empty()) {
      const ssize_t written = ::write(_descriptor, content.data(), content.size());
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) return false;
      content.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
  }
  /// Whether the system took everything: some file systems tell of a full disk only now. A signal
  /// that cuts this short loses nothing: the descriptor is gone, and the content on its way.
  bool close() { return ::close(std::exchange(_descriptor, -1)) == 0 || errno == EINTR; }

 private:
  OpenFile() = default;

  int _descriptor = -1;
};

enum class Links { Follow, Refuse };

/// Opens the file `name` of `folder`, which is made when it is missing. Where links are refused,
/// everything else that is no regular file is, too.
OpenFile openForWriting(int folder, const std::string& name, Links links) {
  constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;
  OpenFile created(folder, name, O_WRONLY | O_CREAT | O_EXCL, kOwnerOnly);
  if (created.isOpen()) {
    // Gives back what the umask took from the owner. A file system without modes may refuse; the
    // content is kept all the same.
    ::fchmod(created.descriptor(), kOwnerOnly);
    return created;
  }
  if (errno != EEXIST) return created;
  if (links == Links::Follow) return {folder, name, O_WRONLY | O_TRUNC};
  // A FIFO without a reader would hold up the opening.
  OpenFile found(folder, name, O_WRONLY | O_NOFOLLOW | O_NONBLOCK);
  if (found.isOpen() && (!found.isRegular() || ::ftruncate(found.descriptor(), 0) != 0)) {
    return OpenFile::none();
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
    // Reaches the content where the name is a link to it, too.
    [[maybe_unused]] const int emptied = ::ftruncate(file.descriptor(), 0);
  }
  if (isRegular) ::unlinkat(folder, name.c_str(), 0);
  return false;
}

/// Makes the folder `name` unless it is there. Its owner may use it whatever the umask.
void makeFolder(int above, const std::string& name, mode_t mode) {
  if (::mkdirat(above, name.c_str(), mode) != 0) return;
  struct stat status {};
  if (::fstatat(above, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return;
  if (!S_ISDIR(status.st_mode) || (status.st_mode & S_IRWXU) == S_IRWXU) return;
  ::fchmodat(above, name.c_str(), (status.st_mode & 07777U) | S_IRWXU, 0);
}

/// Goes down from `root` to the folder `relative` below it and follows no link there. Missing ones
/// are made when there is a mode for them.
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

}  // namespace

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

std::optional<std::string> LinuxFiles::read(const std::string& path) {
  if (!canNameAFile(path)) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  if (!file.is_open()) return std::nullopt;
  std::string content;
  while (file.good()) {
    const std::size_t before = content.size();
    content.resize(before + kReadBlock);
    file.read(content.data() + before, kReadBlock);
    content.resize(before + static_cast<std::size_t>(file.gcount()));
  }
  if (file.bad()) return std::nullopt;
  return content;
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

}  // namespace zt
