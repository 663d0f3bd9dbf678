#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "ztportal/pools/FieldText.h"

namespace {

TEST(FieldTextTest, AppendsTheFourLinesOfAField) {
  std::string xml = "old";
  zt::appendField(xml, "  ", zt::kFloatField, "NAME", "VALUE", true);
  EXPECT_EQ(xml,
            "old  <Field xsi:type=\"com_Field\" FieldType=\"float\">\r\n"
            "    <Name xsi:type=\"xsd:string\">NAME</Name>\r\n"
            "    <Value xsi:type=\"xsd:string\">VALUE</Value>\r\n"
            "  </Field>\r\n");
  xml.clear();
  zt::appendField(xml, "", zt::kBooleanField, "", "", false);
  EXPECT_EQ(xml,
            "<Field FieldType=\"boolean\">\r\n"
            "  <Name></Name>\r\n"
            "  <Value></Value>\r\n"
            "</Field>\r\n");
}

TEST(FieldTextTest, NumbersHaveTheirTexts) {
  EXPECT_EQ(zt::NumberText(std::int32_t{0}).view(), "0");
  EXPECT_EQ(zt::NumberText(std::int32_t{-42}).view(), "-42");
  EXPECT_EQ(zt::NumberText(std::numeric_limits<std::int32_t>::min()).view(), "-2147483648");
  EXPECT_EQ(zt::NumberText(2.5F).view(), "2.50");
  EXPECT_EQ(zt::NumberText(std::numeric_limits<float>::lowest()).view(),
            "-340282346638528859811704183484516925440.00");
}

TEST(FieldTextTest, OnlyAByteOfExactlyOneIsTrue) {
  EXPECT_EQ(zt::booleanText(1), "TRUE");
  EXPECT_EQ(zt::booleanText(0), "FALSE");
  EXPECT_EQ(zt::booleanText(2), "FALSE");
  EXPECT_EQ(zt::booleanText(-1), "FALSE");
}

}  // namespace
