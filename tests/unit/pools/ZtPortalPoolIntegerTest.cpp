#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalPoolInteger.h"

namespace {

using zt::test::written;

class ZtPortalPoolIntegerTest : public zt::test::PoolsFixture {};

TEST_F(ZtPortalPoolIntegerTest, HasTheNameAndNumberItWasMadeWith) {
  const std::int32_t table[] = {0, 7, -7, std::numeric_limits<std::int32_t>::min(),
                                std::numeric_limits<std::int32_t>::max()};
  for (const std::int32_t value : table) {
    const auto field = ZtPortalPoolInteger::initWithNameAndValue("COUNT", value);
    EXPECT_EQ(field->fieldName(), "COUNT");
    EXPECT_EQ(field->data(), value);
  }
}

TEST_F(ZtPortalPoolIntegerTest, TakesAnotherNumberAndName) {
  const auto field = ZtPortalPoolInteger::initWithNameAndValue("COUNT", 1);
  field->setData(-2);
  field->setFieldName("OTHER");
  EXPECT_EQ(field->data(), -2);
  EXPECT_EQ(field->fieldName(), "OTHER");
}

TEST_F(ZtPortalPoolIntegerTest, WritesItselfWithSoap) {
  const auto field =
      ZtPortalPoolInteger::initWithNameAndValue("COUNT", std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(written(*field, "    ", true),
            "    <Field xsi:type=\"com_Field\" FieldType=\"integer\">\r\n"
            "      <Name xsi:type=\"xsd:string\">COUNT</Name>\r\n"
            "      <Value xsi:type=\"xsd:string\">-2147483648</Value>\r\n"
            "    </Field>\r\n");
}

TEST_F(ZtPortalPoolIntegerTest, WritesItselfPlain) {
  const auto field = ZtPortalPoolInteger::initWithNameAndValue("COUNT", 2147483647);
  EXPECT_EQ(written(*field, " ", false),
            " <Field FieldType=\"integer\">\r\n"
            "   <Name>COUNT</Name>\r\n"
            "   <Value>2147483647</Value>\r\n"
            " </Field>\r\n");
}

TEST_F(ZtPortalPoolIntegerTest, WritesTheNumberOfTheMomentAfterTheOldText) {
  const auto field = ZtPortalPoolInteger::initWithNameAndValue(nullptr, 1);
  field->setData(12);
  std::string xml = "old";
  field->addToXml("", xml, false);
  EXPECT_EQ(xml,
            "old<Field FieldType=\"integer\">\r\n  <Name>(null)</Name>\r\n  <Value>12</Value>\r\n"
            "</Field>\r\n");
}

}  // namespace
