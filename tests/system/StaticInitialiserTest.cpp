#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tests/support/Printing.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/portal/ZtPortalConstants.h"
#include "ztportal/system/ZtSystemInfos.h"

namespace {

// A host's own constants are made of the library's, in whatever order the files are initialised.
const ZtString kGhostReadAtStart = GHOST_BUNDLE_IDENT;
const std::string kFolderReadAtStart = std::string(COMPANY_NAME.view()) + "/" +
                                       std::string(APP_SUBFOLDERNAME.view()) + "/" +
                                       std::string(APP_CONFIGURATIONFILE.view());
const std::map<ZtString, int> kKeysReadAtStart{{ZtDIAG_SYSTEM_INFOS_OS_VERSION_NUMBER, 1},
                                               {ZtDIAG_SYSTEM_INFOS_OS_SERVICEPACK, 2},
                                               {ZtDIAG_SYSTEM_INFOS_PLATFORM_UUID, 3}};

TEST(StaticInitialiserTest, ReadsTheConstantsOfTheLibrary) {
  EXPECT_EQ(kGhostReadAtStart, "com.kelvane.ZtPortalGhost");
  EXPECT_EQ(kFolderReadAtStart, "Kelvane/ztportal/configuration.xml");
  const std::map<ZtString, int> expected{{"ZtDIAG_SYSTEM_INFOS_OS_VERSION_NUMBER", 1},
                                         {"ZtDIAG_SYSTEM_INFOS_OS_SERVICEPACK", 2},
                                         {"ZtDIAG_SYSTEM_INFOS_PLATFORM_UUID", 3}};
  EXPECT_EQ(kKeysReadAtStart, expected);
}

}  // namespace
