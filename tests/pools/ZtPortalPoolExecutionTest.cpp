#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/pools/PoolsFixture.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/pools/ZtPortalDef.h"
#include "ztportal/pools/ZtPortalPoolExecution.h"

namespace {

using zt::test::kEpoch;
using zt::test::kLater;
using zt::test::kNoon;
using zt::test::written;

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

  /// Puts `after` behind the fixed fields of a pool that is as it was made at `kNoon`.
  static std::string freshPlainPoolWith(const std::string& after) {
    return std::string(kFreshPlainPool, sizeof kFreshPlainPool - 1) + after +
           "      </Fields>\r\n"
           "    </Data>\r\n";
  }

  static constexpr char kFreshPlainPool[] =
      "    <Data Pool=\"EXECUTION\">\r\n"
      "      <Date>2026-11-21T12:00:00.123UTC</Date>\r\n"
      "      <Fields>\r\n"
      "        <Field FieldType=\"string\">\r\n"
      "          <Name>INSTALLATION_TYPE</Name>\r\n"
      "          <Value>Standard</Value>\r\n"
      "        </Field>\r\n"
      "        <Field FieldType=\"string\">\r\n"
      "          <Name>START_POINT</Name>\r\n"
      "          <Value></Value>\r\n"
      "        </Field>\r\n"
      "        <Field FieldType=\"string\">\r\n"
      "          <Name>START_TIME</Name>\r\n"
      "          <Value>2026-11-21T12:00:00.123UTC</Value>\r\n"
      "        </Field>\r\n"
      "        <Field FieldType=\"string\">\r\n"
      "          <Name>END_POINT</Name>\r\n"
      "          <Value></Value>\r\n"
      "        </Field>\r\n"
      "        <Field FieldType=\"string\">\r\n"
      "          <Name>END_TIME</Name>\r\n"
      "          <Value>2026-11-21T12:00:00.123UTC</Value>\r\n"
      "        </Field>\r\n"
      "        <Field FieldType=\"string\">\r\n"
      "          <Name>END_RESULTSTRING</Name>\r\n"
      "          <Value></Value>\r\n"
      "        </Field>\r\n"
      "        <Field FieldType=\"string\">\r\n"
      "          <Name>END_RESULTCODE</Name>\r\n"
      "          <Value></Value>\r\n"
      "        </Field>\r\n"
      "        <Field FieldType=\"string\">\r\n"
      "          <Name>END_ERRORMESSAGESTRING</Name>\r\n"
      "          <Value></Value>\r\n"
      "        </Field>\r\n"
      "        <Field FieldType=\"string\">\r\n"
      "          <Name>END_ERRORMESSAGECODE</Name>\r\n"
      "          <Value></Value>\r\n"
      "        </Field>\r\n"
      "        <Field FieldType=\"boolean\">\r\n"
      "          <Name>CANCELLED</Name>\r\n"
      "          <Value>FALSE</Value>\r\n"
      "        </Field>\r\n"
      "        <Field FieldType=\"boolean\">\r\n"
      "          <Name>SUCCESSFULL</Name>\r\n"
      "          <Value>TRUE</Value>\r\n"
      "        </Field>\r\n";
};

// --- values -----------------------------------------------------------------------------------

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

// --- writing ----------------------------------------------------------------------------------

TEST_F(ZtPortalPoolExecutionTest, AFreshPoolWritesItsDefaultsAndNeitherStepsNorGenericFields) {
  EXPECT_EQ(written(*ZtPortalPoolExecution::initWithValues(kNoon), "    ", false),
            freshPlainPoolWith(""));
}

