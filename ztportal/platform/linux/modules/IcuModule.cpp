#include "ztportal/platform/linux/modules/IcuModule.h"

#include "ztportal/base/ZtExport.h"
#include "ztportal/platform/IcuUserLocale.h"

namespace {

zt::UserLocale& userLocale() {
  static constinit zt::IcuUserLocale locale;
  return locale;
}

}  // namespace

extern "C" ZT_EXPORT const zt::IcuModule ztportalModuleTable;
const zt::IcuModule ztportalModuleTable{
    zt::currentTimestampWriter, userLocale,        zt::icuLocaleName,
    zt::canonicalLanguageTag,   zt::languageParts, zt::withLikelySubtags,
    zt::withoutLikelySubtags,   zt::lowerCase,     zt::utf8From};
