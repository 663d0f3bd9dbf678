#include "tests/faults/DeliveryPlan.h"

#include <array>
#include <cstddef>

namespace zt::torture {

namespace {

constexpr std::size_t kPartOfAnswer = 900;      // an answer with its head is about this long
constexpr std::size_t kQuickDrip = 300;         // microseconds: all of it in time
constexpr std::size_t kSlowDrip = 20'000;       // beyond the time-out
constexpr std::size_t kMomentOfServer = 4'000;  // microseconds in which it answers
constexpr unsigned kBeyondTimeout = 60'000;     // milliseconds
constexpr std::array<const char*, 26> kErrors{
    "error:200", "error:201", "error:202", "error:204", "error:205", "error:206", "error:299",
    "error:300", "error:301", "error:302", "error:303", "error:304", "error:307", "error:308",
    "error:400", "error:401", "error:403", "error:404", "error:407", "error:408", "error:413",
    "error:429", "error:500", "error:502", "error:503", "error:504"};

using Alter = void (*)(DeliveryPlan&, Random&);

struct Kind {
  std::string_view name;
  unsigned weight;
  Alter alter;
};

template <RelayFault fault>
void harmlessOnReport(DeliveryPlan& plan, Random& /*random*/) {
  plan.relay = {Exchange::kReport, fault, 0};
}

/// The server may have the report without the library's knowing.
template <RelayFault fault, std::size_t most>
void onReport(DeliveryPlan& plan, Random& random) {
  plan.relay = {Exchange::kReport, fault, most == 0 ? 0 : random.below(most)};
  plan.losesAnswer = true;
}

/// Before the report: the server never has it without having confirmed it.
template <RelayFault fault, std::size_t most>
void onTheWay(DeliveryPlan& plan, Random& random) {
  const bool first = random.below(2) == 0;
  plan.relay = {first ? Exchange::kConfiguration : Exchange::kVersion, fault,
                most == 0 ? 0 : random.below(most)};
}

template <RelayFault fault, std::size_t most>
void killServer(DeliveryPlan& plan, Random& random) {
  onReport<fault, most>(plan, random);
  plan.killsServer = true;
}

constexpr std::array<Kind, 24> kKinds{{
    {"no fault", 200, [](DeliveryPlan&, Random&) {}},
    {"refused", 80, [](DeliveryPlan& plan, Random&) { plan.answer = "refuse"; }},
    {"garbage", 80, [](DeliveryPlan& plan, Random&) { plan.answer = "garbage"; }},
    {"status", 200,
     [](DeliveryPlan& plan, Random& random) {
       plan.answer = kErrors[random.below(kErrors.size())];
     }},
    {"interim status first", 40, harmlessOnReport<RelayFault::kInterimFirst>},
    {"dropped", 40, [](DeliveryPlan& plan, Random&) { plan.answer = "drop"; }},
    {"truncated", 40, [](DeliveryPlan& plan, Random&) { plan.answer = "truncate"; }},
    {"slow", 30,
     [](DeliveryPlan& plan, Random& random) { plan.slow = 1 + unsigned(random.below(50)); }},
    {"slower than the time-out", 6,
     [](DeliveryPlan& plan, Random&) {
       plan.slow = kBeyondTimeout;
       plan.losesAnswer = true;
     }},
    {"hangs", 6, [](DeliveryPlan& plan, Random&) { plan.answer = "hang"; }},
    {"unreachable", 30, [](DeliveryPlan& plan, Random&) { plan.unreachable = true; }},
    {"reset before the request", 40, harmlessOnReport<RelayFault::kResetBeforeRequest>},
    {"reset before the answer", 40, onReport<RelayFault::kResetBeforeAnswer, 0>},
    {"reset in the answer", 80, onReport<RelayFault::kResetInAnswer, kPartOfAnswer>},
    {"reset after the answer", 40, onReport<RelayFault::kResetAfterAnswer, 0>},
    {"cut in the answer", 80, onReport<RelayFault::kCutInAnswer, kPartOfAnswer>},
    {"slow by the byte", 30, onReport<RelayFault::kDrip, kQuickDrip>},
    {"slower by the byte than the time-out", 6,
     [](DeliveryPlan& plan, Random&) {
       plan.relay = {Exchange::kReport, RelayFault::kDrip, kSlowDrip};
       plan.losesAnswer = true;
     }},
    {"configuration or version reset", 60, onTheWay<RelayFault::kResetBeforeAnswer, 0>},
    {"configuration or version reset midway", 60,
     onTheWay<RelayFault::kResetInAnswer, kPartOfAnswer>},
    {"configuration or version cut", 60, onTheWay<RelayFault::kCutInAnswer, kPartOfAnswer>},
    {"configuration or version hangs", 4, onTheWay<RelayFault::kHang, 0>},
    {"server killed before the report", 20, killServer<RelayFault::kKillServerFirst, 0>},
    {"server killed at the report", 60, killServer<RelayFault::kKillServer, kMomentOfServer>},
}};

unsigned sumOfWeights() {
  unsigned sum = 0;
  for (const Kind& kind : kKinds) sum += kind.weight;
  return sum;
}

}  // namespace

std::string DeliveryPlan::text() const {
  return std::string(name) + " (answer " + answer + ", slow " + std::to_string(slow) +
         ", exchange " + std::to_string(static_cast<int>(relay.exchange)) + ", amount " +
         std::to_string(relay.amount) + ")";
}

DeliveryPlan anyDeliveryPlan(Random& random) {
  std::uint64_t ticket = random.below(sumOfWeights());
  const Kind* chosen = kKinds.data();
  while (ticket >= chosen->weight) {
    ticket -= chosen->weight;
    ++chosen;
  }
  DeliveryPlan plan{chosen->name};
  chosen->alter(plan, random);
  return plan;
}

}  // namespace zt::torture
