#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalPoolString.h"

namespace {

using zt::test::written;

class ZtPortalPoolStringTest : public zt::test::PoolsFixture {};

TEST_F(ZtPortalPoolStringTest, HasTheNameAndTextItWasMadeWith) {
  const auto field = ZtPortalPoolString::initWithNameAndValue("NAME", "text");
  EXPECT_EQ(field->fieldName(), "NAME");
  EXPECT_EQ(field->data(), "text");
}

TEST_F(ZtPortalPoolStringTest, NameAndTextMayBeMissing) {
  const auto field = ZtPortalPoolString::initWithNameAndValue(nullptr, nullptr);
  EXPECT_TRUE(field->fieldName().isNull());
  EXPECT_TRUE(field->data().isNull());
}

TEST_F(ZtPortalPoolStringTest, SharesItsTextInsteadOfCopyingIt) {
  const ZtString text = "shared";
  const auto field = ZtPortalPoolString::initWithNameAndValue("N", text);
  EXPECT_EQ(field->data().view().data(), text.view().data());
}

TEST_F(ZtPortalPoolStringTest, TakesAnotherTextAndName) {
  const auto field = ZtPortalPoolString::initWithNameAndValue("NAME", "first");
  field->setData("second");
  EXPECT_EQ(field->data(), "second");
  EXPECT_EQ(field->fieldName(), "NAME");
  field->setFieldName("OTHER");
  EXPECT_EQ(field->fieldName(), "OTHER");
  field->setData(nullptr);
  EXPECT_TRUE(field->data().isNull());
}

TEST_F(ZtPortalPoolStringTest, WritesItselfWithSoap) {
  EXPECT_EQ(written(*ZtPortalPoolString::initWithNameAndValue("RESULT", "OK"), "    ", true),
            "    <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "      <Name xsi:type=\"xsd:string\">RESULT</Name>\r\n"
            "      <Value xsi:type=\"xsd:string\">OK</Value>\r\n"
            "    </Field>\r\n");
}

TEST_F(ZtPortalPoolStringTest, WritesItselfPlain) {
  EXPECT_EQ(written(*ZtPortalPoolString::initWithNameAndValue("RESULT", "OK"), " ", false),
            " <Field FieldType=\"string\">\r\n"
            "   <Name>RESULT</Name>\r\n"
            "   <Value>OK</Value>\r\n"
            " </Field>\r\n");
}

TEST_F(ZtPortalPoolStringTest, WritesAMissingTextAsNullAndAnEmptyOneAsNothing) {
  EXPECT_EQ(written(*ZtPortalPoolString::initWithNameAndValue("N", nullptr), "", false),
            "<Field FieldType=\"string\">\r\n  <Name>N</Name>\r\n  <Value>(null)</Value>\r\n"
            "</Field>\r\n");
  EXPECT_EQ(written(*ZtPortalPoolString::initWithNameAndValue("N", ""), "", false),
            "<Field FieldType=\"string\">\r\n  <Name>N</Name>\r\n  <Value></Value>\r\n"
            "</Field>\r\n");
}

TEST_F(ZtPortalPoolStringTest, WritesTheTextOfTheMomentAfterTheOldText) {
  const auto field = ZtPortalPoolString::initWithNameAndValue("N", "before");
  field->setData("now");
  std::string xml = "old";
  field->addToXml("", xml, false);
  EXPECT_EQ(xml,
            "old<Field FieldType=\"string\">\r\n  <Name>N</Name>\r\n  <Value>now</Value>\r\n"
            "</Field>\r\n");
}

TEST_F(ZtPortalPoolStringTest, ItsTextMayBeReadWhileAnotherThreadSetsIt) {
  const auto field = ZtPortalPoolString::initWithNameAndValue("N", std::string(30, 'a'));
  std::thread writer([&field] {
    for (int round = 0; round < 1000; ++round) {
      field->setData(std::string(30, round % 2 == 0 ? 'b' : 'a'));
    }
  });
  int mixtures = 0;
  for (int round = 0; round < 1000; ++round) {
    const ZtString seen = field->data();
    if (seen != std::string(30, 'a') && seen != std::string(30, 'b')) ++mixtures;
  }
  writer.join();
  EXPECT_EQ(mixtures, 0);
}

}  // namespace