TEST_F(ZtPortalPoolExecutionTest, WritesAllOfItWithSoap) {
  const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
  pool->setExecutionType("Silent");
  pool->setStartPoint("setup");
  pool->setStartTime(kEpoch);
  pool->setEndPoint("finish");
  pool->setEndTime(kLater);
  pool->setEndResultString("done <well> & fast");
  pool->setEndResultCode("0");
  pool->setEndErrorMessageString("none");
  pool->setEndErrorMessageCode("17");
  pool->setCancelled(1);
  pool->setSuccessfull(0);
  const auto first = pool->addStep(kNoon, "Copy", ZtPortalStepInfo);
  first->setStepMessageString("100 files");
  first->setStepMessageCode("100");
  const auto second = pool->addStep(kLater, "Move", ZtPortalStepError);
  second->setStepMessageString("disk full");
  second->setStepMessageCode("28");
  pool->addString("EDITION", "Home");
  pool->addBOOL("ICON", 1);
  EXPECT_EQ(written(*pool, "           ", true),
            "           <Data xsi:type=\"com_Pool\" Pool=\"EXECUTION\">\r\n"
            "             <Date xsi:type=\"xsd:dateTime\">2026-11-21T12:00:00.123UTC</Date>\r\n"
            "             <Fields xsi:type=\"com_Fields\">\r\n"
            "               <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                 <Name xsi:type=\"xsd:string\">INSTALLATION_TYPE</Name>\r\n"
            "                 <Value xsi:type=\"xsd:string\">Silent</Value>\r\n"
            "               </Field>\r\n"
            "               <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                 <Name xsi:type=\"xsd:string\">START_POINT</Name>\r\n"
            "                 <Value xsi:type=\"xsd:string\">setup</Value>\r\n"
            "               </Field>\r\n"
            "               <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                 <Name xsi:type=\"xsd:string\">START_TIME</Name>\r\n"
            "                 <Value xsi:type=\"xsd:string\">1970-01-01T00:00:00.000UTC</Value>\r\n"
            "               </Field>\r\n"
            "               <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                 <Name xsi:type=\"xsd:string\">END_POINT</Name>\r\n"
            "                 <Value xsi:type=\"xsd:string\">finish</Value>\r\n"
            "               </Field>\r\n"
            "               <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                 <Name xsi:type=\"xsd:string\">END_TIME</Name>\r\n"
            "                 <Value xsi:type=\"xsd:string\">2026-11-21T12:00:01.250UTC</Value>\r\n"
            "               </Field>\r\n"
            "               <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                 <Name xsi:type=\"xsd:string\">END_RESULTSTRING</Name>\r\n"
            "                 <Value xsi:type=\"xsd:string\">done <well> & fast</Value>\r\n"
            "               </Field>\r\n"
            "               <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                 <Name xsi:type=\"xsd:string\">END_RESULTCODE</Name>\r\n"
            "                 <Value xsi:type=\"xsd:string\">0</Value>\r\n"
            "               </Field>\r\n"
            "               <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                 <Name xsi:type=\"xsd:string\">END_ERRORMESSAGESTRING</Name>\r\n"
            "                 <Value xsi:type=\"xsd:string\">none</Value>\r\n"
            "               </Field>\r\n"
            "               <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                 <Name xsi:type=\"xsd:string\">END_ERRORMESSAGECODE</Name>\r\n"
            "                 <Value xsi:type=\"xsd:string\">17</Value>\r\n"
            "               </Field>\r\n"
            "               <Field xsi:type=\"com_Field\" FieldType=\"boolean\">\r\n"
            "                 <Name xsi:type=\"xsd:string\">CANCELLED</Name>\r\n"
            "                 <Value xsi:type=\"xsd:string\">TRUE</Value>\r\n"
            "               </Field>\r\n"
            "               <Field xsi:type=\"com_Field\" FieldType=\"boolean\">\r\n"
            "                 <Name xsi:type=\"xsd:string\">SUCCESSFULL</Name>\r\n"
            "                 <Value xsi:type=\"xsd:string\">FALSE</Value>\r\n"
            "               </Field>\r\n"
            "               <Field xsi:type=\"com_Field\" FieldType=\"array\">\r\n"
            "                 <Name xsi:type=\"xsd:string\">INSTALLATIONSTEPS</Name>\r\n"
            "                 <Fields xsi:type=\"com_Fields\">\r\n"
            "                   <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                     <Name xsi:type=\"xsd:string\">STEP_NAME</Name>\r\n"
            "                     <Value xsi:type=\"xsd:string\">Copy</Value>\r\n"
            "                   </Field>\r\n"
            "                   <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                     <Name xsi:type=\"xsd:string\">STEP_TYPE</Name>\r\n"
            "                     <Value xsi:type=\"xsd:string\">INFO</Value>\r\n"
            "                   </Field>\r\n"
            "                   <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                     <Name xsi:type=\"xsd:string\">STEP_TIMESTAMP</Name>\r\n"
            "                     <Value "
            "xsi:type=\"xsd:string\">2026-11-21T12:00:00.123UTC</Value>\r\n"
            "                   </Field>\r\n"
            "                   <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                     <Name xsi:type=\"xsd:string\">STEP_MESSAGESTRING</Name>\r\n"
            "                     <Value xsi:type=\"xsd:string\">100 files</Value>\r\n"
            "                   </Field>\r\n"
            "                   <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                     <Name xsi:type=\"xsd:string\">STEP_MESSAGECODE</Name>\r\n"
            "                     <Value xsi:type=\"xsd:string\">100</Value>\r\n"
            "                   </Field>\r\n"
            "                 </Fields>\r\n"
            "                 <Fields xsi:type=\"com_Fields\">\r\n"
            "                   <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                     <Name xsi:type=\"xsd:string\">STEP_NAME</Name>\r\n"
            "                     <Value xsi:type=\"xsd:string\">Move</Value>\r\n"
            "                   </Field>\r\n"
            "                   <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                     <Name xsi:type=\"xsd:string\">STEP_TYPE</Name>\r\n"
            "                     <Value xsi:type=\"xsd:string\">ERROR</Value>\r\n"
            "                   </Field>\r\n"
            "                   <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                     <Name xsi:type=\"xsd:string\">STEP_TIMESTAMP</Name>\r\n"
            "                     <Value "
            "xsi:type=\"xsd:string\">2026-11-21T12:00:01.250UTC</Value>\r\n"
            "                   </Field>\r\n"
            "                   <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                     <Name xsi:type=\"xsd:string\">STEP_MESSAGESTRING</Name>\r\n"
            "                     <Value xsi:type=\"xsd:string\">disk full</Value>\r\n"
            "                   </Field>\r\n"
            "                   <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                     <Name xsi:type=\"xsd:string\">STEP_MESSAGECODE</Name>\r\n"
            "                     <Value xsi:type=\"xsd:string\">28</Value>\r\n"
            "                   </Field>\r\n"
            "                 </Fields>\r\n"
            "               </Field>\r\n"
            "               <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "                 <Name xsi:type=\"xsd:string\">EDITION</Name>\r\n"
            "                 <Value xsi:type=\"xsd:string\">Home</Value>\r\n"
            "               </Field>\r\n"
            "               <Field xsi:type=\"com_Field\" FieldType=\"boolean\">\r\n"
            "                 <Name xsi:type=\"xsd:string\">ICON</Name>\r\n"
            "                 <Value xsi:type=\"xsd:string\">TRUE</Value>\r\n"
            "               </Field>\r\n"
            "             </Fields>\r\n"
            "           </Data>\r\n");
}

