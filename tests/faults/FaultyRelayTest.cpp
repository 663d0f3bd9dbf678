#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <string>

#include "tests/faults/FaultyRelay.h"
#include "tests/integration/ztinbox/RawClient.h"
#include "tests/support/Inbox.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"

// What a client and the server see of each fault of the network.

namespace zt::torture {
namespace {

using test::Inbox;
using test::RawClient;
using End = RawClient::End;

constexpr int kPatience = 300;  // milliseconds for what does not come

struct Seen {
  std::string bytes;
  End end = End::kStillOpen;
  std::size_t reached = 0;  ///< reports that the server got
};

int portOf(const std::string& url) { return std::stoi(url.substr(url.rfind(':') + 1)); }

class FaultyRelayTest : public ::testing::Test {
 protected:
  Seen seenWith(const RelayPlan& plan) {
    inbox.clear();
    relay.setPlan(plan);
    RawClient client(portOf(relay.url()));
    client.send(test::postRequest("/soap", test::SampleReport().text()));
    Seen seen;
    seen.bytes = client.receiveAll(kPatience);
    seen.end = client.end();
    seen.reached = inbox.reports().size();
    return seen;
  }

  Inbox inbox;
  std::atomic<int> kills = 0;
  FaultyRelay relay{inbox.port(), [this] { ++kills; }};
};

TEST_F(FaultyRelayTest, PlaysEachFault) {
  const std::string whole = seenWith({Exchange::kReport, RelayFault::kNone}).bytes;
  ASSERT_NE(whole.find(">true<"), std::string::npos);
  const struct {
    RelayFault fault;
    std::size_t amount;
    std::string bytes;
    End end;
    std::size_t reached;
  } rows[] = {
      {RelayFault::kNone, 0, whole, End::kStillOpen, 1},
      {RelayFault::kResetBeforeRequest, 0, "", End::kReset, 0},
      {RelayFault::kResetBeforeAnswer, 0, "", End::kReset, 1},
      {RelayFault::kResetInAnswer, 40, whole.substr(0, 40), End::kReset, 1},
      {RelayFault::kResetAfterAnswer, 0, whole, End::kReset, 1},
      {RelayFault::kCutInAnswer, 40, whole.substr(0, 40), End::kOrderly, 1},
      {RelayFault::kDrip, 50, whole, End::kStillOpen, 1},
      {RelayFault::kHang, 0, "", End::kStillOpen, 0},
      {RelayFault::kInterimFirst, 0, "HTTP/1.1 102 Processing\r\n\r\n" + whole, End::kStillOpen, 1},
  };
  for (const auto& row : rows) {
    const Seen seen = seenWith({Exchange::kReport, row.fault, row.amount});
    SCOPED_TRACE(static_cast<int>(row.fault));
    EXPECT_EQ(seen.bytes, row.bytes);
    EXPECT_EQ(seen.end, row.end);
    EXPECT_EQ(seen.reached, row.reached);
  }
  EXPECT_EQ(kills, 0);
}

TEST_F(FaultyRelayTest, LeavesOtherExchangesAlone) {
  for (const Exchange exchange : {Exchange::kConfiguration, Exchange::kVersion}) {
    const Seen seen = seenWith({exchange, RelayFault::kResetBeforeRequest});
    EXPECT_NE(seen.bytes.find(">true<"), std::string::npos);
    EXPECT_EQ(seen.reached, 1U);
  }
}

TEST_F(FaultyRelayTest, HasTheServerKilledBeforeAndAtTheReport) {
  seenWith({Exchange::kReport, RelayFault::kKillServerFirst});
  EXPECT_EQ(kills, 1);
  seenWith({Exchange::kReport, RelayFault::kKillServer, 100});
  EXPECT_EQ(kills, 2);
}

}  // namespace
}  // namespace zt::torture
