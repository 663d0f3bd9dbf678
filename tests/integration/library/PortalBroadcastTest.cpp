#include <optional>
#include <string>

#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/BroadcastReceiver.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/SessionBus.h"
#include "ztportal/platform/time/DateText.h"

// What another process on the session bus learns of a report, and when.

namespace zt::test {
namespace {

using ::testing::AnyOf;

class PortalBroadcastTest : public RealPortalTest {
 protected:
  static std::string lineOf(const std::string& date, const std::string& request) {
    return broadcastLine("ZtPortalGhostNotification", "Setup",
                         {{"version", "2.1"}, {"date", date}, {"request", request}});
  }

  SessionBus _bus;
  ScopedEnvironment _address{"DBUS_SESSION_BUS_ADDRESS", _bus.address().c_str()};
  BroadcastReceiver _receiver;
};

TEST_F(PortalBroadcastTest, ReachesTheCompanionBeforeTheServerHasAnswered) {
  std::optional<std::string> told;
  // The post is answered only once the broadcast is there: one that was sent after the answer, or
  // after the client gave up, would leave the report unaccepted.
  const ReportingServer server([this, &told](RequestKind asked) {
    if (asked == RequestKind::Report) told = _receiver.next();
  });
  const auto document = makeReport(server.configurationUrl());
  const std::string before = shortDateAndTime(ZtDate::now());
  ASSERT_TRUE(document->reportToServer());
  const std::string after = shortDateAndTime(ZtDate::now());
  EXPECT_EQ(server.requests().size(), 3U);
  const std::string request = document->getSoapString();
  EXPECT_THAT(told, AnyOf(lineOf(before, request), lineOf(after, request)));
}

TEST_F(PortalBroadcastTest, IsSentForAReportThatNoServerTakes) {
  const auto document = makeReport("");
  const std::string before = shortDateAndTime(ZtDate::now());
  EXPECT_FALSE(document->reportToServer());
  const std::string after = shortDateAndTime(ZtDate::now());
  const std::string request = document->getSoapString();
  EXPECT_THAT(_receiver.next(), AnyOf(lineOf(before, request), lineOf(after, request)));
}

}  // namespace
}  // namespace zt::test
