// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <vector>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalDef.h"
#include "ztportal/pools/ZtPortalPoolExecution.h"

namespace zt::test {
namespace {

class ZtPortalPoolExecutionTest : public PoolsFixture {
 protected:
  /// A new pool, and the outline of what follows its fixed fields.
  static std::string fresh(std::string_view more = "", bool soap = false) {
    const std::string fixed = R"(
string INSTALLATION_TYPE = Standard
string START_POINT =
string START_TIME = 2026-11-21T12:00:00.123UTC
string END_POINT =
string END_TIME = 2026-11-21T12:00:00.123UTC
string END_RESULTSTRING = | string END_RESULTCODE =
string END_ERRORMESSAGESTRING = | string END_ERRORMESSAGECODE =
boolean CANCELLED = FALSE | boolean SUCCESSFULL = TRUE
)";
    return poolText("EXECUTION", fixed + std::string(more), soap, 4);
  }

  std::shared_ptr<ZtPortalPoolExecution> _pool = ZtPortalPoolExecution::initWithValues(kNoon);
};

/// The accessors of the strings of an execution.
struct StringAccessors {
  ZtString (ZtPortalPoolExecution::*get)() const;
  void (ZtPortalPoolExecution::*set)(ZtString);
};
const StringAccessors kStrings[] = {
    {&ZtPortalPoolExecution::startPoint, &ZtPortalPoolExecution::setStartPoint},
    {&ZtPortalPoolExecution::endPoint, &ZtPortalPoolExecution::setEndPoint},
    {&ZtPortalPoolExecution::endResultString, &ZtPortalPoolExecution::setEndResultString},
    {&ZtPortalPoolExecution::endResultCode, &ZtPortalPoolExecution::setEndResultCode},
    {&ZtPortalPoolExecution::endErrorMessageString,
     &ZtPortalPoolExecution::setEndErrorMessageString},
    {&ZtPortalPoolExecution::endErrorMessageCode, &ZtPortalPoolExecution::setEndErrorMessageCode},
    {&ZtPortalPoolExecution::executionType, &ZtPortalPoolExecution::setExecutionType},
};

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
  _pool->setTimeStamp(kEpoch);
  EXPECT_EQ(_pool->startTime(), kLater);
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
  _pool->addStep(kNoon, "Copy", 0);
  EXPECT_EQ(thrownByStep(1), "OUT_OF_BOUNDS: Index (1) out of bounds");
}

TEST_F(ZtPortalPoolExecutionTest, ReleasesItsStepsAndFieldsAtItsEnd) {
  const std::weak_ptr<ZtPortalPoolExecutionStep> step = _pool->addStep(kNoon, "Copy", 0);
  const std::weak_ptr<ZtPortalPoolField> field = _pool->addArray("LIST")->addInteger("COUNT", 7);
  EXPECT_FALSE(step.expired() || field.expired());
  _pool.reset();
  EXPECT_TRUE(step.expired());
  EXPECT_TRUE(field.expired());
}

