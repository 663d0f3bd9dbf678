#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalDef.h"
#include "ztportal/pools/ZtPortalPoolExecution.h"

namespace {

using zt::test::kEpoch;
using zt::test::kLater;
using zt::test::kNoon;
using zt::test::thrownBy;

class ZtPortalPoolExecutionTest : public zt::test::PoolsFixture {
 protected:
  std::shared_ptr<ZtPortalPoolExecution> _pool = ZtPortalPoolExecution::initWithValues(kNoon);
};

/// The accessors of the strings of an execution.
struct StringAccessors {
  ZtString (ZtPortalPoolExecution::*get)() const;
  void (ZtPortalPoolExecution::*set)(ZtString);
};
using Pool = ZtPortalPoolExecution;
const StringAccessors kStrings[] = {
    {&Pool::startPoint, &Pool::setStartPoint},
    {&Pool::endPoint, &Pool::setEndPoint},
    {&Pool::endResultString, &Pool::setEndResultString},
    {&Pool::endResultCode, &Pool::setEndResultCode},
    {&Pool::endErrorMessageString, &Pool::setEndErrorMessageString},
    {&Pool::endErrorMessageCode, &Pool::setEndErrorMessageCode},
    {&Pool::executionType, &Pool::setExecutionType},
};

TEST_F(ZtPortalPoolExecutionTest, BeginsAndEndsAtItsTimeStampWithDefaults) {
  EXPECT_EQ(_pool->poolType(), "EXECUTION");
  EXPECT_EQ(_pool->timeStamp(), kNoon);
  EXPECT_EQ(_pool->startTime(), kNoon);
  EXPECT_EQ(_pool->endTime(), kNoon);
  EXPECT_EQ(_pool->startPoint(), "");
  EXPECT_EQ(_pool->endPoint(), "");
  EXPECT_EQ(_pool->endResultString(), "");
  EXPECT_EQ(_pool->endResultCode(), "");
  EXPECT_EQ(_pool->endErrorMessageString(), "");
  EXPECT_EQ(_pool->endErrorMessageCode(), "");
  EXPECT_EQ(_pool->successfull(), 1);
  EXPECT_EQ(_pool->cancelled(), 0);
  EXPECT_EQ(_pool->executionType(), "Standard");
  EXPECT_TRUE(_pool->executionSteps().empty());
  EXPECT_EQ(_pool->fields()->fieldName(), "Root");
  EXPECT_TRUE(_pool->fields()->fields().empty());
}

TEST_F(ZtPortalPoolExecutionTest, TakesEachValueWithoutChangingAnother) {
  int number = 0;
  for (const StringAccessors& string : kStrings) ((*_pool).*string.set)(std::to_string(number++));
  _pool->setStartTime(kLater);
  _pool->setEndTime(kEpoch);
  _pool->setSuccessfull(2);
  _pool->setCancelled(-1);
  number = 0;
  for (const StringAccessors& string : kStrings) {
    EXPECT_EQ(((*_pool).*string.get)(), std::to_string(number++));
  }
  EXPECT_EQ(_pool->startTime(), kLater);
  EXPECT_EQ(_pool->endTime(), kEpoch);
  EXPECT_EQ(_pool->successfull(), 2);
  EXPECT_EQ(_pool->cancelled(), -1);
  EXPECT_EQ(_pool->timeStamp(), kNoon);
  EXPECT_EQ(_pool->poolType(), "EXECUTION");
}

TEST_F(ZtPortalPoolExecutionTest, TakesMissingValues) {
  for (const StringAccessors& string : kStrings) {
    ((*_pool).*string.set)(nullptr);
    EXPECT_TRUE(((*_pool).*string.get)().isNull());
  }
  _pool->setStartTime(ZtDate());
  _pool->setEndTime(ZtDate());
  EXPECT_TRUE(_pool->startTime().isNull());
  EXPECT_TRUE(_pool->endTime().isNull());
}

TEST_F(ZtPortalPoolExecutionTest, ALaterTimeStampLeavesStartAndEnd) {
  _pool->setTimeStamp(kLater);
  EXPECT_EQ(_pool->startTime(), kNoon);
  EXPECT_EQ(_pool->endTime(), kNoon);
}

TEST_F(ZtPortalPoolExecutionTest, AddsStepsAtTheEndAndReturnsThem) {
  const auto first = _pool->addStep(kNoon, "Copy", ZtPortalStepEnter);
  const auto second = _pool->addStep(kLater, "Move", 7);
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(first->timeStamp(), kNoon);
  EXPECT_EQ(first->stepName(), "Copy");
  EXPECT_EQ(first->stepType(), 0U);
  EXPECT_EQ(second->timeStamp(), kLater);
  EXPECT_EQ(second->stepName(), "Move");
  EXPECT_EQ(second->stepType(), 7U);
  const std::vector<std::shared_ptr<ZtPortalPoolExecutionStep>> expected{first, second};
  EXPECT_EQ(_pool->executionSteps(), expected);
  EXPECT_EQ(_pool->executionStep(0), first);
  EXPECT_EQ(_pool->executionStep(1), second);
}

TEST_F(ZtPortalPoolExecutionTest, ASnapshotOfTheStepsDoesNotContainWhatIsAddedLater) {
  const auto step = _pool->addStep(kNoon, "Copy", 0);
  const auto snapshot = _pool->executionSteps();
  _pool->addStep(kNoon, "Move", 0);
  ASSERT_EQ(snapshot.size(), 1U);
  step->setStepName("Renamed");
  EXPECT_EQ(snapshot.front()->stepName(), "Renamed");
}

TEST_F(ZtPortalPoolExecutionTest, AWrongStepIndexThrows) {
  const auto thrownByStep = [this](std::int32_t index) {
    return thrownBy([this, index] { _pool->executionStep(index); });
  };
  EXPECT_EQ(thrownByStep(-1), "OUT_OF_BOUNDS: Index (4294967295) out of bounds");
  EXPECT_EQ(thrownByStep(0), "LIST_RANGE: Index 0 in an empty list");
  EXPECT_EQ(thrownByStep(9), "LIST_RANGE: Index 9 in an empty list");
  _pool->addStep(kNoon, "Copy", 0);
  EXPECT_EQ(thrownByStep(-1), "OUT_OF_BOUNDS: Index (4294967295) out of bounds");
  EXPECT_EQ(thrownByStep(1), "OUT_OF_BOUNDS: Index (1) out of bounds");
  EXPECT_EQ(thrownByStep(0), "nothing");
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

TEST_F(ZtPortalPoolExecutionTest, ItsValuesAndThoseOfAStepMayBeReadWhileAnotherThreadSetsThem) {
  for (const StringAccessors& string : kStrings) ((*_pool).*string.set)("");
  const auto step = _pool->addStep(kNoon, "", 0);
  std::thread writer([this, &step] {
    for (int round = 0; round < 500; ++round) {
      const char* const text = round % 2 != 0 ? "" : "text";
      const ZtDate date = round % 2 != 0 ? kNoon : kLater;
      for (const StringAccessors& string : kStrings) ((*_pool).*string.set)(text);
      _pool->setStartTime(date);
      _pool->setEndTime(date);
      step->setStepName(text);
      step->setStepMessageString(text);
      step->setStepMessageCode(text);
      step->setTimeStamp(date);
    }
  });
  int mixtures = 0;
  const auto look = [&mixtures](const ZtString& seen) {
    if (seen != "" && seen != "text") ++mixtures;
  };
  for (int round = 0; round < 500; ++round) {
    for (const StringAccessors& string : kStrings) look(((*_pool).*string.get)());
    look(step->stepName());
    look(step->stepMessageString());
    look(step->stepMessageCode());
    for (const ZtDate seen : {_pool->startTime(), _pool->endTime(), step->timeStamp()}) {
      if (seen != kNoon && seen != kLater) ++mixtures;
    }
  }
  writer.join();
  EXPECT_EQ(mixtures, 0);
}

// Steps.

TEST_F(ZtPortalPoolExecutionTest, AStepBeginsWithItsValuesAndAnEmptyMessage) {
  static_assert(!std::is_copy_constructible_v<ZtPortalPoolExecutionStep>);
  static_assert(!std::is_copy_assignable_v<ZtPortalPoolExecutionStep>);
  const ZtString name = "Copy";
  const auto step = ZtPortalPoolExecutionStep::initWithValues(kNoon, name, ZtPortalStepLeave);
  EXPECT_EQ(step->timeStamp(), kNoon);
  EXPECT_EQ(step->stepName().view().data(), name.view().data()) << "shared, not copied";
  EXPECT_EQ(step->stepType(), 1U);
  EXPECT_EQ(step->stepMessageString(), "");
  EXPECT_EQ(step->stepMessageCode(), "");
  const auto missing = ZtPortalPoolExecutionStep::initWithValues(
      ZtDate(), nullptr, std::numeric_limits<std::uint64_t>::max());
  EXPECT_TRUE(missing->timeStamp().isNull());
  EXPECT_TRUE(missing->stepName().isNull());
  EXPECT_EQ(missing->stepType(), 18446744073709551615U);
}

TEST_F(ZtPortalPoolExecutionTest, AStepTakesEachValueWithoutChangingAnother) {
  const auto step = ZtPortalPoolExecutionStep::initWithValues(kNoon, "Copy", 0);
  step->setTimeStamp(kLater);
  step->setStepName("Move");
  step->setStepType(std::uint64_t{1} << 63U);
  step->setStepMessageString("disk full");
  step->setStepMessageCode("28");
  EXPECT_EQ(step->timeStamp(), kLater);
  EXPECT_EQ(step->stepName(), "Move");
  EXPECT_EQ(step->stepType(), 9223372036854775808U);
  EXPECT_EQ(step->stepMessageString(), "disk full");
  EXPECT_EQ(step->stepMessageCode(), "28");
  step->setTimeStamp(ZtDate());
  step->setStepName(nullptr);
  step->setStepMessageString(nullptr);
  step->setStepMessageCode(nullptr);
  EXPECT_TRUE(step->timeStamp().isNull());
  EXPECT_TRUE(step->stepName().isNull());
  EXPECT_TRUE(step->stepMessageString().isNull());
  EXPECT_TRUE(step->stepMessageCode().isNull());
}

}  // namespace
