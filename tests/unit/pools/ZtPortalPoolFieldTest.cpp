// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalPoolBOOL.h"
#include "ztportal/pools/ZtPortalPoolField.h"
#include "ztportal/pools/ZtPortalPoolFloat.h"
#include "ztportal/pools/ZtPortalPoolInteger.h"
#include "ztportal/pools/ZtPortalPoolString.h"

// The bare field and the fields with a value.

namespace zt::test {
namespace {

class ZtPortalPoolFieldTest : public PoolsFixture {
 protected:
  /// A new field has the value; a field that is set to it has it and keeps its name.
  template <class Field, class Value>
  static void expectKept(Value value) {
    EXPECT_EQ(Field::initWithNameAndValue("N", value)->data(), value);
    const auto field = Field::initWithNameAndValue("N", Value(1));
    field->setData(value);
    EXPECT_EQ(field->data(), value);
    EXPECT_EQ(field->fieldName(), "N");
  }
};

TEST_F(ZtPortalPoolFieldTest, HasTheNameItWasMadeWithAndTakesAnother) {
  const std::shared_ptr<ZtPortalPoolField> fields[] = {
      ZtPortalPoolField::initWithName("NAME"), ZtPortalPoolString::initWithNameAndValue("NAME", ""),
      ZtPortalPoolInteger::initWithNameAndValue("NAME", 1),
      ZtPortalPoolFloat::initWithNameAndValue("NAME", 1.0F),
      ZtPortalPoolBOOL::initWithNameAndValue("NAME", 1)};
  for (const auto& field : fields) {
    EXPECT_EQ(field->fieldName(), "NAME");
    field->setFieldName("OTHER");
    EXPECT_EQ(field->fieldName(), "OTHER");
    field->setFieldName("");
    EXPECT_EQ(field->fieldName(), "");
    field->setFieldName(nullptr);
    EXPECT_TRUE(field->fieldName().isNull());
  }
  EXPECT_TRUE(ZtPortalPoolField::initWithName(nullptr)->fieldName().isNull());
}

TEST_F(ZtPortalPoolFieldTest, SharesItsTextsInsteadOfCopyingThem) {
  const ZtString shared = "shared";
  const auto field = ZtPortalPoolString::initWithNameAndValue(shared, shared);
  EXPECT_EQ(field->fieldName().view().data(), shared.view().data());
  EXPECT_EQ(field->data().view().data(), shared.view().data());
}

TEST_F(ZtPortalPoolFieldTest, CannotBeCopiedAndIsDestroyedThroughItsBase) {
  static_assert(!std::is_copy_constructible_v<ZtPortalPoolField>);
  static_assert(!std::is_copy_assignable_v<ZtPortalPoolField>);
  static_assert(std::has_virtual_destructor_v<ZtPortalPoolField>);
}

TEST_F(ZtPortalPoolFieldTest, KeepsItsValueAsItWasGiven) {
  static_assert(std::is_same_v<ZtBOOL, signed char>);
  for (int byte = -128; byte <= 127; ++byte) {
    expectKept<ZtPortalPoolBOOL>(static_cast<ZtBOOL>(byte));
  }
  using Integers = std::numeric_limits<std::int32_t>;
  for (const std::int32_t number : {0, 7, -7, Integers::min(), Integers::max()}) {
    expectKept<ZtPortalPoolInteger>(number);
  }
  using Floats = std::numeric_limits<float>;
  for (const float number :
       {0.0F, 2.5F, -0.25F, Floats::max(), Floats::denorm_min(), -Floats::infinity()}) {
    expectKept<ZtPortalPoolFloat>(number);
  }
  EXPECT_TRUE(
      std::isnan(ZtPortalPoolFloat::initWithNameAndValue("N", Floats::quiet_NaN())->data()));
  const auto string = ZtPortalPoolString::initWithNameAndValue("N", "first");
  EXPECT_EQ(string->data(), "first");
  string->setData("second");
  EXPECT_EQ(string->data(), "second");
  string->setData(nullptr);
  EXPECT_TRUE(string->data().isNull());
}

TEST_F(ZtPortalPoolFieldTest, WritesItsNameAndCurrentValue) {
  const auto string = ZtPortalPoolString::initWithNameAndValue("S", "before");
  string->setData("now");
  const auto integer = ZtPortalPoolInteger::initWithNameAndValue("I", 1);
  integer->setData(-2);
  const auto number = ZtPortalPoolFloat::initWithNameAndValue("F", 1.0F);
  number->setData(-1234.567F);
  const auto boolean = ZtPortalPoolBOOL::initWithNameAndValue(nullptr, 2);
  boolean->setData(1);
  for (const bool soap : {true, false}) {
    std::string xml = "old";
    string->addToXml("    ", xml, soap);
    integer->addToXml("    ", xml, soap);
    number->addToXml("    ", xml, soap);
    boolean->addToXml("    ", xml, soap);
    EXPECT_EQ(xml, "old" + crlf(fieldLines("string S = now | integer I = -2 | float F = -1234.57 | "
                                           "boolean (null) = TRUE",
                                           4, soap)));
  }
}

TEST_F(ZtPortalPoolFieldTest, ABareFieldHasTheTypeNoneAndNoValue) {
  const auto field = ZtPortalPoolField::initWithName("BARE");
  std::string xml = "old";
  field->addToXml("    ", xml, true);
  field->addToXml("    ", xml, false);
  EXPECT_EQ(xml,
            "old    <Field xsi:type=\"com_Field\" type=\"none\">\r\n"
            "      <Name xsi:type=\"xsd:string\" type=\"none\">BARE</Name>\r\n"
            "    </Field>\r\n"
            "    <Field type=\"none\">\r\n"
            "      <Name type=\"none\">BARE</Name>\r\n"
            "    </Field>\r\n");
}

TEST_F(ZtPortalPoolFieldTest, ABareFieldWritesAnyNameAndPrefixUnchanged) {
  const struct {
    ZtString name;
    ZtString prefix;
    std::string writtenName;
    std::string writtenPrefix;
  } rows[] = {
      {nullptr, "", "(null)", ""}, {"<&\">", "\t", "<&\">", "\t"}, {"", nullptr, "", "(null)"}};
  for (const auto& row : rows) {
    const std::string& p = row.writtenPrefix;
    EXPECT_EQ(written(*ZtPortalPoolField::initWithName(row.name), row.prefix, false),
              p + "<Field type=\"none\">\r\n" +                                     //
                  p + "  <Name type=\"none\">" + row.writtenName + "</Name>\r\n" +  //
                  p + "</Field>\r\n");
  }
}

}  // namespace
}  // namespace zt::test