TEST_F(ZtPortalPoolExecutionTest, ValuesOfPoolsStepsAndFieldsMayBeReadWhileAnotherThreadSetsThem) {
  for (const StringAccessors& string : kStrings) ((*_pool).*string.set)("");
  _pool->setPoolType("");
  const auto step = _pool->addStep(kNoon, "", 0);
  const auto field = ZtPortalPoolString::initWithNameAndValue("", "");
  const auto root = _pool->fields();
  const auto otherRoot = ZtPortalPoolArray::initWithName("Root");
  std::thread writer([&] {
    for (int round = 0; round < 500; ++round) {
      const char* const text = round % 2 != 0 ? "" : "text";
      const ZtDate date = round % 2 != 0 ? kNoon : kLater;
      for (const StringAccessors& string : kStrings) ((*_pool).*string.set)(text);
      _pool->setPoolType(text);
      _pool->setFields(round % 2 != 0 ? root : otherRoot);
      _pool->setTimeStamp(date);
      _pool->setStartTime(date);
      _pool->setEndTime(date);
      step->setStepName(text);
      step->setStepMessageString(text);
      step->setStepMessageCode(text);
      step->setTimeStamp(date);
      field->setData(text);
    }
  });
  int mixtures = 0;
  for (int round = 0; round < 500; ++round) {
    std::vector<ZtString> texts{_pool->poolType(), step->stepName(), step->stepMessageString(),
                                step->stepMessageCode(), field->data()};
    for (const StringAccessors& string : kStrings) texts.push_back(((*_pool).*string.get)());
    for (const ZtString& seen : texts) mixtures += seen != "" && seen != "text";
    for (const ZtDate seen :
         {_pool->timeStamp(), _pool->startTime(), _pool->endTime(), step->timeStamp()}) {
      mixtures += seen != kNoon && seen != kLater;
    }
    const auto fields = _pool->fields();
    mixtures += fields != root && fields != otherRoot;
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
  step->setStepMessageCode(nullptr);
  EXPECT_EQ(step->timeStamp(), kLater);
  EXPECT_EQ(step->stepName(), "Move");
  EXPECT_EQ(step->stepType(), 9223372036854775808U);
  EXPECT_EQ(step->stepMessageString(), "disk full");
  EXPECT_TRUE(step->stepMessageCode().isNull());
}

// What it writes.

TEST_F(ZtPortalPoolExecutionTest, ANewPoolWritesItsDefaultsAndNeitherStepsNorGenericFields) {
  const std::shared_ptr<ZtPortalPool> base = _pool;
  EXPECT_EQ(written(*_pool, "    ", true), fresh("", true));
  EXPECT_EQ(written(*_pool, "    ", false), fresh());
  EXPECT_EQ(written(*base, "    ", false), fresh());
}

TEST_F(ZtPortalPoolExecutionTest, WritesAFilledPoolWithItsStepsAndThenItsGenericFields) {
  _pool->setExecutionType("Silent");
  _pool->setStartPoint("setup");
  _pool->setStartTime(kEpoch);
  _pool->setEndPoint("finish");
  _pool->setEndTime(kLater);
  _pool->setEndResultString("done <well> & fast");
  _pool->setEndResultCode("0");
  _pool->setEndErrorMessageString("none");
  _pool->setEndErrorMessageCode("17");
  _pool->setCancelled(1);
  _pool->setSuccessfull(0);
  const auto first = _pool->addStep(kNoon, "Copy", ZtPortalStepInfo);
  first->setStepMessageString("100 files");
  first->setStepMessageCode("100");
  const auto second = _pool->addStep(kLater, "Move", ZtPortalStepError);
  second->setStepMessageString("disk full");
  second->setStepMessageCode("28");
  _pool->addString("EDITION", "Home");
  _pool->addBOOL("ICON", 1);
  const char* const outline = R"(
string INSTALLATION_TYPE = Silent
string START_POINT = setup
string START_TIME = 1970-01-01T00:00:00.000UTC
string END_POINT = finish
string END_TIME = 2026-11-21T12:00:01.250UTC
string END_RESULTSTRING = done <well> & fast
string END_RESULTCODE = 0
string END_ERRORMESSAGESTRING = none
string END_ERRORMESSAGECODE = 17
boolean CANCELLED = TRUE
boolean SUCCESSFULL = FALSE
records INSTALLATIONSTEPS
  - string STEP_NAME = Copy | string STEP_TYPE = INFO
    string STEP_TIMESTAMP = 2026-11-21T12:00:00.123UTC | string STEP_MESSAGESTRING = 100 files
    string STEP_MESSAGECODE = 100
  - string STEP_NAME = Move | string STEP_TYPE = ERROR
    string STEP_TIMESTAMP = 2026-11-21T12:00:01.250UTC | string STEP_MESSAGESTRING = disk full
    string STEP_MESSAGECODE = 28
string EDITION = Home
boolean ICON = TRUE
)";
  for (const bool soap : {true, false}) {
    EXPECT_EQ(written(*_pool, "           ", soap), poolText("EXECUTION", outline, soap, 11));
  }
}

TEST_F(ZtPortalPoolExecutionTest, WritesTheTextOfEveryStepTypeAndNothingForOthers) {
  const struct {
    std::uint64_t type;
    const char* text;
  } rows[] = {
      {0, "ENTER"}, {1, "LEAVE"}, {2, "EXIT"}, {3, "INFO"},
      {4, "ERROR"}, {5, ""},      {7, ""},     {std::numeric_limits<std::uint64_t>::max(), ""}};
  for (const auto& row : rows) {
    const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
    pool->addStep(ZtDate(), nullptr, row.type);
    const std::string step =
        "  - string STEP_NAME = (null) | string STEP_TYPE = " + std::string(row.text) +
        "\n    string STEP_TIMESTAMP = (null)"
        "\n    string STEP_MESSAGESTRING = | string STEP_MESSAGECODE =";
    EXPECT_EQ(written(*pool, "    ", false), fresh("records INSTALLATIONSTEPS\n" + step))
        << row.type;
  }
}

TEST_F(ZtPortalPoolExecutionTest, WithoutARootItWritesItsFixedFieldsAlone) {
  _pool->addString("GONE", "with its root");
  _pool->setFields(nullptr);
  EXPECT_EQ(written(*_pool, "    ", false), fresh());
}

TEST_F(ZtPortalPoolExecutionTest, WritesMissingValuesAsNullAndOddBytesAsFalse) {
  const auto pool = ZtPortalPoolExecution::initWithValues(ZtDate());
  pool->setPoolType(nullptr);
  pool->setExecutionType(nullptr);
  pool->setStartPoint(nullptr);
  pool->setEndPoint(nullptr);
  pool->setEndResultString(nullptr);
  pool->setEndResultCode(nullptr);
  pool->setEndErrorMessageString(nullptr);
  pool->setEndErrorMessageCode(nullptr);
  pool->setCancelled(2);
  pool->setSuccessfull(-1);
  std::string outline;
  for (const char* name :
       {"INSTALLATION_TYPE", "START_POINT", "START_TIME", "END_POINT", "END_TIME",
        "END_RESULTSTRING", "END_RESULTCODE", "END_ERRORMESSAGESTRING", "END_ERRORMESSAGECODE"}) {
    outline.append("string ").append(name).append(" = (null)\n");
  }
  outline += "boolean CANCELLED = FALSE | boolean SUCCESSFULL = FALSE";
  EXPECT_EQ(written(*pool, "", false), crlf(poolLines("(null)", "(null)", outline)));
}

}  // namespace
}  // namespace zt::test
