#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "tests/unit/pools/ExpectedText.h"
#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/pools/ZtPortalDef.h"
#include "ztportal/pools/ZtPortalPoolDiagnose.h"

namespace {

using zt::test::ExpectedText;
using zt::test::kLater;
using zt::test::kNoon;
using zt::test::kNoonText;
using zt::test::written;

class ZtPortalPoolDiagnoseTest : public zt::test::PoolsFixture {
 protected:
  std::string raisedByStep(std::int32_t index) const {
    try {
      _pool->diagnoseStep(index);
    } catch (const ZtException& error) {
      return std::string(error.name().view()) + ": " + std::string(error.reason().view());
    }
    return "nothing";
  }

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

TEST_F(ZtPortalPoolDiagnoseTest, AWrongStepIndexIsOutOfBounds) {
  _pool->addStep(kNoon, "only", 0);
  EXPECT_EQ(raisedByStep(-1), "OUT_OF_BOUNDS: Index (4294967295) out of bounds");
  EXPECT_EQ(raisedByStep(1), "OUT_OF_BOUNDS: Index (1) out of bounds");
  EXPECT_EQ(raisedByStep(0), "nothing");
}

TEST_F(ZtPortalPoolDiagnoseTest, WithoutStepsOtherIndexesRaiseTheListsOwnRangeError) {
  EXPECT_EQ(raisedByStep(-1), "OUT_OF_BOUNDS: Index (4294967295) out of bounds");
  for (const std::int32_t index : {0, 1, std::numeric_limits<std::int32_t>::max()}) {
    const std::string raised = raisedByStep(index);
    EXPECT_NE(raised, "nothing") << index;
    EXPECT_NE(raised.substr(0, 13), "OUT_OF_BOUNDS") << index;
  }
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

TEST_F(ZtPortalPoolDiagnoseTest, WithoutSoapEveryAttributeOfATypeIsGone) {
  _pool->addStep(kNoon, "DNS", 0);
  EXPECT_EQ(written(*_pool, "", false).find("xsi:type"), std::string::npos);
}

TEST_F(ZtPortalPoolDiagnoseTest, WritesAllThatAStepSaysAndTheGenericFieldsBehindTheSteps) {
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
  EXPECT_EQ(written(*_pool, "    ", true),
            ExpectedText(true, 4)
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

}  // namespace
