#pragma once

#include "ztportal/platform/InstalledApplications.h"

namespace zt {

class LinuxInstalledApplications final : public InstalledApplications {
 public:
  std::optional<std::string> withIdentifier(std::string_view bundleIdentifier) override;
  std::optional<std::string> defaultFor(std::string_view url) override;
  std::optional<Info> info(const std::string& path) override;
};

}  // namespace zt
