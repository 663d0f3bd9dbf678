// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalDef.h"
#include "ztportal/pools/ZtPortalPoolDiagnose.h"

namespace zt::test {
namespace {

class ZtPortalPoolDiagnoseTest : public PoolsFixture {
 protected:
  /// The outline of a step that is as it was made.
  static std::string step(const std::string& name, const std::string& type) {
    return "  - string DIAGNOSE_STEPNAME = " + name +
           "\n    string DIAGNOSE_DIAGNOSETYPE = " + type +
           R"(
    string DIAGNOSE_MESSAGESTRING = | string DIAGNOSE_MESSAGECODE =
    boolean DIAGNOSE_SUCCESSFULLREPAIR = TRUE | boolean DIAGNOSE_CANCELLEDREPAIR = FALSE
    string DIAGNOSE_OPTIONALSTRING = | boolean DIAGNOSE_OPTIONALBOOLEAN = FALSE
)";
  }

  std::shared_ptr<ZtPortalPoolDiagnose> _pool = ZtPortalPoolDiagnose::initWithValues(kNoon);
};

TEST_F(ZtPortalPoolDiagnoseTest, ANewStepCountsAsRepaired) {
  const auto step = _pool->addStep(kLater, "DNS", ZtPortalDiagnoseRIS);
  EXPECT_EQ(step->timeStamp(), kLater);
  EXPECT_EQ(step->stepName(), "DNS");
  EXPECT_EQ(step->diagnoseType(), 2U);
  EXPECT_EQ(step->stepMessageString(), "");
  EXPECT_EQ(step->stepMessageCode(), "");
  EXPECT_EQ(step->successfullRepair(), 1);
  EXPECT_EQ(step->cancelledRepair(), 0);
  EXPECT_EQ(step->optionalString(), "");
  EXPECT_EQ(step->optionalBoolean(), 0);
}

TEST_F(ZtPortalPoolDiagnoseTest, AddsStepsAtTheEndOfTheLiveList) {
  const auto steps = _pool->diagnoseSteps();
  const auto first = _pool->addStep(kNoon, "first", 0);
  const auto second = _pool->addStep(kNoon, "second", 1);
  ASSERT_EQ(steps->size(), 2U);
  EXPECT_EQ((*steps)[0], first);
  EXPECT_EQ((*steps)[1], second);
  EXPECT_EQ(_pool->diagnoseStep(1), second);
  steps->erase(steps->begin());
  EXPECT_EQ(_pool->diagnoseStep(0), second);
}

TEST_F(ZtPortalPoolDiagnoseTest, AWrongStepIndexThrows) {
  const auto thrownByStep = [this](std::int32_t index) {
    return thrownBy([this, index] { _pool->diagnoseStep(index); });
  };
  EXPECT_EQ(thrownByStep(-1), "OUT_OF_BOUNDS: Index (4294967295) out of bounds");
  EXPECT_EQ(thrownByStep(0), "LIST_RANGE: Index 0 in an empty list");
  _pool->addStep(kNoon, "only", 0);
  EXPECT_EQ(thrownByStep(1), "OUT_OF_BOUNDS: Index (1) out of bounds");
}

TEST_F(ZtPortalPoolDiagnoseTest, WithoutStepsItWritesNoArray) {
  EXPECT_EQ(written(*_pool, "", true),
            "<Data xsi:type=\"com_Pool\" Pool=\"DIAGNOSE\">\r\n"
            "  <Date xsi:type=\"xsd:dateTime\">2026-11-21T12:00:00.123UTC</Date>\r\n"
            "  <Fields xsi:type=\"com_Fields\">\r\n"
            "  </Fields>\r\n"
            "</Data>\r\n");
  _pool->addString("HOST", "router");
  EXPECT_EQ(written(*_pool, "  ", false), poolText("DIAGNOSE", "string HOST = router", false, 2));
}

TEST_F(ZtPortalPoolDiagnoseTest, AStepWrittenWithoutChangesIsRepairedAndOtherwiseEmpty) {
  _pool->addStep(kLater, "DNS", ZtPortalDiagnoseManual);
  for (const bool soap : {true, false}) {
    EXPECT_EQ(written(*_pool, "", soap),
              poolText("DIAGNOSE", "records DIAGNOSESTEPS\n" + step("DNS", "MANUAL"), soap));
  }
}

TEST_F(ZtPortalPoolDiagnoseTest, AKindOfThreeIsWrittenEmpty) {
  _pool->addStep(kNoon, "a", ZtPortalDiagnoseAutomatic);
  _pool->addStep(kNoon, "b", ZtPortalDiagnoseRIS);
  _pool->addStep(kNoon, "c", 3);
  _pool->addStep(kNoon, "d", std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(written(*_pool, "", false),
            poolText("DIAGNOSE", "records DIAGNOSESTEPS\n" + step("a", "AUTOMATIC") +
                                     step("b", "RIS") + step("c", "") + step("d", "")));
}

TEST_F(ZtPortalPoolDiagnoseTest, WritesEveryValueOfAStepAndThenTheGenericFields) {
  const auto step = _pool->addStep(kNoon, "old", 0);
  step->setStepName(nullptr);
  step->setTimeStamp(ZtDate());
  step->setDiagnoseType(ZtPortalDiagnoseAutomatic);
  step->setStepMessageString("<b>&");
  step->setStepMessageCode("404");
  step->setSuccessfullRepair(static_cast<ZtBOOL>(255));
  step->setCancelledRepair(1);
  step->setOptionalString("free");
  step->setOptionalBoolean(1);
  _pool->addInteger("TRIES", 3);
  for (const bool soap : {true, false}) {
    EXPECT_EQ(written(*_pool, "    ", soap), poolText("DIAGNOSE", R"(
records DIAGNOSESTEPS
  - string DIAGNOSE_STEPNAME = (null) | string DIAGNOSE_DIAGNOSETYPE = AUTOMATIC
    string DIAGNOSE_MESSAGESTRING = <b>& | string DIAGNOSE_MESSAGECODE = 404
    boolean DIAGNOSE_SUCCESSFULLREPAIR = FALSE | boolean DIAGNOSE_CANCELLEDREPAIR = TRUE
    string DIAGNOSE_OPTIONALSTRING = free | boolean DIAGNOSE_OPTIONALBOOLEAN = TRUE
integer TRIES = 3
)",
                                                      soap, 4));
  }
}

}  // namespace
}  // namespace zt::test
