// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalPool.h"

namespace zt::test {
namespace {

class ZtPortalPoolTest : public PoolsFixture {
 protected:
  static std::string genericFieldsOf(const ZtPortalPool& pool, const ZtString& prefix, bool soap) {
    std::string xml;
    pool.addFieldsToXml(prefix, xml, soap);
    return xml;
  }
};

TEST_F(ZtPortalPoolTest, BeginsWithItsTypeItsTimeStampAndAnEmptyRoot) {
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
  EXPECT_EQ(pool->poolType(), "CUSTOM");
  EXPECT_EQ(pool->timeStamp(), kNoon);
  ASSERT_NE(pool->fields(), nullptr);
  EXPECT_EQ(pool->fields()->fieldName(), "Root");
  EXPECT_TRUE(pool->fields()->fields().empty());
}

TEST_F(ZtPortalPoolTest, TakesAnotherTypeTimeStampAndRoot) {
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
  pool->setPoolType("OTHER");
  pool->setTimeStamp(kLater);
  const auto root = ZtPortalPoolArray::initWithName("NEW");
  pool->setFields(root);
  EXPECT_EQ(pool->poolType(), "OTHER");
  EXPECT_EQ(pool->timeStamp(), kLater);
  EXPECT_EQ(pool->fields(), root);
}

TEST_F(ZtPortalPoolTest, CannotBeCopiedAndIsDestroyedByItsBase) {
  static_assert(!std::is_copy_constructible_v<ZtPortalPool>);
  static_assert(!std::is_copy_assignable_v<ZtPortalPool>);
  static_assert(std::has_virtual_destructor_v<ZtPortalPool>);
}

TEST_F(ZtPortalPoolTest, AddsFieldsOfEveryKindToItsRootAndReturnsThem) {
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
  const auto string = pool->addString("S", "text");
  const auto integer = pool->addInteger("I", -7);
  const auto number = pool->addFloat("F", 2.5F);
  const auto boolean = pool->addBOOL("B", -1);
  const auto array = pool->addArray("A");
  const ZtPortalPoolArray::Fields expected{string, integer, number, boolean, array};
  EXPECT_EQ(pool->fields()->fields(), expected);
  EXPECT_EQ(boolean->data(), -1);
  EXPECT_EQ(pool->field(1), integer);
}

TEST_F(ZtPortalPoolTest, AWrongIndexThrowsAsTheArrayDoes) {
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
  EXPECT_EQ(thrownBy([&] { pool->field(0); }), "LIST_RANGE: Index 0 in an empty list");
  EXPECT_EQ(thrownBy([&] { pool->field(-1); }), "OUT_OF_BOUNDS: Index (4294967295) out of bounds");
}

TEST_F(ZtPortalPoolTest, WithoutARootOrItsListItHasNoGenericFieldsAndTakesNone) {
  for (const bool hasRoot : {true, false}) {
    const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
    if (hasRoot) {
      pool->fields()->setMutableFields(nullptr);
    } else {
      pool->setFields(nullptr);
      EXPECT_EQ(pool->field(0), nullptr);
    }
    EXPECT_EQ(pool->addString("S", "text"), nullptr);
    EXPECT_EQ(pool->addInteger("I", 1), nullptr);
    EXPECT_EQ(pool->addFloat("F", 1.0F), nullptr);
    EXPECT_EQ(pool->addBOOL("B", 1), nullptr);
    EXPECT_EQ(pool->addArray("A"), nullptr);
    EXPECT_EQ(genericFieldsOf(*pool, "", false), "");
    EXPECT_EQ(written(*pool, "", false), poolText("CUSTOM", ""));
  }
}

TEST_F(ZtPortalPoolTest, WithoutGenericFieldsItWritesOneSelfClosedFieldsLine) {
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
  EXPECT_EQ(written(*pool, "           ", true),
            "           <Data xsi:type=\"com_Pool\" Pool=\"CUSTOM\">\r\n"
            "             <Date xsi:type=\"xsd:dateTime\">2026-11-21T12:00:00.123UTC</Date>\r\n"
            "             <Fields xsi:type=\"com_Fields\"/>\r\n"
            "           </Data>\r\n");
  EXPECT_EQ(written(*pool, "    ", false),
            "    <Data Pool=\"CUSTOM\">\r\n"
            "      <Date>2026-11-21T12:00:00.123UTC</Date>\r\n"
            "      <Fields/>\r\n"
            "    </Data>\r\n");
}

TEST_F(ZtPortalPoolTest, AnArrayIsFourBlanksDeeperAndItsFieldsEight) {
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
  pool->addArray("LIST")->addInteger("COUNT", 7);
  EXPECT_EQ(written(*pool, "", false),
            "<Data Pool=\"CUSTOM\">\r\n"
            "  <Date>2026-11-21T12:00:00.123UTC</Date>\r\n"
            "  <Fields>\r\n"
            "    <Field FieldType=\"array\">\r\n"
            "      <Name>LIST</Date>\r\n"
            "      <Fields>\r\n"
            "        <Field FieldType=\"integer\">\r\n"
            "          <Name>COUNT</Name>\r\n"
            "          <Value>7</Value>\r\n"
            "        </Field>\r\n"
            "      </Fields>\r\n"
            "    </Data>\r\n"
            "  </Fields>\r\n"
            "</Data>\r\n");
}

TEST_F(ZtPortalPoolTest, WritesFieldsOfEveryKindInTheirOrder) {
  const auto pool = ZtPortalPool::initWithValues("<\"&\">", kNoon);
  pool->addBOOL("B", 1);
  pool->addFloat("F", -0.25F);
  pool->addInteger("I", 3);
  pool->addString("S", "<&>");
  pool->addArray("A");
  pool->fields()->mutableFields()->push_back(ZtPortalPoolField::initWithName("N"));
  pool->fields()->mutableFields()->push_back(nullptr);
  for (const bool soap : {true, false}) {
    EXPECT_EQ(written(*pool, "    ", soap), poolText("<\"&\">", R"(
boolean B = TRUE | float F = -0.25 | integer I = 3 | string S = <&>
array A
none N
)",
                                                     soap, 4));
  }
}

TEST_F(ZtPortalPoolTest, TheNameOfTheRootIsNeverWritten) {
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
  pool->addString("S", "text");
  for (const bool soap : {true, false}) {
    EXPECT_EQ(written(*pool, "", soap).find("Root"), std::string::npos);
  }
}

TEST_F(ZtPortalPoolTest, WritesItsGenericFieldsAloneAtThePrefixItself) {
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
  EXPECT_EQ(genericFieldsOf(*pool, "  ", true), "");
  pool->addString("S", "text");
  pool->addBOOL("B", 0);
  EXPECT_EQ(genericFieldsOf(*pool, "  ", true),
            crlf(fieldLines("string S = text | boolean B = FALSE", 2, true)));
}

TEST_F(ZtPortalPoolTest, AMissingTypeAndDateAreWrittenAsNull) {
  const auto pool = ZtPortalPool::initWithValues(nullptr, ZtDate());
  EXPECT_TRUE(pool->poolType().isNull());
  EXPECT_TRUE(pool->timeStamp().isNull());
  EXPECT_EQ(written(*pool, "", false), crlf(poolLines("(null)", "(null)", "")));
}

TEST_F(ZtPortalPoolTest, AppendsItsCurrentValuesAndTheSameAgain) {
  const auto pool = ZtPortalPool::initWithValues("BEFORE", ZtDate());
  pool->setPoolType("NOW");
  pool->setTimeStamp(kNoon);
  std::string xml = "old";
  pool->addToXml("", xml, false);
  pool->addToXml("", xml, false);
  EXPECT_EQ(xml, "old" + poolText("NOW", "") + poolText("NOW", ""));
}

}  // namespace
}  // namespace zt::test
