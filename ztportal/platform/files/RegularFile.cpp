#include "ztportal/platform/files/RegularFile.h"

#include <filesystem>
#include <system_error>

#include "ztportal/platform/files/LinuxFiles.h"

namespace zt {

std::optional<std::string> regularFile(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) return std::nullopt;
  return LinuxFiles().read(path);
}

}  // namespace zt