TEST_F(ZtPortalPoolExecutionTest, WritesAStepAsAGroupInAnArrayThatClosesRight) {
  const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
  pool->addStep(kNoon, "Copy", ZtPortalStepEnter);
  EXPECT_EQ(written(*pool, "    ", false),
            freshPlainPoolWith("        <Field FieldType=\"array\">\r\n"
                               "          <Name>INSTALLATIONSTEPS</Name>\r\n"
                               "          <Fields>\r\n"
                               "            <Field FieldType=\"string\">\r\n"
                               "              <Name>STEP_NAME</Name>\r\n"
                               "              <Value>Copy</Value>\r\n"
                               "            </Field>\r\n"
                               "            <Field FieldType=\"string\">\r\n"
                               "              <Name>STEP_TYPE</Name>\r\n"
                               "              <Value>ENTER</Value>\r\n"
                               "            </Field>\r\n"
                               "            <Field FieldType=\"string\">\r\n"
                               "              <Name>STEP_TIMESTAMP</Name>\r\n"
                               "              <Value>2026-11-21T12:00:00.123UTC</Value>\r\n"
                               "            </Field>\r\n"
                               "            <Field FieldType=\"string\">\r\n"
                               "              <Name>STEP_MESSAGESTRING</Name>\r\n"
                               "              <Value></Value>\r\n"
                               "            </Field>\r\n"
                               "            <Field FieldType=\"string\">\r\n"
                               "              <Name>STEP_MESSAGECODE</Name>\r\n"
                               "              <Value></Value>\r\n"
                               "            </Field>\r\n"
                               "          </Fields>\r\n"
                               "        </Field>\r\n"));
}

TEST_F(ZtPortalPoolExecutionTest, WritesTheTextOfEveryStepTypeAndNothingForOthers) {
  struct Row {
    std::uint64_t type;
    const char* text;
  };
  const Row table[] = {
      {0, "ENTER"}, {1, "LEAVE"}, {2, "EXIT"}, {3, "INFO"},
      {4, "ERROR"}, {5, ""},      {7, ""},     {std::numeric_limits<std::uint64_t>::max(), ""}};
  for (const Row& row : table) {
    const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
    pool->addStep(ZtDate(), nullptr, row.type);
    EXPECT_EQ(written(*pool, "    ", false),
              freshPlainPoolWith(std::string("        <Field FieldType=\"array\">\r\n"
                                             "          <Name>INSTALLATIONSTEPS</Name>\r\n"
                                             "          <Fields>\r\n"
                                             "            <Field FieldType=\"string\">\r\n"
                                             "              <Name>STEP_NAME</Name>\r\n"
                                             "              <Value>(null)</Value>\r\n"
                                             "            </Field>\r\n"
                                             "            <Field FieldType=\"string\">\r\n"
                                             "              <Name>STEP_TYPE</Name>\r\n"
                                             "              <Value>") +
                                 row.text +
                                 "</Value>\r\n"
                                 "            </Field>\r\n"
                                 "            <Field FieldType=\"string\">\r\n"
                                 "              <Name>STEP_TIMESTAMP</Name>\r\n"
                                 "              <Value>(null)</Value>\r\n"
                                 "            </Field>\r\n"
                                 "            <Field FieldType=\"string\">\r\n"
                                 "              <Name>STEP_MESSAGESTRING</Name>\r\n"
                                 "              <Value></Value>\r\n"
                                 "            </Field>\r\n"
                                 "            <Field FieldType=\"string\">\r\n"
                                 "              <Name>STEP_MESSAGECODE</Name>\r\n"
                                 "              <Value></Value>\r\n"
                                 "            </Field>\r\n"
                                 "          </Fields>\r\n"
                                 "        </Field>\r\n"))
        << row.type;
  }
}

