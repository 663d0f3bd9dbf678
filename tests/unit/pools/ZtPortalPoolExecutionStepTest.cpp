#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <thread>
#include <type_traits>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalDef.h"
#include "ztportal/pools/ZtPortalPoolExecutionStep.h"

namespace {

using zt::test::kLater;
using zt::test::kNoon;

TEST(ZtPortalPoolExecutionStepTest, BeginsWithItsValuesAndAnEmptyMessage) {
  const auto step = ZtPortalPoolExecutionStep::initWithValues(kNoon, "Copy", ZtPortalStepLeave);
  EXPECT_EQ(step->timeStamp(), kNoon);
  EXPECT_EQ(step->stepName(), "Copy");
  EXPECT_EQ(step->stepType(), 1U);
  EXPECT_EQ(step->stepMessageString(), "");
  EXPECT_EQ(step->stepMessageCode(), "");
  EXPECT_FALSE(step->stepMessageString().isNull());
  EXPECT_FALSE(step->stepMessageCode().isNull());
}

TEST(ZtPortalPoolExecutionStepTest, NameAndTimeMayBeMissingAndTheTypeAnyNumber) {
  const auto step = ZtPortalPoolExecutionStep::initWithValues(
      ZtDate(), nullptr, std::numeric_limits<std::uint64_t>::max());
  EXPECT_TRUE(step->timeStamp().isNull());
  EXPECT_TRUE(step->stepName().isNull());
  EXPECT_EQ(step->stepType(), 18446744073709551615U);
}

TEST(ZtPortalPoolExecutionStepTest, TakesOtherValuesOneByOne) {
  const auto step = ZtPortalPoolExecutionStep::initWithValues(kNoon, "Copy", 0);
  step->setTimeStamp(kLater);
  EXPECT_EQ(step->timeStamp(), kLater);
  step->setStepName("Move");
  EXPECT_EQ(step->stepName(), "Move");
  step->setStepType(std::uint64_t{1} << 63U);
  EXPECT_EQ(step->stepType(), 9223372036854775808U);
  step->setStepMessageString("disk full");
  EXPECT_EQ(step->stepMessageString(), "disk full");
  EXPECT_EQ(step->stepMessageCode(), "");
  step->setStepMessageCode("28");
  EXPECT_EQ(step->stepMessageCode(), "28");
  EXPECT_EQ(step->stepMessageString(), "disk full");
  EXPECT_EQ(step->stepName(), "Move");
}

TEST(ZtPortalPoolExecutionStepTest, TakesMissingValues) {
  const auto step = ZtPortalPoolExecutionStep::initWithValues(kNoon, "Copy", 0);
  step->setTimeStamp(ZtDate());
  step->setStepName(nullptr);
  step->setStepMessageString(nullptr);
  step->setStepMessageCode(nullptr);
  EXPECT_TRUE(step->timeStamp().isNull());
  EXPECT_TRUE(step->stepName().isNull());
  EXPECT_TRUE(step->stepMessageString().isNull());
  EXPECT_TRUE(step->stepMessageCode().isNull());
}

TEST(ZtPortalPoolExecutionStepTest, SharesItsNameAndCannotBeCopied) {
  static_assert(!std::is_copy_constructible_v<ZtPortalPoolExecutionStep>);
  static_assert(!std::is_copy_assignable_v<ZtPortalPoolExecutionStep>);
  const ZtString name = "shared";
  const auto step = ZtPortalPoolExecutionStep::initWithValues(kNoon, name, 0);
  EXPECT_EQ(step->stepName().view().data(), name.view().data());
}

TEST(ZtPortalPoolExecutionStepTest, ItsValuesMayBeReadWhileAnotherThreadSetsThem) {
  const auto step = ZtPortalPoolExecutionStep::initWithValues(kNoon, "a", 0);
  step->setStepMessageString("a");
  step->setStepMessageCode("a");
  std::thread writer([&step] {
    for (int round = 0; round < 1000; ++round) {
      const char* const text = round % 2 != 0 ? "a" : "b";
      step->setStepName(text);
      step->setStepMessageString(text);
      step->setStepMessageCode(text);
      step->setTimeStamp(round % 2 != 0 ? kNoon : kLater);
    }
  });
  int mixtures = 0;
  for (int round = 0; round < 1000; ++round) {
    for (const ZtString& seen :
         {step->stepName(), step->stepMessageString(), step->stepMessageCode()}) {
      if (seen != "a" && seen != "b") ++mixtures;
    }
    const ZtDate time = step->timeStamp();
    if (time != kNoon && time != kLater) ++mixtures;
  }
  writer.join();
  EXPECT_EQ(mixtures, 0);
}

}  // namespace
