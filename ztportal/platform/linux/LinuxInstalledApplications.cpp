#include "ztportal/platform/linux/LinuxInstalledApplications.h"

namespace zt {

std::optional<std::string> LinuxInstalledApplications::withIdentifier(
    std::string_view /*bundleIdentifier*/) {
  return std::nullopt;
}

std::optional<std::string> LinuxInstalledApplications::defaultFor(std::string_view /*url*/) {
  return std::nullopt;
}

std::optional<InstalledApplications::Info> LinuxInstalledApplications::info(
    const std::string& /*path*/) {
  return std::nullopt;
}

}  // namespace zt
