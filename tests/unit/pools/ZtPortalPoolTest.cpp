#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <type_traits>

#include "tests/unit/pools/ExpectedText.h"
#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalPool.h"

namespace {

using zt::test::ExpectedText;
using zt::test::kEpoch;
using zt::test::kLater;
using zt::test::kNoon;
using zt::test::kNoonText;
using zt::test::thrownBy;
using zt::test::written;

class ZtPortalPoolTest : public zt::test::PoolsFixture {
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

TEST_F(ZtPortalPoolTest, TypeAndTimeStampMayBeMissing) {
  const auto pool = ZtPortalPool::initWithValues(nullptr, ZtDate());
  EXPECT_TRUE(pool->poolType().isNull());
  EXPECT_TRUE(pool->timeStamp().isNull());
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
  pool->setPoolType(nullptr);
  pool->setTimeStamp(ZtDate());
  pool->setFields(nullptr);
  EXPECT_TRUE(pool->poolType().isNull());
  EXPECT_TRUE(pool->timeStamp().isNull());
  EXPECT_EQ(pool->fields(), nullptr);
}

TEST_F(ZtPortalPoolTest, CannotBeCopiedAndIsDestroyedByItsBase) {
  static_assert(!std::is_copy_constructible_v<ZtPortalPool>);
  static_assert(!std::is_copy_assignable_v<ZtPortalPool>);
  static_assert(std::has_virtual_destructor_v<ZtPortalPool>);
}

TEST_F(ZtPortalPoolTest, ReleasesItsRootAtItsEnd) {
  std::weak_ptr<ZtPortalPoolArray> watch;
  {
    const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
    watch = pool->fields();
    EXPECT_FALSE(watch.expired());
  }
  EXPECT_TRUE(watch.expired());
}

TEST_F(ZtPortalPoolTest, AddsFieldsOfEveryKindToItsRootAndReturnsThem) {
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
  const auto string = pool->addString("S", "text");
  const auto integer = pool->addInteger("I", -7);
  const auto number = pool->addFloat("F", 2.5F);
  const auto boolean = pool->addBOOL("B", -1);
  const auto array = pool->addArray("A");

  EXPECT_EQ(string->fieldName(), "S");
  EXPECT_EQ(string->data(), "text");
  EXPECT_EQ(integer->fieldName(), "I");
  EXPECT_EQ(integer->data(), -7);
  EXPECT_EQ(number->fieldName(), "F");
  EXPECT_EQ(number->data(), 2.5F);
  EXPECT_EQ(boolean->fieldName(), "B");
  EXPECT_EQ(boolean->data(), -1);
  EXPECT_EQ(array->fieldName(), "A");

  const ZtPortalPoolArray::Fields expected{string, integer, number, boolean, array};
  EXPECT_EQ(pool->fields()->fields(), expected);
}

TEST_F(ZtPortalPoolTest, ReturnsTheGenericFieldAtAnIndex) {
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
  const auto first = pool->addString("S", "text");
  const auto second = pool->addInteger("I", 1);
  EXPECT_EQ(pool->field(0), first);
  EXPECT_EQ(pool->field(1), second);
}

TEST_F(ZtPortalPoolTest, AWrongIndexThrowsAsTheArrayDoes) {
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
  EXPECT_EQ(thrownBy([&] { pool->field(0); }), "LIST_RANGE: Index 0 in an empty list");
  EXPECT_EQ(thrownBy([&] { pool->field(-1); }), "OUT_OF_BOUNDS: Index (4294967295) out of bounds");
  pool->addString("S", "text");
  EXPECT_EQ(thrownBy([&] { pool->field(1); }), "OUT_OF_BOUNDS: Index (1) out of bounds");
  EXPECT_EQ(thrownBy([&] { pool->field(-1); }), "OUT_OF_BOUNDS: Index (4294967295) out of bounds");
}

TEST_F(ZtPortalPoolTest, APoolWithoutARootHasNoGenericFieldsAndTakesNone) {
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
  pool->setFields(nullptr);
  EXPECT_EQ(pool->addString("S", "text"), nullptr);
  EXPECT_EQ(pool->addInteger("I", 1), nullptr);
  EXPECT_EQ(pool->addFloat("F", 1.0F), nullptr);
  EXPECT_EQ(pool->addBOOL("B", 1), nullptr);
  EXPECT_EQ(pool->addArray("A"), nullptr);
  EXPECT_EQ(pool->field(0), nullptr);
  EXPECT_EQ(genericFieldsOf(*pool, "", false), "");
  EXPECT_EQ(written(*pool, "", false),
            "<Data Pool=\"CUSTOM\">\r\n"
            "  <Date>2026-11-21T12:00:00.123UTC</Date>\r\n"
            "  <Fields/>\r\n"
            "</Data>\r\n");
}

TEST_F(ZtPortalPoolTest, ARootWithoutAListIsWrittenAsEmpty) {
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
  pool->fields()->setMutableFields(nullptr);
  EXPECT_EQ(pool->addString("S", "text"), nullptr);
  EXPECT_EQ(genericFieldsOf(*pool, "", false), "");
  EXPECT_EQ(written(*pool, "", false),
            "<Data Pool=\"CUSTOM\">\r\n"
            "  <Date>2026-11-21T12:00:00.123UTC</Date>\r\n"
            "  <Fields/>\r\n"
            "</Data>\r\n");
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

TEST_F(ZtPortalPoolTest, WritesFieldsOfEveryKindInTheirOrder) {
  const auto pool = ZtPortalPool::initWithValues("ALL", kEpoch);
  pool->addBOOL("B", 1);
  pool->addFloat("F", -0.25F);
  pool->addInteger("I", 3);
  pool->addString("S", "<&>");
  pool->addArray("A");
  pool->fields()->mutableFields()->push_back(ZtPortalPoolField::initWithName("N"));
  pool->fields()->mutableFields()->push_back(nullptr);
  EXPECT_EQ(written(*pool, "", false),
            "<Data Pool=\"ALL\">\r\n"
            "  <Date>1970-01-01T00:00:00.000UTC</Date>\r\n"
            "  <Fields>\r\n"
            "    <Field FieldType=\"boolean\">\r\n"
            "      <Name>B</Name>\r\n"
            "      <Value>TRUE</Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"float\">\r\n"
            "      <Name>F</Name>\r\n"
            "      <Value>-0.25</Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"integer\">\r\n"
            "      <Name>I</Name>\r\n"
            "      <Value>3</Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"string\">\r\n"
            "      <Name>S</Name>\r\n"
            "      <Value><&></Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"array\">\r\n"
            "      <Name>A</Date>\r\n"
            "      <Fields/>\r\n"
            "    </Data>\r\n"
            "    <Field type=\"none\">\r\n"
            "      <Name type=\"none\">N</Name>\r\n"
            "    </Field>\r\n"
            "  </Fields>\r\n"
            "</Data>\r\n");
}

TEST_F(ZtPortalPoolTest, TheNameOfTheRootIsNeverWritten) {
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
  pool->addString("S", "text");
  for (const bool soap : {true, false}) {
    EXPECT_EQ(written(*pool, "", soap).find("Root"), std::string::npos);
    EXPECT_EQ(genericFieldsOf(*pool, "", soap).find("Root"), std::string::npos);
  }
}

TEST_F(ZtPortalPoolTest, WritesItsGenericFieldsAloneAtThePrefixItself) {
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
  EXPECT_EQ(genericFieldsOf(*pool, "  ", true), "");
  pool->addString("S", "text");
  pool->addBOOL("B", 0);
  EXPECT_EQ(genericFieldsOf(*pool, "  ", true),
            "  <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "    <Name xsi:type=\"xsd:string\">S</Name>\r\n"
            "    <Value xsi:type=\"xsd:string\">text</Value>\r\n"
            "  </Field>\r\n"
            "  <Field xsi:type=\"com_Field\" FieldType=\"boolean\">\r\n"
            "    <Name xsi:type=\"xsd:string\">B</Name>\r\n"
            "    <Value xsi:type=\"xsd:string\">FALSE</Value>\r\n"
            "  </Field>\r\n");
  std::string xml = "old";
  pool->fields()->deleteField(0);
  pool->addFieldsToXml(nullptr, xml, false);
  EXPECT_EQ(xml,
            "old(null)<Field FieldType=\"boolean\">\r\n"
            "(null)  <Name>B</Name>\r\n"
            "(null)  <Value>FALSE</Value>\r\n"
            "(null)</Field>\r\n");
}

TEST_F(ZtPortalPoolTest, AMissingTypeAndDateAreWrittenAsNull) {
  const auto pool = ZtPortalPool::initWithValues(nullptr, ZtDate());
  EXPECT_EQ(written(*pool, "", false),
            "<Data Pool=\"(null)\">\r\n"
            "  <Date>(null)</Date>\r\n"
            "  <Fields/>\r\n"
            "</Data>\r\n");
  EXPECT_EQ(written(*pool, "", true),
            "<Data xsi:type=\"com_Pool\" Pool=\"(null)\">\r\n"
            "  <Date xsi:type=\"xsd:dateTime\">(null)</Date>\r\n"
            "  <Fields xsi:type=\"com_Fields\"/>\r\n"
            "</Data>\r\n");
}

TEST_F(ZtPortalPoolTest, WritesAnyPrefixAndTypeUnchangedInBothForms) {
  const auto pool = ZtPortalPool::initWithValues("<\"&\">", kNoon);
  pool->addInteger("I", 1);
  for (const bool soap : {true, false}) {
    EXPECT_EQ(
        written(*pool, "    ", soap),
        ExpectedText(soap, 4).beginPool("<\"&\">", kNoonText).field("integer", "I", "1").endPool());
  }
  EXPECT_EQ(written(*pool, nullptr, false),
            "(null)<Data Pool=\"<\"&\">\">\r\n"
            "(null)  <Date>2026-11-21T12:00:00.123UTC</Date>\r\n"
            "(null)  <Fields>\r\n"
            "(null)    <Field FieldType=\"integer\">\r\n"
            "(null)      <Name>I</Name>\r\n"
            "(null)      <Value>1</Value>\r\n"
            "(null)    </Field>\r\n"
            "(null)  </Fields>\r\n"
            "(null)</Data>\r\n");
}

TEST_F(ZtPortalPoolTest, AppendsItsCurrentValuesAndTheSameAgain) {
  const auto pool = ZtPortalPool::initWithValues("BEFORE", kNoon);
  pool->setPoolType("NOW");
  pool->setTimeStamp(kLater);
  const std::string now =
      "<Data Pool=\"NOW\">\r\n"
      "  <Date>2026-11-21T12:00:01.250UTC</Date>\r\n"
      "  <Fields/>\r\n"
      "</Data>\r\n";
  std::string xml = "old";
  pool->addToXml("", xml, false);
  pool->addToXml("", xml, false);
  EXPECT_EQ(xml, "old" + now + now);
}

TEST_F(ZtPortalPoolTest, ItsValuesMayBeReadWhileAnotherThreadSetsThem) {
  const auto pool = ZtPortalPool::initWithValues("FIRST", kNoon);
  const auto root = pool->fields();
  const auto otherRoot = ZtPortalPoolArray::initWithName("Root");
  std::thread writer([&] {
    for (int round = 0; round < 1000; ++round) {
      const bool odd = round % 2 != 0;
      pool->setPoolType(odd ? "FIRST" : "SECOND");
      pool->setTimeStamp(odd ? kNoon : kLater);
      pool->setFields(odd ? root : otherRoot);
    }
  });
  int mixtures = 0;
  for (int round = 0; round < 1000; ++round) {
    const ZtString type = pool->poolType();
    const ZtDate time = pool->timeStamp();
    const auto fields = pool->fields();
    if (type != "FIRST" && type != "SECOND") ++mixtures;
    if (time != kNoon && time != kLater) ++mixtures;
    if (fields != root && fields != otherRoot) ++mixtures;
  }
  writer.join();
  EXPECT_EQ(mixtures, 0);
}

}  // namespace
