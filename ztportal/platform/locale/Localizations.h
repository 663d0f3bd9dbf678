#pragma once

#include <vector>

#include "ztportal/base/ZtString.h"

namespace zt {

/// The languages that the host application speaks.
class Localizations {
 public:
  virtual ~Localizations() = default;

  /// Names of the main bundle's localizations that suit the user, best match first; empty for a
  /// host outside any bundle or without localizations.
  virtual std::vector<ZtString> preferredLocalizations() = 0;
};

}  // namespace zt
