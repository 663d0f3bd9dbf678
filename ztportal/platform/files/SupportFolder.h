// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zt {

/// Code of the user's folder domain, the only one that Linux has a folder for.
inline constexpr std::int16_t kUserDomain = -32763;

/// The folder for the data of applications.
class SupportFolder {
 public:
  virtual ~SupportFolder() = default;

  /// Absolute path of the domain's application-support folder, which may not exist; nothing for a
  /// domain without such a folder.
  virtual std::optional<std::string> path(std::int16_t domain) = 0;
};

/// The user's home folder: `$HOME`, or else that of the user database; empty if neither is an
/// absolute path.
std::string homeFolder();

/// The user's home folder of the user database; empty if it is unknown or no absolute path.
std::string homeOfUserDatabase();

}  // namespace zt
