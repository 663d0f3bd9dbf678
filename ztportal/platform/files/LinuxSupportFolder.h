#pragma once

#include "ztportal/platform/files/SupportFolder.h"

namespace zt {

/// The user's data folder (XDG base directories): `$XDG_DATA_HOME`, or `.local/share` in the user's
/// home, which is `$HOME` or else the one of the user database. A variable that holds no absolute
/// path counts as unset. Reads the environment at each call.
class LinuxSupportFolder final : public SupportFolder {
 public:
  std::optional<std::string> path(std::int16_t domain) override;
};

}  // namespace zt
