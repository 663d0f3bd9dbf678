#include <gtest/gtest.h>

#include <string_view>

#include "ztportal/pools/Markup.h"

namespace {

TEST(MarkupTest, TagsCarryTheirSoapTypeOnlyWithSoap) {
  struct Row {
    const zt::Tag& tag;
    std::string_view soap;
    std::string_view plain;
  };
  const Row table[] = {
      {zt::kStringField, "<Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n",
       "<Field FieldType=\"string\">\r\n"},
      {zt::kIntegerField, "<Field xsi:type=\"com_Field\" FieldType=\"integer\">\r\n",
       "<Field FieldType=\"integer\">\r\n"},
      {zt::kFloatField, "<Field xsi:type=\"com_Field\" FieldType=\"float\">\r\n",
       "<Field FieldType=\"float\">\r\n"},
      {zt::kBooleanField, "<Field xsi:type=\"com_Field\" FieldType=\"boolean\">\r\n",
       "<Field FieldType=\"boolean\">\r\n"},
      {zt::kArrayField, "<Field xsi:type=\"com_Field\" FieldType=\"array\">\r\n",
       "<Field FieldType=\"array\">\r\n"},
      {zt::kBareField, "<Field xsi:type=\"com_Field\" type=\"none\">\r\n",
       "<Field type=\"none\">\r\n"},
      {zt::kName, "  <Name xsi:type=\"xsd:string\">", "  <Name>"},
      {zt::kBareName, "  <Name xsi:type=\"xsd:string\" type=\"none\">", "  <Name type=\"none\">"},
      {zt::kValue, "  <Value xsi:type=\"xsd:string\">", "  <Value>"},
      {zt::kFields, "  <Fields xsi:type=\"com_Fields\">\r\n", "  <Fields>\r\n"},
      {zt::kNoFields, "  <Fields xsi:type=\"com_Fields\"/>\r\n", "  <Fields/>\r\n"},
      {zt::kPool, "<Data xsi:type=\"com_Pool\" Pool=\"", "<Data Pool=\""},
      {zt::kDate, "  <Date xsi:type=\"xsd:dateTime\">", "  <Date>"},
  };
  for (const Row& row : table) {
    EXPECT_EQ(row.tag.text(true), row.soap);
    EXPECT_EQ(row.tag.text(false), row.plain);
  }
}

TEST(MarkupTest, EndTagsCloseTheirElements) {
  EXPECT_EQ(zt::kFieldEnd, "</Field>\r\n");
  EXPECT_EQ(zt::kNameEnd, "</Name>\r\n");
  EXPECT_EQ(zt::kValueEnd, "</Value>\r\n");
  EXPECT_EQ(zt::kFieldsEnd, "  </Fields>\r\n");
  EXPECT_EQ(zt::kPoolTypeEnd, "\">\r\n");
  EXPECT_EQ(zt::kDateEnd, "</Date>\r\n");
  EXPECT_EQ(zt::kPoolEnd, "</Data>\r\n");
}

TEST(MarkupTest, TheTwoEndTagsOfAnArrayDoNotMatchTheirStartTags) {
  EXPECT_EQ(zt::kArrayNameEnd, "</Date>\r\n");
  EXPECT_EQ(zt::kArrayEnd, "</Data>\r\n");
}

TEST(MarkupTest, SoapTypesHaveTheirNames) {
  EXPECT_EQ(zt::kSoapTypeAttribute, "xsi:type=\"");
  EXPECT_EQ(zt::kComField, "com_Field");
  EXPECT_EQ(zt::kComFields, "com_Fields");
  EXPECT_EQ(zt::kComPool, "com_Pool");
  EXPECT_EQ(zt::kXsdString, "xsd:string");
  EXPECT_EQ(zt::kXsdDateTime, "xsd:dateTime");
}

TEST(MarkupTest, WordsForValuesAreInTheirCase) {
  EXPECT_EQ(zt::kTrue, "TRUE");
  EXPECT_EQ(zt::kFalse, "FALSE");
  EXPECT_EQ(zt::kNull, "(null)");
}

}  // namespace
