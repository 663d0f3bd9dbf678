// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "tests/support/CallingField.h"
#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalPoolArray.h"

// What an array writes.

namespace {

using zt::test::CallingField;
using zt::test::crlf;
using zt::test::fieldLines;
using zt::test::written;

class ZtPortalPoolArrayTextTest : public zt::test::PoolsFixture {};

TEST_F(ZtPortalPoolArrayTextTest, AnEmptyArrayWritesExactlyFourLines) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  EXPECT_EQ(written(*array, "    ", true),
            "    <Field xsi:type=\"com_Field\" FieldType=\"array\">\r\n"
            "      <Name xsi:type=\"xsd:string\">LIST</Date>\r\n"
            "      <Fields xsi:type=\"com_Fields\"/>\r\n"
            "    </Data>\r\n");
  EXPECT_EQ(written(*array, "    ", false),
            "    <Field FieldType=\"array\">\r\n"
            "      <Name>LIST</Date>\r\n"
            "      <Fields/>\r\n"
            "    </Data>\r\n");
}

TEST_F(ZtPortalPoolArrayTextTest, WritesChildrenOfEveryKind) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  array->addString("S", "a<b");
  array->addInteger("I", -7);
  array->addFloat("F", 0.5F);
  array->addBOOL("B", 1);
  array->mutableFields()->push_back(ZtPortalPoolField::initWithName("N"));
  array->addArray("E");
  for (const bool soap : {true, false}) {
    EXPECT_EQ(written(*array, "", soap), crlf(fieldLines(R"(
array LIST
  string S = a<b | integer I = -7 | float F = 0.50 | boolean B = TRUE
  none N
  array E
)",
                                                         0, soap)));
  }
}

TEST_F(ZtPortalPoolArrayTextTest, NestedArraysAreFourBlanksDeeperEachAndCloseWithData) {
  const auto outer = ZtPortalPoolArray::initWithName("ONE");
  outer->addArray("TWO")->addArray("THREE")->addBOOL("DEEP", 0);
  EXPECT_EQ(written(*outer, "  ", false),
            "  <Field FieldType=\"array\">\r\n"
            "    <Name>ONE</Date>\r\n"
            "    <Fields>\r\n"
            "      <Field FieldType=\"array\">\r\n"
            "        <Name>TWO</Date>\r\n"
            "        <Fields>\r\n"
            "          <Field FieldType=\"array\">\r\n"
            "            <Name>THREE</Date>\r\n"
            "            <Fields>\r\n"
            "              <Field FieldType=\"boolean\">\r\n"
            "                <Name>DEEP</Name>\r\n"
            "                <Value>FALSE</Value>\r\n"
            "              </Field>\r\n"
            "            </Fields>\r\n"
            "          </Data>\r\n"
            "        </Fields>\r\n"
            "      </Data>\r\n"
            "    </Fields>\r\n"
            "  </Data>\r\n");
}

TEST_F(ZtPortalPoolArrayTextTest, WritesAHundredLevels) {
  const auto outer = ZtPortalPoolArray::initWithName("L");
  auto inner = outer;
  std::string outline = "array L";
  for (std::size_t level = 1; level < 100; ++level) {
    inner = inner->addArray("L");
    outline += "\n" + std::string(2 * level, ' ') + "array L";
  }
  EXPECT_EQ(written(*outer, "", false), crlf(fieldLines(outline, 0)));
}

TEST_F(ZtPortalPoolArrayTextTest, NullChildrenAreSkipped) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  array->mutableFields()->push_back(nullptr);
  EXPECT_EQ(written(*array, "", false),
            "<Field FieldType=\"array\">\r\n"
            "  <Name>LIST</Date>\r\n"
            "  <Fields>\r\n"
            "  </Fields>\r\n"
            "</Data>\r\n");
  array->addInteger("I", 1);
  EXPECT_EQ(array->field(0), nullptr);
  EXPECT_EQ(written(*array, "", false), crlf(fieldLines("array LIST\n  integer I = 1", 0)));
}

TEST_F(ZtPortalPoolArrayTextTest, WritesAnyPrefixAndNameUnchanged) {
  const struct {
    ZtString prefix;
    ZtString name;
    std::string writtenPrefix;
    std::string writtenName;
  } rows[] = {{"\t", "<&>", "\t", "<&>"}, {nullptr, nullptr, "(null)", "(null)"}};
  for (const auto& row : rows) {
    const std::string& p = row.writtenPrefix;
    EXPECT_EQ(written(*ZtPortalPoolArray::initWithName(row.name), row.prefix, false),
              p + "<Field FieldType=\"array\">\r\n" +                 //
                  p + "  <Name>" + row.writtenName + "</Date>\r\n" +  //
                  p + "  <Fields/>\r\n" +                             //
                  p + "</Data>\r\n");
  }
}

TEST_F(ZtPortalPoolArrayTextTest, AppendsTheCurrentChildrenAlsoThoseOfAnotherArray) {
  const auto shared = ZtPortalPoolInteger::initWithNameAndValue("I", 1);
  const auto first = ZtPortalPoolArray::initWithName("FIRST");
  const auto second = ZtPortalPoolArray::initWithName("SECOND");
  first->mutableFields()->push_back(shared);
  second->mutableFields()->push_back(shared);
  shared->setData(2);
  std::string xml = "old";
  second->addToXml("", xml, false);
  EXPECT_EQ(xml,
            "old<Field FieldType=\"array\">\r\n"
            "  <Name>SECOND</Date>\r\n"
            "  <Fields>\r\n"
            "    <Field FieldType=\"integer\">\r\n"
            "      <Name>I</Name>\r\n"
            "      <Value>2</Value>\r\n"
            "    </Field>\r\n"
            "  </Fields>\r\n"
            "</Data>\r\n");
}

// The children were read from the live list, so a field that changed the list while it was written
// made the writer read freed memory.
TEST_F(ZtPortalPoolArrayTextTest, WritesTheChildrenItHadWhenItsTextWasBegun) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  const struct {
    const char* change;
    std::function<void()> make;
  } rows[] = {
      {"adds many",
       [&] {
         for (int i = 0; i < 100; ++i) array->addString("S", "added");
       }},
      {"removes itself", [&] { array->deleteField(1); }},
      {"removes all", [&] { array->mutableFields()->clear(); }},
      {"has another list",
       [&] { array->setMutableFields(std::make_shared<ZtPortalPoolArray::Fields>()); }},
      {"has no list", [&] { array->setMutableFields(nullptr); }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.change);
    array->setMutableFields(std::make_shared<ZtPortalPoolArray::Fields>());
    array->addBOOL("B", 1);
    array->mutableFields()->push_back(std::make_shared<CallingField>(row.make));
    array->addInteger("I", 1);
    EXPECT_EQ(written(*array, "", false),
              "<Field FieldType=\"array\">\r\n"
              "  <Name>LIST</Date>\r\n"
              "  <Fields>\r\n"
              "    <Field FieldType=\"boolean\">\r\n"
              "      <Name>B</Name>\r\n"
              "      <Value>TRUE</Value>\r\n"
              "    </Field>\r\n"
              "called\r\n"
              "    <Field FieldType=\"integer\">\r\n"
              "      <Name>I</Name>\r\n"
              "      <Value>1</Value>\r\n"
              "    </Field>\r\n"
              "  </Fields>\r\n"
              "</Data>\r\n");
  }
}

}  // namespace
