#pragma once

#include <string_view>

namespace zt {

/// What the environment says about dates. Valid until the environment changes.
struct TimeEnvironment {
  const char* zone;             ///< value of `TZ`, null when it is unset
  std::string_view localeName;  ///< as `userLocaleName("LC_TIME")` gives it
};

/// The environment as it is now, without a memory allocation.
TimeEnvironment timeEnvironment();

}  // namespace zt
