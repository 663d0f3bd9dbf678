#include <filesystem>
#include <string_view>
#include <system_error>

#include "ztportal/platform/process/Executable.h"

namespace zt {

std::string executablePath() {
  constexpr std::string_view kDeletedMark = " (deleted)";
  std::error_code error;
  std::string path = std::filesystem::read_symlink("/proc/self/exe", error).string();
  if (error) return {};
  // The kernel marks a file that was deleted; a file may also be named like that.
  if (path.ends_with(kDeletedMark) && !std::filesystem::exists(path, error)) {
    path.resize(path.size() - kDeletedMark.size());
  }
  return path;
}

}  // namespace zt
