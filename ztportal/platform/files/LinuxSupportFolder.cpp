#include "ztportal/platform/files/LinuxSupportFolder.h"

#include <cstdlib>

#include "ztportal/platform/files/HomeFolder.h"

namespace zt {

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
