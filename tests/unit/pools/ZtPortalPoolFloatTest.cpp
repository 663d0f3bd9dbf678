#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalPoolFloat.h"

namespace {

using zt::test::written;

class ZtPortalPoolFloatTest : public zt::test::PoolsFixture {};

TEST_F(ZtPortalPoolFloatTest, HasTheNameAndNumberItWasMadeWith) {
  const float table[] = {0.0F,
                         2.5F,
                         -2.5F,
                         std::numeric_limits<float>::max(),
                         std::numeric_limits<float>::denorm_min(),
                         -std::numeric_limits<float>::infinity()};
  for (const float value : table) {
    const auto field = ZtPortalPoolFloat::initWithNameAndValue("RATIO", value);
    EXPECT_EQ(field->fieldName(), "RATIO");
    EXPECT_EQ(field->data(), value);
  }
  EXPECT_TRUE(std::isnan(
      ZtPortalPoolFloat::initWithNameAndValue("N", std::numeric_limits<float>::quiet_NaN())
          ->data()));
}

TEST_F(ZtPortalPoolFloatTest, TakesAnotherNumberAndName) {
  const auto field = ZtPortalPoolFloat::initWithNameAndValue("RATIO", 1.0F);
  field->setData(-0.25F);
  field->setFieldName("OTHER");
  EXPECT_EQ(field->data(), -0.25F);
  EXPECT_EQ(field->fieldName(), "OTHER");
}

TEST_F(ZtPortalPoolFloatTest, WritesItselfWithSoap) {
  EXPECT_EQ(written(*ZtPortalPoolFloat::initWithNameAndValue("RATIO", 2.5F), "    ", true),
            "    <Field xsi:type=\"com_Field\" FieldType=\"float\">\r\n"
            "      <Name xsi:type=\"xsd:string\">RATIO</Name>\r\n"
            "      <Value xsi:type=\"xsd:string\">2.50</Value>\r\n"
            "    </Field>\r\n");
}

TEST_F(ZtPortalPoolFloatTest, WritesItselfPlain) {
  EXPECT_EQ(written(*ZtPortalPoolFloat::initWithNameAndValue("RATIO", -1234.567F), " ", false),
            " <Field FieldType=\"float\">\r\n"
            "   <Name>RATIO</Name>\r\n"
            "   <Value>-1234.57</Value>\r\n"
            " </Field>\r\n");
}

TEST_F(ZtPortalPoolFloatTest, WritesTheNumberOfTheMomentAfterTheOldText) {
  const auto field = ZtPortalPoolFloat::initWithNameAndValue(nullptr, 1.0F);
  field->setData(0.004F);
  std::string xml = "old";
  field->addToXml("", xml, false);
  EXPECT_EQ(xml,
            "old<Field FieldType=\"float\">\r\n  <Name>(null)</Name>\r\n  <Value>0.00</Value>\r\n"
            "</Field>\r\n");
}

}  // namespace
