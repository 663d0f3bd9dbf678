#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "tests/unit/pools/ExpectedText.h"
#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalDef.h"
#include "ztportal/pools/ZtPortalPoolDiagnose.h"

namespace {

using zt::test::ExpectedText;
using zt::test::kLater;
using zt::test::kNoon;
using zt::test::kNoonText;
using zt::test::thrownBy;
using zt::test::written;

class ZtPortalPoolDiagnoseTest : public zt::test::PoolsFixture {
 protected:
  static void expectStep(ExpectedText& text, std::string_view name, std::string_view type) {
    text.beginRecord()
        .recordField("string", "DIAGNOSE_STEPNAME", name)
        .recordField("string", "DIAGNOSE_DIAGNOSETYPE", type)
        .recordField("string", "DIAGNOSE_MESSAGESTRING", "")
        .recordField("string", "DIAGNOSE_MESSAGECODE", "")
        .recordField("boolean", "DIAGNOSE_SUCCESSFULLREPAIR", "TRUE")
        .recordField("boolean", "DIAGNOSE_CANCELLEDREPAIR", "FALSE")
        .recordField("string", "DIAGNOSE_OPTIONALSTRING", "")
        .recordField("boolean", "DIAGNOSE_OPTIONALBOOLEAN", "FALSE")
        .endRecord();
  }

  std::shared_ptr<ZtPortalPoolDiagnose> _pool = ZtPortalPoolDiagnose::initWithValues(kNoon);
};

TEST_F(ZtPortalPoolDiagnoseTest, IsMadeWithItsTypeAndNoSteps) {
  EXPECT_EQ(_pool->poolType(), "DIAGNOSE");
  EXPECT_EQ(_pool->timeStamp(), kNoon);
  ASSERT_NE(_pool->diagnoseSteps(), nullptr);
  EXPECT_TRUE(_pool->diagnoseSteps()->empty());
}

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
  EXPECT_EQ(thrownByStep(1), "LIST_RANGE: Index 1 in an empty list");
  _pool->addStep(kNoon, "only", 0);
  EXPECT_EQ(thrownByStep(-1), "OUT_OF_BOUNDS: Index (4294967295) out of bounds");
  EXPECT_EQ(thrownByStep(1), "OUT_OF_BOUNDS: Index (1) out of bounds");
}

TEST_F(ZtPortalPoolDiagnoseTest, WithoutStepsItWritesNoArray) {
  EXPECT_EQ(written(*_pool, "", true),
            ExpectedText(true).beginPool("DIAGNOSE", kNoonText).endPool());
  _pool->addString("HOST", "router");
  EXPECT_EQ(written(*_pool, "  ", false), ExpectedText(false, 2)
                                              .beginPool("DIAGNOSE", kNoonText)
                                              .field("string", "HOST", "router")
                                              .endPool());
}

TEST_F(ZtPortalPoolDiagnoseTest, AStepWrittenWithoutChangesIsRepairedAndOtherwiseEmpty) {
  _pool->addStep(kLater, "DNS", ZtPortalDiagnoseManual);
  for (const bool soap : {true, false}) {
    ExpectedText text(soap);
    text.beginPool("DIAGNOSE", kNoonText).beginArray("DIAGNOSESTEPS");
    expectStep(text, "DNS", "MANUAL");
    EXPECT_EQ(written(*_pool, "", soap), text.endArray().endPool());
  }
}

TEST_F(ZtPortalPoolDiagnoseTest, AKindOfThreeIsWrittenEmpty) {
  _pool->addStep(kNoon, "a", ZtPortalDiagnoseAutomatic);
  _pool->addStep(kNoon, "b", ZtPortalDiagnoseRIS);
  _pool->addStep(kNoon, "c", 3);
  _pool->addStep(kNoon, "d", std::numeric_limits<std::uint64_t>::max());
  ExpectedText text(false);
  text.beginPool("DIAGNOSE", kNoonText).beginArray("DIAGNOSESTEPS");
  expectStep(text, "a", "AUTOMATIC");
  expectStep(text, "b", "RIS");
  expectStep(text, "c", "");
  expectStep(text, "d", "");
  EXPECT_EQ(written(*_pool, "", false), text.endArray().endPool());
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
    EXPECT_EQ(written(*_pool, "    ", soap),
              ExpectedText(soap, 4)
                  .beginPool("DIAGNOSE", kNoonText)
                  .beginArray("DIAGNOSESTEPS")
                  .beginRecord()
                  .recordField("string", "DIAGNOSE_STEPNAME", "(null)")
                  .recordField("string", "DIAGNOSE_DIAGNOSETYPE", "AUTOMATIC")
                  .recordField("string", "DIAGNOSE_MESSAGESTRING", "<b>&")
                  .recordField("string", "DIAGNOSE_MESSAGECODE", "404")
                  .recordField("boolean", "DIAGNOSE_SUCCESSFULLREPAIR", "FALSE")
                  .recordField("boolean", "DIAGNOSE_CANCELLEDREPAIR", "TRUE")
                  .recordField("string", "DIAGNOSE_OPTIONALSTRING", "free")
                  .recordField("boolean", "DIAGNOSE_OPTIONALBOOLEAN", "TRUE")
                  .endRecord()
                  .endArray()
                  .field("integer", "TRIES", "3")
                  .endPool());
  }
}

}  // namespace
