#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalPoolField.h"

namespace {

using zt::test::written;

class ZtPortalPoolFieldTest : public zt::test::PoolsFixture {};

TEST_F(ZtPortalPoolFieldTest, HasTheNameItWasMadeWith) {
  EXPECT_EQ(ZtPortalPoolField::initWithName("NAME")->fieldName(), "NAME");
  EXPECT_EQ(ZtPortalPoolField::initWithName("")->fieldName(), "");
  EXPECT_TRUE(ZtPortalPoolField::initWithName(nullptr)->fieldName().isNull());
}

TEST_F(ZtPortalPoolFieldTest, SharesItsNameInsteadOfCopyingIt) {
  const ZtString name = "shared";
  const auto field = ZtPortalPoolField::initWithName(name);
  EXPECT_EQ(field->fieldName().view().data(), name.view().data());
}

TEST_F(ZtPortalPoolFieldTest, TakesAnotherName) {
  const auto field = ZtPortalPoolField::initWithName("FIRST");
  field->setFieldName("SECOND");
  EXPECT_EQ(field->fieldName(), "SECOND");
  field->setFieldName(nullptr);
  EXPECT_TRUE(field->fieldName().isNull());
}

TEST_F(ZtPortalPoolFieldTest, EveryCallMakesAnotherField) {
  static_assert(!std::is_copy_constructible_v<ZtPortalPoolField>);
  static_assert(!std::is_copy_assignable_v<ZtPortalPoolField>);
  static_assert(std::has_virtual_destructor_v<ZtPortalPoolField>);
  const auto first = ZtPortalPoolField::initWithName("N");
  const auto second = ZtPortalPoolField::initWithName("N");
  first->setFieldName("OTHER");
  EXPECT_EQ(second->fieldName(), "N");
}

TEST_F(ZtPortalPoolFieldTest, ABareFieldHasTheTypeNoneAndNoValueWithSoap) {
  EXPECT_EQ(written(*ZtPortalPoolField::initWithName("BARE"), "    ", true),
            "    <Field xsi:type=\"com_Field\" type=\"none\">\r\n"
            "      <Name xsi:type=\"xsd:string\" type=\"none\">BARE</Name>\r\n"
            "    </Field>\r\n");
}

TEST_F(ZtPortalPoolFieldTest, ABareFieldHasTheTypeNoneAndNoValuePlain) {
  EXPECT_EQ(written(*ZtPortalPoolField::initWithName("BARE"), "    ", false),
            "    <Field type=\"none\">\r\n"
            "      <Name type=\"none\">BARE</Name>\r\n"
            "    </Field>\r\n");
}

TEST_F(ZtPortalPoolFieldTest, ABareFieldWritesAnyNameAndPrefixAsTheyAre) {
  EXPECT_EQ(written(*ZtPortalPoolField::initWithName(nullptr), "", false),
            "<Field type=\"none\">\r\n"
            "  <Name type=\"none\">(null)</Name>\r\n"
            "</Field>\r\n");
  EXPECT_EQ(written(*ZtPortalPoolField::initWithName("<&\">"), "\t", false),
            "\t<Field type=\"none\">\r\n"
            "\t  <Name type=\"none\"><&\"></Name>\r\n"
            "\t</Field>\r\n");
  EXPECT_EQ(written(*ZtPortalPoolField::initWithName(""), nullptr, false),
            "(null)<Field type=\"none\">\r\n"
            "(null)  <Name type=\"none\"></Name>\r\n"
            "(null)</Field>\r\n");
}

TEST_F(ZtPortalPoolFieldTest, WritingLeavesTheOldTextAndWritesTheSameAgain) {
  const auto field = ZtPortalPoolField::initWithName("N");
  std::string xml = "old";
  field->addToXml("", xml, false);
  field->addToXml("", xml, false);
  EXPECT_EQ(xml,
            "old"
            "<Field type=\"none\">\r\n  <Name type=\"none\">N</Name>\r\n</Field>\r\n"
            "<Field type=\"none\">\r\n  <Name type=\"none\">N</Name>\r\n</Field>\r\n");
}

}  // namespace
