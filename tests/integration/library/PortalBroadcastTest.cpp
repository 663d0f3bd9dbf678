// SPDX-License-Identifier: Apache-2.0
#include <optional>
#include <string>

#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/BroadcastReceiver.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/PatientPlatform.h"
#include "tests/support/SessionBus.h"
#include "ztportal/platform/time/DateText.h"

// The broadcasts that another process on the session bus receives, and when.

namespace zt::test {
namespace {

using ::testing::AnyOf;

class PortalBroadcastTest : public RealPortalTest {
 protected:
  static std::string lineOf(const std::string& date, const std::string& request) {
    return broadcastLine("ZtPortalGhostNotification", "Setup",
                         {{"version", "2.1"}, {"date", date}, {"request", request}});
  }

  PatientPlatform _platform;
  SessionBus _bus;
  ScopedEnvironment _address{"DBUS_SESSION_BUS_ADDRESS", _bus.address().c_str()};
  BroadcastReceiver _receiver;
};

TEST_F(PortalBroadcastTest, ReachesTheCompanionBeforeTheServerResponds) {
  std::optional<std::string> received;
  // The server responds only after the broadcast arrived. A broadcast after the response, or after
  // the timeout, would leave the report unaccepted.
  const ReportingServer server([this, &received](RequestKind asked) {
    if (asked == RequestKind::Report) received = _receiver.next();
  });
  const auto document = makeReport(server.configurationUrl());
  const std::string before = shortDateAndTime(ZtDate::now());
  ASSERT_TRUE(document->reportToServer());
  const std::string after = shortDateAndTime(ZtDate::now());
  EXPECT_EQ(server.requests().size(), 3U);
  const std::string request = document->getSoapString();
  EXPECT_THAT(received, AnyOf(lineOf(before, request), lineOf(after, request)));
}

TEST_F(PortalBroadcastTest, IsSentAlsoWithoutAServer) {
  const auto document = makeReport("");
  const std::string before = shortDateAndTime(ZtDate::now());
  EXPECT_FALSE(document->reportToServer());
  const std::string after = shortDateAndTime(ZtDate::now());
  const std::string request = document->getSoapString();
  EXPECT_THAT(_receiver.next(), AnyOf(lineOf(before, request), lineOf(after, request)));
}

}  // namespace
}  // namespace zt::test
