#pragma once

#include <vector>

#include "ztportal/platform/locale/Localizations.h"

namespace zt {

/// The localizations of the bundle above the running executable, matched with the languages of the
/// environment. Bundle and environment are read at every call.
class BundleLocalizations final : public Localizations {
 public:
  std::vector<ZtString> preferredLocalizations() override;
};

}  // namespace zt
