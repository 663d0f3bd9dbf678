#include "ztportal/platform/linux/RegularFile.h"

#include <filesystem>
#include <system_error>

#include "ztportal/platform/linux/LinuxFiles.h"

namespace zt {

std::optional<std::string> regularFile(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) return std::nullopt;
  return LinuxFiles().read(path);
}

}  // namespace zt
