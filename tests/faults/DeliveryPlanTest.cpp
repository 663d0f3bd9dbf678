#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>

#include "tests/faults/DeliveryPlan.h"

// That a seed plays the same faults again, and all of them are played.

namespace zt::torture {
namespace {

std::string planOf(std::uint64_t seed, std::uint64_t number) {
  Random random(seed, number);
  return anyDeliveryPlan(random).text();
}

TEST(DeliveryPlanTest, FollowsFromTheSeedAndTheNumberOfTheReport) {
  std::set<std::string> plans;
  for (std::uint64_t number = 0; number < 100; ++number) {
    EXPECT_EQ(planOf(1, number), planOf(1, number));
    plans.insert(planOf(1, number));
    plans.insert(planOf(2, number));
  }
  EXPECT_GT(plans.size(), 50U);
}

TEST(DeliveryPlanTest, PlaysEveryFaultAmongTwoThousandReports) {
  std::set<std::string_view> names;
  for (std::uint64_t number = 0; number < 2'000; ++number) {
    Random random(1, number);
    names.insert(anyDeliveryPlan(random).name);
  }
  EXPECT_EQ(names.size(), 24U);
}

}  // namespace
}  // namespace zt::torture
