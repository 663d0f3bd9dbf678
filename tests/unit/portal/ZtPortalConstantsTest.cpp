#include <gtest/gtest.h>

#include "tests/support/Printing.h"
#include "ztportal/portal/ZtPortalConstants.h"

namespace {

// Read while the program's static objects are made, as hosts do.
const ZtString kReadAtStart = GHOST_BUNDLE_IDENT;

TEST(ZtPortalConstantsTest, AreWhatHostsAndTheCompanionKnow) {
  EXPECT_EQ(COMPANY_NAME, "Kelvane");
  EXPECT_EQ(APP_SUBFOLDERNAME, "ztportal");
  EXPECT_EQ(APP_CONFIGURATIONFILE, "configuration.xml");
  EXPECT_EQ(GHOST_BUNDLE_IDENT, "com.kelvane.ZtPortalGhost");
}

TEST(ZtPortalConstantsTest, AreThereForStaticInitialisers) {
  EXPECT_EQ(kReadAtStart, "com.kelvane.ZtPortalGhost");
}

}  // namespace
