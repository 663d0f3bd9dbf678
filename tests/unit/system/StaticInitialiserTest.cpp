// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tests/support/Printing.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/portal/ZtPortalConstants.h"
#include "ztportal/report/ZtApplicationIds.h"
#include "ztportal/report/ZtReportConstants.h"
#include "ztportal/system/ZtApplicationIdentifiers.h"
#include "ztportal/system/ZtSystemInfos.h"

namespace {

// Hosts may build constants from the library's, in any order of initialisation.
const ZtString kGhostReadAtStart = GHOST_BUNDLE_IDENT;
const std::string kFolderReadAtStart = std::string(COMPANY_NAME.view()) + "/" +
                                       std::string(APP_SUBFOLDERNAME.view()) + "/" +
                                       std::string(APP_CONFIGURATIONFILE.view());
const std::map<ZtString, int> kKeysReadAtStart{{ZtDIAG_SYSTEM_INFOS_OS_VERSION_NUMBER, 1},
                                               {ZtDIAG_SYSTEM_INFOS_OS_SERVICEPACK, 2},
                                               {ZtDIAG_SYSTEM_INFOS_PLATFORM_UUID, 3}};

const std::string kCustomerReadAtStart(REP_CUSTOMERID_BRISALINK.view());
const std::string kUrlReadAtStart(REP_URL_BRISALINK.view());
const ZtString kProgramReadAtStart = APP_FIREFOX_IDENT;
const std::size_t kIdSizeAtStart = REP_APPID_ZT_INSTALLER.view().size();

TEST(StaticInitialiserTest, ReadsTheConstantsOfTheLibrary) {
  EXPECT_EQ(kCustomerReadAtStart, "Brisalink");
  EXPECT_EQ(kUrlReadAtStart, "http://config.kelvane.example/reporting/brisalink.xml");
  EXPECT_EQ(kProgramReadAtStart, "org.mozilla.firefox");
  EXPECT_EQ(kIdSizeAtStart, 38U);
  EXPECT_EQ(kGhostReadAtStart, "com.kelvane.ZtPortalGhost");
  EXPECT_EQ(kFolderReadAtStart, "Kelvane/ztportal/configuration.xml");
  const std::map<ZtString, int> expected{{"ZtDIAG_SYSTEM_INFOS_OS_VERSION_NUMBER", 1},
                                         {"ZtDIAG_SYSTEM_INFOS_OS_SERVICEPACK", 2},
                                         {"ZtDIAG_SYSTEM_INFOS_PLATFORM_UUID", 3}};
  EXPECT_EQ(kKeysReadAtStart, expected);
}

}  // namespace
