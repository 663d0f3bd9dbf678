#include "ztportal/platform/BundleLocalizations.h"

#include <optional>

#include "ztportal/platform/Bundle.h"
#include "ztportal/platform/Executable.h"
#include "ztportal/platform/LocalizationMatch.h"
#include "ztportal/platform/PreferredLanguages.h"

namespace zt {

std::vector<ZtString> BundleLocalizations::preferredLocalizations() {
  const std::optional<Bundle> bundle = Bundle::above(executablePath());
  if (!bundle) return {};
  return matchLocalizations(bundle->localizations(), preferredLanguages(),
                            bundle->info("CFBundleDevelopmentRegion"));
}

}  // namespace zt
