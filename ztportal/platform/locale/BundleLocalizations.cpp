#include "ztportal/platform/locale/BundleLocalizations.h"

#include <optional>

#include "ztportal/platform/locale/LocalizationMatch.h"
#include "ztportal/platform/locale/PreferredLanguages.h"
#include "ztportal/platform/plist/Bundle.h"
#include "ztportal/platform/process/Executable.h"

namespace zt {

std::vector<ZtString> BundleLocalizations::preferredLocalizations() {
  const std::optional<Bundle> bundle = Bundle::above(executablePath());
  if (!bundle) return {};
  return matchLocalizations(bundle->localizations(), preferredLanguages(),
                            bundle->info("CFBundleDevelopmentRegion"));
}

}  // namespace zt
