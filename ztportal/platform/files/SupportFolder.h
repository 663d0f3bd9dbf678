#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zt {

/// Codes of the folder domains. Only the user's has an answer on Linux.
inline constexpr std::int16_t kUserDomain = -32763;

/// Where applications keep data that they make themselves.
class SupportFolder {
 public:
  virtual ~SupportFolder() = default;

  /// Absolute path of the domain's application-support folder, whether it exists or not; nothing
  /// for a domain that the system has no such folder for.
  virtual std::optional<std::string> path(std::int16_t domain) = 0;
};

}  // namespace zt
