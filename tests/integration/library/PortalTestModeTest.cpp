// SPDX-License-Identifier: Apache-2.0
#include <string>

#include "tests/integration/library/CompanionBundle.h"
#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/Inbox.h"

// Test mode with a running companion. No other test runs at the same time, because all hosts of the
// machine are in test mode if the companion cannot be hidden.

namespace zt::test {
namespace {

std::string propertyList(const std::string& value) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<plist version=\"1.0\"><dict><key>ztTestMode</key>" +
         value + "</dict></plist>\n";
}

class PortalTestModeTest : public RealPortalTest {
 protected:
  /// The last report as "customer, test" or "customer, no test".
  static std::string lastOf(Inbox& inbox) {
    const auto report = inbox.reports().at(0);
    return report.customerId + (report.isTest ? ", test" : ", no test");
  }

  Inbox inbox;
};

TEST_F(PortalTestModeTest, ReportsAreTestsWhileTheCompanionRuns) {
  CompanionBundle companion(propertyList("<string>1</string>"));
  const auto document = makeReport(inbox.configurationUrl());
  EXPECT_TRUE(document->reportToServer());
  EXPECT_EQ(lastOf(inbox), "Kelvane, no test") << "not running yet";

  companion.start();
  EXPECT_TRUE(document->reportToServer());
  EXPECT_EQ(lastOf(inbox), "Kelvane_Test, test");
  EXPECT_EQ(inbox.raw(inbox.reports().at(0).number), document->getSoapString());

  companion.stop();
  EXPECT_TRUE(document->reportToServer());
  EXPECT_EQ(lastOf(inbox), "Kelvane, no test");
}

TEST_F(PortalTestModeTest, WithAnyOtherValueReportsAreNoTests) {
  const std::optional<std::string> ghosts[] = {propertyList("<string>0</string>"),
                                               propertyList("<integer>1</integer>"), std::nullopt};
  for (const auto& ghost : ghosts) {
    CompanionBundle companion(ghost);
    companion.start();
    EXPECT_TRUE(makeReport(inbox.configurationUrl())->reportToServer());
    EXPECT_EQ(lastOf(inbox), "Kelvane, no test") << ghost.value_or("no list");
  }
}

}  // namespace
}  // namespace zt::test