TEST_F(ZtPortalPoolExecutionTest, GenericFieldsFollowAtTheDepthOfTheFixedOnes) {
  const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
  pool->addString("EDITION", "Home");
  pool->addArray("LIST")->addInteger("COUNT", 7);
  EXPECT_EQ(written(*pool, "    ", false),
            freshPlainPoolWith("        <Field FieldType=\"string\">\r\n"
                               "          <Name>EDITION</Name>\r\n"
                               "          <Value>Home</Value>\r\n"
                               "        </Field>\r\n"
                               "        <Field FieldType=\"array\">\r\n"
                               "          <Name>LIST</Date>\r\n"
                               "          <Fields>\r\n"
                               "            <Field FieldType=\"integer\">\r\n"
                               "              <Name>COUNT</Name>\r\n"
                               "              <Value>7</Value>\r\n"
                               "            </Field>\r\n"
                               "          </Fields>\r\n"
                               "        </Data>\r\n"));
}

TEST_F(ZtPortalPoolExecutionTest, WithoutARootItWritesItsFixedFieldsAlone) {
  const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
  pool->setFields(nullptr);
  EXPECT_EQ(written(*pool, "    ", false), freshPlainPoolWith(""));
}

TEST_F(ZtPortalPoolExecutionTest, WritesMissingValuesAsNullAndOddBytesAsFalse) {
  const auto pool = ZtPortalPoolExecution::initWithValues(ZtDate());
  EXPECT_TRUE(pool->startTime().isNull());
  EXPECT_TRUE(pool->endTime().isNull());
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
  std::string xml = "old";
  pool->addToXml("", xml, false);
  EXPECT_EQ(xml,
            "old<Data Pool=\"(null)\">\r\n"
            "  <Date>(null)</Date>\r\n"
            "  <Fields>\r\n"
            "    <Field FieldType=\"string\">\r\n"
            "      <Name>INSTALLATION_TYPE</Name>\r\n"
            "      <Value>(null)</Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"string\">\r\n"
            "      <Name>START_POINT</Name>\r\n"
            "      <Value>(null)</Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"string\">\r\n"
            "      <Name>START_TIME</Name>\r\n"
            "      <Value>(null)</Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"string\">\r\n"
            "      <Name>END_POINT</Name>\r\n"
            "      <Value>(null)</Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"string\">\r\n"
            "      <Name>END_TIME</Name>\r\n"
            "      <Value>(null)</Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"string\">\r\n"
            "      <Name>END_RESULTSTRING</Name>\r\n"
            "      <Value>(null)</Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"string\">\r\n"
            "      <Name>END_RESULTCODE</Name>\r\n"
            "      <Value>(null)</Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"string\">\r\n"
            "      <Name>END_ERRORMESSAGESTRING</Name>\r\n"
            "      <Value>(null)</Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"string\">\r\n"
            "      <Name>END_ERRORMESSAGECODE</Name>\r\n"
            "      <Value>(null)</Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"boolean\">\r\n"
            "      <Name>CANCELLED</Name>\r\n"
            "      <Value>FALSE</Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"boolean\">\r\n"
            "      <Name>SUCCESSFULL</Name>\r\n"
            "      <Value>FALSE</Value>\r\n"
            "    </Field>\r\n"
            "  </Fields>\r\n"
            "</Data>\r\n");
}

TEST_F(ZtPortalPoolExecutionTest, IsWrittenThroughItsBaseToo) {
  const std::shared_ptr<ZtPortalPool> pool = ZtPortalPoolExecution::initWithValues(kNoon);
  EXPECT_EQ(written(*pool, "    ", false), freshPlainPoolWith(""));
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
