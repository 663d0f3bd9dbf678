#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalPoolBOOL.h"

namespace {

using zt::test::written;

class ZtPortalPoolBOOLTest : public zt::test::PoolsFixture {};

TEST_F(ZtPortalPoolBOOLTest, KeepsEveryByteAsItWasGiven) {
  static_assert(std::is_same_v<ZtBOOL, signed char>);
  for (int byte = -128; byte <= 127; ++byte) {
    const auto value = static_cast<ZtBOOL>(byte);
    EXPECT_EQ(ZtPortalPoolBOOL::initWithNameAndValue("B", value)->data(), value);
    const auto field = ZtPortalPoolBOOL::initWithNameAndValue("B", 1);
    field->setData(value);
    EXPECT_EQ(field->data(), value);
  }
}

TEST_F(ZtPortalPoolBOOLTest, HasTheNameItWasMadeWithAndTakesAnother) {
  const auto field = ZtPortalPoolBOOL::initWithNameAndValue("DONE", 1);
  EXPECT_EQ(field->fieldName(), "DONE");
  field->setFieldName("OTHER");
  EXPECT_EQ(field->fieldName(), "OTHER");
  EXPECT_EQ(field->data(), 1);
}

TEST_F(ZtPortalPoolBOOLTest, WritesItselfWithSoap) {
  EXPECT_EQ(written(*ZtPortalPoolBOOL::initWithNameAndValue("DONE", 1), "    ", true),
            "    <Field xsi:type=\"com_Field\" FieldType=\"boolean\">\r\n"
            "      <Name xsi:type=\"xsd:string\">DONE</Name>\r\n"
            "      <Value xsi:type=\"xsd:string\">TRUE</Value>\r\n"
            "    </Field>\r\n");
}

TEST_F(ZtPortalPoolBOOLTest, WritesOnlyAByteOfOneAsTrue) {
  const ZtBOOL falseBytes[] = {0, 2, static_cast<ZtBOOL>(255), -1, 127, -128};
  for (const ZtBOOL byte : falseBytes) {
    EXPECT_EQ(written(*ZtPortalPoolBOOL::initWithNameAndValue("DONE", byte), " ", false),
              " <Field FieldType=\"boolean\">\r\n"
              "   <Name>DONE</Name>\r\n"
              "   <Value>FALSE</Value>\r\n"
              " </Field>\r\n")
        << int{byte};
  }
}

TEST_F(ZtPortalPoolBOOLTest, WritesTheByteOfTheMomentAfterTheOldText) {
  const auto field = ZtPortalPoolBOOL::initWithNameAndValue(nullptr, 0);
  field->setData(1);
  std::string xml = "old";
  field->addToXml("", xml, false);
  EXPECT_EQ(xml,
            "old<Field FieldType=\"boolean\">\r\n  <Name>(null)</Name>\r\n  <Value>TRUE</Value>\r\n"
            "</Field>\r\n");
}

}  // namespace
