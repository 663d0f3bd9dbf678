#include "ztportal/platform/linux/LinuxFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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
  OpenFile(const std::string& path, int flags, mode_t mode = 0) {
    do {
      _descriptor = ::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode);
    } while (_descriptor < 0 && errno == EINTR);
  }
  OpenFile(OpenFile&& other) noexcept : _descriptor(std::exchange(other._descriptor, -1)) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (isOpen()) ::close(_descriptor);
  }

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
  int _descriptor = -1;
};

OpenFile openForWriting(const std::string& path) {
  constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;
  OpenFile created(path, O_WRONLY | O_CREAT | O_EXCL, kOwnerOnly);
  if (created.isOpen()) {
    // Gives back what the umask took from the owner. A file system without modes may refuse; the
    // content is kept all the same.
    ::fchmod(created.descriptor(), kOwnerOnly);
    return created;
  }
  if (errno != EEXIST) return created;
  return {path, O_WRONLY | O_TRUNC};
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
  std::error_code error;
  std::filesystem::create_directories(path, error);
  return !error && isFolder(path);
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
  if (!canNameAFile(path)) return false;
  OpenFile file = openForWriting(path);
  if (!file.isOpen()) return false;
  const bool isRegular = file.isRegular();
  if (file.writeAll(content)) {
    if (file.close()) return true;
  } else if (isRegular) {
    // Reaches the content where `path` is a link to it, too.
    [[maybe_unused]] const int emptied = ::ftruncate(file.descriptor(), 0);
  }
  if (isRegular) ::unlink(path.c_str());
  return false;
}

bool LinuxFiles::remove(const std::string& path) {
  std::error_code error;
  return canNameAFile(path) && std::filesystem::remove(path, error);
}

}  // namespace zt
