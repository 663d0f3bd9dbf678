#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <vector>

#include "ztportal/platform/files/HomeFolder.h"

namespace zt {

namespace {

bool isAbsolute(const char* path) { return path != nullptr && path[0] == '/'; }

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

}  // namespace

std::string homeFolder() {
  const char* const home = std::getenv("HOME");
  return isAbsolute(home) ? home : homeOfUserDatabase();
}

}  // namespace zt
