#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/ztinbox/api/Moment.h"

namespace zt::inbox {

/// Which reports are meant: those of which everything here that is given holds.
struct ReportFilter {
  std::optional<std::string> customer = std::nullopt;     ///< this customer ID, letter for letter
  std::optional<std::string> application = std::nullopt;  ///< this application ID
  std::optional<std::string> machine = std::nullopt;      ///< this machine ID
  std::optional<std::string> pool = std::nullopt;         ///< a pool of this type is in it
  std::optional<std::string> text = std::nullopt;         ///< SearchWords.h says how it is read
  std::optional<bool> test = std::nullopt;                ///< came to the test address, or did not
  std::optional<bool> read = std::nullopt;                ///< is marked as read, or is not
  std::optional<Moment> since = std::nullopt;             ///< received at this time or later
  std::optional<Moment> until = std::nullopt;             ///< received before
  std::optional<std::uint64_t> before = std::nullopt;     ///< only smaller numbers
};

}  // namespace zt::inbox
