#include <string>
#include <string_view>

#include "tests/integration/library/CompanionBundle.h"
#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/Inbox.h"

// Test mode with a running companion. No other test runs at the same time, because all hosts of the
// machine are in test mode if the companion cannot be hidden.

namespace zt::test {
namespace {

using std::string_literals::operator""s;

std::string xmlList(const std::string& value) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<plist version=\"1.0\"><dict><key>ztTestMode</key>" +
         value + "</dict></plist>\n";
}

/// A binary property list {ztTestMode: `value`}; `value` is a binary object.
std::string binaryList(const std::string& value) {
  const std::string objects[] = {"\xD1\1\2"s, "\x5AztTestMode"s, value};
  std::string list = "bplist00";
  std::string offsets;
  for (const std::string& object : objects) {
    offsets += static_cast<char>(list.size());
    list += object;
  }
  const auto offsetTable = static_cast<char>(list.size());
  list += offsets;
  list += std::string(6, '\0') + "\1\1"s;  // widths of an offset and of a reference
  list += std::string(7, '\0') + "\3"s;    // objects
  list += std::string(8, '\0');            // the top one
  return list + std::string(7, '\0') + offsetTable;
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
  for (const std::string& ghost : {xmlList("<string>1</string>"), binaryList("\x51\x31")}) {
    CompanionBundle companion(ghost);
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
}

TEST_F(PortalTestModeTest, WithAnyOtherValueReportsAreNoTests) {
  const std::optional<std::string> ghosts[] = {xmlList("<string>0</string>"),
                                               binaryList("\x10\x01"), std::nullopt};
  for (const auto& ghost : ghosts) {
    CompanionBundle companion(ghost);
    companion.start();
    EXPECT_TRUE(makeReport(inbox.configurationUrl())->reportToServer());
    EXPECT_EQ(lastOf(inbox), "Kelvane, no test") << ghost.value_or("no list");
  }
}

}  // namespace
}  // namespace zt::test
