#include "ztportal/platform/linux/LinuxSupportFolder.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <vector>

namespace zt {

namespace {

std::optional<std::string> absolutePath(const char* text) {
  if (text == nullptr || text[0] != '/') return std::nullopt;
  return text;
}

std::optional<std::string> homeOfUserDatabase() {
  constexpr std::size_t kFirstSize = 1024;
  constexpr std::size_t kLargestSize = kFirstSize * 1024;
  for (std::size_t size = kFirstSize; size <= kLargestSize; size *= 2) {
    std::vector<char> texts(size);
    struct passwd entry {};
    struct passwd* found = nullptr;
    const int error = ::getpwuid_r(::getuid(), &entry, texts.data(), texts.size(), &found);
    if (error == ERANGE || error == EINTR) continue;
    if (found == nullptr) return std::nullopt;
    return absolutePath(found->pw_dir);
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> LinuxSupportFolder::path(std::int16_t domain) {
  if (domain != kUserDomain) return std::nullopt;
  if (auto dataFolder = absolutePath(std::getenv("XDG_DATA_HOME"))) return dataFolder;
  std::optional<std::string> home = absolutePath(std::getenv("HOME"));
  if (!home) home = homeOfUserDatabase();
  if (!home) return std::nullopt;
  if (home->back() != '/') *home += '/';
  return *home + ".local/share";
}

}  // namespace zt
