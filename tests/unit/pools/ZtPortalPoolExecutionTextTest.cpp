#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "tests/unit/pools/ExpectedText.h"
#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalDef.h"
#include "ztportal/pools/ZtPortalPoolExecution.h"

// What an execution writes.

namespace {

using zt::test::ExpectedText;
using zt::test::kEpoch;
using zt::test::kLater;
using zt::test::kNoon;
using zt::test::kNoonText;
using zt::test::written;

class ZtPortalPoolExecutionTextTest : public zt::test::PoolsFixture {
 protected:
  /// The fixed fields of a new pool.
  static ExpectedText fresh(bool soap = false) {
    ExpectedText text(soap, 4);
    text.beginPool("EXECUTION", kNoonText)
        .field("string", "INSTALLATION_TYPE", "Standard")
        .field("string", "START_POINT", "")
        .field("string", "START_TIME", kNoonText)
        .field("string", "END_POINT", "")
        .field("string", "END_TIME", kNoonText)
        .field("string", "END_RESULTSTRING", "")
        .field("string", "END_RESULTCODE", "")
        .field("string", "END_ERRORMESSAGESTRING", "")
        .field("string", "END_ERRORMESSAGECODE", "")
        .field("boolean", "CANCELLED", "FALSE")
        .field("boolean", "SUCCESSFULL", "TRUE");
    return text;
  }
  static std::string freshWithStep(std::string_view name, std::string_view type,
                                   std::string_view date) {
    return fresh()
        .beginArray("INSTALLATIONSTEPS")
        .beginRecord()
        .recordField("string", "STEP_NAME", name)
        .recordField("string", "STEP_TYPE", type)
        .recordField("string", "STEP_TIMESTAMP", date)
        .recordField("string", "STEP_MESSAGESTRING", "")
        .recordField("string", "STEP_MESSAGECODE", "")
        .endRecord()
        .endArray()
        .endPool();
  }

  std::shared_ptr<ZtPortalPoolExecution> _pool = ZtPortalPoolExecution::initWithValues(kNoon);
};

TEST_F(ZtPortalPoolExecutionTextTest, ANewPoolWritesItsDefaultsAndNeitherStepsNorGenericFields) {
  EXPECT_EQ(written(*_pool, "    ", true), fresh(true).endPool());
  EXPECT_EQ(written(*_pool, "    ", false), fresh().endPool());
}

TEST_F(ZtPortalPoolExecutionTextTest, WritesAFilledPoolWithSoap) {
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

TEST_F(ZtPortalPoolExecutionTextTest, WritesTheTextOfEveryStepTypeAndNothingForOthers) {
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
    EXPECT_EQ(written(*pool, "    ", false), freshWithStep("(null)", row.text, "(null)"))
        << row.type;
  }
}

TEST_F(ZtPortalPoolExecutionTextTest, WithoutARootItWritesItsFixedFieldsAlone) {
  _pool->addString("GONE", "with its root");
  _pool->setFields(nullptr);
  EXPECT_EQ(written(*_pool, "    ", false), fresh().endPool());
}

TEST_F(ZtPortalPoolExecutionTextTest, WritesMissingValuesAsNullAndOddBytesAsFalse) {
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
  ExpectedText text(false);
  text.beginPool("(null)", "(null)");
  for (const char* name :
       {"INSTALLATION_TYPE", "START_POINT", "START_TIME", "END_POINT", "END_TIME",
        "END_RESULTSTRING", "END_RESULTCODE", "END_ERRORMESSAGESTRING", "END_ERRORMESSAGECODE"}) {
    text.field("string", name, "(null)");
  }
  text.field("boolean", "CANCELLED", "FALSE").field("boolean", "SUCCESSFULL", "FALSE");
  std::string xml = "old";
  pool->addToXml("", xml, false);
  EXPECT_EQ(xml, "old" + text.endPool());
}

TEST_F(ZtPortalPoolExecutionTextTest, IsWrittenThroughItsBaseToo) {
  const std::shared_ptr<ZtPortalPool> base = _pool;
  EXPECT_EQ(written(*base, "    ", false), fresh().endPool());
}

}  // namespace
