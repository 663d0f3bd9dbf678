#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/pools/ZtPortalDef.h"
#include "ztportal/pools/ZtPortalPoolExecution.h"

namespace {

using zt::test::kEpoch;
using zt::test::kLater;
using zt::test::kNoon;

class ZtPortalPoolExecutionTest : public zt::test::PoolsFixture {
 protected:
  static std::string raisedByStep(const ZtPortalPoolExecution& pool, std::int32_t index) {
    try {
      pool.executionStep(index);
    } catch (const ZtException& error) {
      return std::string(error.name().view()) + ": " + std::string(error.reason().view());
    }
    return "nothing";
  }
};

TEST_F(ZtPortalPoolExecutionTest, BeginsAndEndsAtItsTimeStampWithDefaults) {
  const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
  EXPECT_EQ(pool->poolType(), "EXECUTION");
  EXPECT_EQ(pool->timeStamp(), kNoon);
  EXPECT_EQ(pool->startTime(), kNoon);
  EXPECT_EQ(pool->endTime(), kNoon);
  EXPECT_EQ(pool->startPoint(), "");
  EXPECT_EQ(pool->endPoint(), "");
  EXPECT_EQ(pool->endResultString(), "");
  EXPECT_EQ(pool->endResultCode(), "");
  EXPECT_EQ(pool->endErrorMessageString(), "");
  EXPECT_EQ(pool->endErrorMessageCode(), "");
  EXPECT_EQ(pool->successfull(), 1);
  EXPECT_EQ(pool->cancelled(), 0);
  EXPECT_EQ(pool->executionType(), "Standard");
  EXPECT_TRUE(pool->executionSteps().empty());
  EXPECT_EQ(pool->fields()->fieldName(), "Root");
  EXPECT_TRUE(pool->fields()->fields().empty());
}

TEST_F(ZtPortalPoolExecutionTest, TakesEachValueWithoutChangingAnother) {
  const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
  pool->setStartPoint("a");
  pool->setEndPoint("b");
  pool->setStartTime(kLater);
  pool->setEndTime(kEpoch);
  pool->setEndResultString("c");
  pool->setEndResultCode("d");
  pool->setEndErrorMessageString("e");
  pool->setEndErrorMessageCode("f");
  pool->setSuccessfull(2);
  pool->setCancelled(-1);
  pool->setExecutionType("g");
  EXPECT_EQ(pool->startPoint(), "a");
  EXPECT_EQ(pool->endPoint(), "b");
  EXPECT_EQ(pool->startTime(), kLater);
  EXPECT_EQ(pool->endTime(), kEpoch);
  EXPECT_EQ(pool->endResultString(), "c");
  EXPECT_EQ(pool->endResultCode(), "d");
  EXPECT_EQ(pool->endErrorMessageString(), "e");
  EXPECT_EQ(pool->endErrorMessageCode(), "f");
  EXPECT_EQ(pool->successfull(), 2);
  EXPECT_EQ(pool->cancelled(), -1);
  EXPECT_EQ(pool->executionType(), "g");
  EXPECT_EQ(pool->timeStamp(), kNoon);
  EXPECT_EQ(pool->poolType(), "EXECUTION");
}

TEST_F(ZtPortalPoolExecutionTest, TakesMissingValues) {
  const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
  pool->setStartPoint(nullptr);
  pool->setEndPoint(nullptr);
  pool->setStartTime(ZtDate());
  pool->setEndTime(ZtDate());
  pool->setEndResultString(nullptr);
  pool->setEndResultCode(nullptr);
  pool->setEndErrorMessageString(nullptr);
  pool->setEndErrorMessageCode(nullptr);
  pool->setExecutionType(nullptr);
  EXPECT_TRUE(pool->startPoint().isNull());
  EXPECT_TRUE(pool->endPoint().isNull());
  EXPECT_TRUE(pool->startTime().isNull());
  EXPECT_TRUE(pool->endTime().isNull());
  EXPECT_TRUE(pool->endResultString().isNull());
  EXPECT_TRUE(pool->endResultCode().isNull());
  EXPECT_TRUE(pool->endErrorMessageString().isNull());
  EXPECT_TRUE(pool->endErrorMessageCode().isNull());
  EXPECT_TRUE(pool->executionType().isNull());
}

TEST_F(ZtPortalPoolExecutionTest, ALaterTimeStampLeavesStartAndEnd) {
  const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
  pool->setTimeStamp(kLater);
  EXPECT_EQ(pool->startTime(), kNoon);
  EXPECT_EQ(pool->endTime(), kNoon);
}

// --- steps ------------------------------------------------------------------------------------

TEST_F(ZtPortalPoolExecutionTest, AddsStepsAtTheEndAndReturnsThem) {
  const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
  const auto first = pool->addStep(kNoon, "Copy", ZtPortalStepEnter);
  const auto second = pool->addStep(kLater, "Move", 7);
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(first->timeStamp(), kNoon);
  EXPECT_EQ(first->stepName(), "Copy");
  EXPECT_EQ(first->stepType(), 0U);
  EXPECT_EQ(second->timeStamp(), kLater);
  EXPECT_EQ(second->stepName(), "Move");
  EXPECT_EQ(second->stepType(), 7U);
  const std::vector<std::shared_ptr<ZtPortalPoolExecutionStep>> expected{first, second};
  EXPECT_EQ(pool->executionSteps(), expected);
  EXPECT_EQ(pool->executionStep(0), first);
  EXPECT_EQ(pool->executionStep(1), second);
}

TEST_F(ZtPortalPoolExecutionTest, ASnapshotOfTheStepsDoesNotContainWhatIsAddedLater) {
  const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
  const auto step = pool->addStep(kNoon, "Copy", 0);
  const auto snapshot = pool->executionSteps();
  pool->addStep(kNoon, "Move", 0);
  ASSERT_EQ(snapshot.size(), 1U);
  step->setStepName("Renamed");
  EXPECT_EQ(snapshot.front()->stepName(), "Renamed");
}

TEST_F(ZtPortalPoolExecutionTest, AWrongStepIndexIsOutOfBounds) {
  const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
  EXPECT_EQ(raisedByStep(*pool, -1), "OUT_OF_BOUNDS: Index (4294967295) out of bounds");
  pool->addStep(kNoon, "Copy", 0);
  EXPECT_EQ(raisedByStep(*pool, -1), "OUT_OF_BOUNDS: Index (4294967295) out of bounds");
  EXPECT_EQ(raisedByStep(*pool, std::numeric_limits<std::int32_t>::min()),
            "OUT_OF_BOUNDS: Index (2147483648) out of bounds");
  EXPECT_EQ(raisedByStep(*pool, 1), "OUT_OF_BOUNDS: Index (1) out of bounds");
  EXPECT_EQ(raisedByStep(*pool, 2), "OUT_OF_BOUNDS: Index (2) out of bounds");
}

TEST_F(ZtPortalPoolExecutionTest, WithoutStepsEveryOtherIndexRaisesTheListsOwnRangeError) {
  const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
  EXPECT_EQ(raisedByStep(*pool, 0), "LIST_RANGE: Index 0 in an empty list");
  EXPECT_EQ(raisedByStep(*pool, 9), "LIST_RANGE: Index 9 in an empty list");
}

TEST_F(ZtPortalPoolExecutionTest, ReleasesItsStepsAtItsEnd) {
  std::weak_ptr<ZtPortalPoolExecutionStep> watch;
  {
    const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
    watch = pool->addStep(kNoon, "Copy", 0);
    EXPECT_FALSE(watch.expired());
  }
  EXPECT_TRUE(watch.expired());
}

TEST_F(ZtPortalPoolExecutionTest, ItsTextsAndTimesMayBeReadWhileAnotherThreadSetsThem) {
  const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
  pool->setExecutionType("");
  std::thread writer([&pool] {
    for (int round = 0; round < 500; ++round) {
      const char* const text = round % 2 != 0 ? "" : "text";
      pool->setStartPoint(text);
      pool->setEndPoint(text);
      pool->setStartTime(round % 2 != 0 ? kNoon : kLater);
      pool->setEndTime(round % 2 != 0 ? kNoon : kLater);
      pool->setEndResultString(text);
      pool->setEndResultCode(text);
      pool->setEndErrorMessageString(text);
      pool->setEndErrorMessageCode(text);
      pool->setExecutionType(text);
    }
  });
  int mixtures = 0;
  for (int round = 0; round < 500; ++round) {
    for (const ZtString& seen :
         {pool->startPoint(), pool->endPoint(), pool->endResultString(), pool->endResultCode(),
          pool->endErrorMessageString(), pool->endErrorMessageCode(), pool->executionType()}) {
      if (seen != "" && seen != "text") ++mixtures;
    }
    for (const ZtDate seen : {pool->startTime(), pool->endTime()}) {
      if (seen != kNoon && seen != kLater) ++mixtures;
    }
  }
  writer.join();
  EXPECT_EQ(mixtures, 0);
}

}  // namespace
