#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "tests/pools/PoolsFixture.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/pools/ZtPortalPoolArray.h"

namespace {

using zt::test::lines;
using zt::test::written;

class ZtPortalPoolArrayTest : public zt::test::PoolsFixture {
 protected:
  static std::shared_ptr<ZtPortalPoolArray> arrayOfThree() {
    auto array = ZtPortalPoolArray::initWithName("THREE");
    array->addString("A", "a");
    array->addString("B", "b");
    array->addString("C", "c");
    return array;
  }

  static std::string namesIn(const ZtPortalPoolArray& array) {
    std::string names;
    for (const auto& child : array.fields()) names += std::string(child->fieldName().view()) + " ";
    return names;
  }

  /// "NAME: reason" of what `call` raises.
  template <class Call>
  static std::string raisedBy(Call call) {
    try {
      call();
    } catch (const ZtException& error) {
      return std::string(error.name().view()) + ": " + std::string(error.reason().view());
    }
    return "nothing";
  }
};

TEST_F(ZtPortalPoolArrayTest, BeginsWithItsNameAndAnEmptyList) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  EXPECT_EQ(array->fieldName(), "LIST");
  ASSERT_NE(array->mutableFields(), nullptr);
  EXPECT_TRUE(array->mutableFields()->empty());
  EXPECT_TRUE(array->fields().empty());
  EXPECT_TRUE(ZtPortalPoolArray::initWithName(nullptr)->fieldName().isNull());
}

TEST_F(ZtPortalPoolArrayTest, EachArrayHasAListOfItsOwn) {
  const auto first = ZtPortalPoolArray::initWithName("LIST");
  const auto second = ZtPortalPoolArray::initWithName("LIST");
  first->addInteger("N", 1);
  EXPECT_TRUE(second->fields().empty());
}

// --- adding -----------------------------------------------------------------------------------

TEST_F(ZtPortalPoolArrayTest, AddsChildrenOfEveryKindInOrderAndReturnsThem) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  const auto string = array->addString("S", "text");
  const auto integer = array->addInteger("I", -7);
  const auto number = array->addFloat("F", 2.5F);
  const auto boolean = array->addBOOL("B", 2);
  const auto inner = array->addArray("A");

  EXPECT_EQ(string->fieldName(), "S");
  EXPECT_EQ(string->data(), "text");
  EXPECT_EQ(integer->fieldName(), "I");
  EXPECT_EQ(integer->data(), -7);
  EXPECT_EQ(number->fieldName(), "F");
  EXPECT_EQ(number->data(), 2.5F);
  EXPECT_EQ(boolean->fieldName(), "B");
  EXPECT_EQ(boolean->data(), 2);
  EXPECT_EQ(inner->fieldName(), "A");
  EXPECT_TRUE(inner->fields().empty());

  const ZtPortalPoolArray::Fields expected{string, integer, number, boolean, inner};
  EXPECT_EQ(array->fields(), expected);
}

TEST_F(ZtPortalPoolArrayTest, ChildrenMayShareANameOrHaveNone) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  array->addString("SAME", "1");
  array->addString("SAME", "2");
  array->addString(nullptr, nullptr);
  EXPECT_EQ(written(*array, "", false), lines({
                                            "<Field FieldType=\"array\">",
                                            "  <Name>LIST</Date>",
                                            "  <Fields>",
                                            "    <Field FieldType=\"string\">",
                                            "      <Name>SAME</Name>",
                                            "      <Value>1</Value>",
                                            "    </Field>",
                                            "    <Field FieldType=\"string\">",
                                            "      <Name>SAME</Name>",
                                            "      <Value>2</Value>",
                                            "    </Field>",
                                            "    <Field FieldType=\"string\">",
                                            "      <Name>(null)</Name>",
                                            "      <Value>(null)</Value>",
                                            "    </Field>",
                                            "  </Fields>",
                                            "</Data>",
                                        }));
}

TEST_F(ZtPortalPoolArrayTest, AnArrayWithoutAListTakesNoChildAndReturnsNull) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  array->setMutableFields(nullptr);
  EXPECT_EQ(array->addString("S", "text"), nullptr);
  EXPECT_EQ(array->addInteger("I", 1), nullptr);
  EXPECT_EQ(array->addFloat("F", 1.0F), nullptr);
  EXPECT_EQ(array->addBOOL("B", 1), nullptr);
  EXPECT_EQ(array->addArray("A"), nullptr);
  EXPECT_EQ(array->mutableFields(), nullptr);
  EXPECT_TRUE(array->fields().empty());
}

// --- the list ---------------------------------------------------------------------------------

TEST_F(ZtPortalPoolArrayTest, ASnapshotDoesNotContainWhatIsAddedLater) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  const auto first = array->addString("FIRST", "1");
  const auto snapshot = array->fields();
  array->addString("SECOND", "2");
  EXPECT_EQ(snapshot, ZtPortalPoolArray::Fields{first});
  EXPECT_EQ(array->fields().size(), 2U);
}

TEST_F(ZtPortalPoolArrayTest, ASnapshotHasTheSameChildrenAndNoCopies) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  const auto child = array->addString("S", "before");
  const auto snapshot = array->fields();
  child->setData("after");
  EXPECT_EQ(std::dynamic_pointer_cast<ZtPortalPoolString>(snapshot.front())->data(), "after");
}

TEST_F(ZtPortalPoolArrayTest, AChangeOfTheLiveListChangesTheArray) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  const auto live = array->mutableFields();
  live->push_back(ZtPortalPoolField::initWithName("BARE"));
  EXPECT_EQ(namesIn(*array), "BARE ");
  array->addInteger("NEXT", 1);
  EXPECT_EQ(live->size(), 2U);
}

TEST_F(ZtPortalPoolArrayTest, TakesAnotherListAndSharesIt) {
  const auto array = arrayOfThree();
  const auto old = array->mutableFields();
  const auto other = std::make_shared<ZtPortalPoolArray::Fields>();
  array->setMutableFields(other);
  EXPECT_EQ(array->mutableFields(), other);
  EXPECT_TRUE(array->fields().empty());
  array->addString("D", "d");
  EXPECT_EQ(other->size(), 1U);
  EXPECT_EQ(old->size(), 3U);
}

TEST_F(ZtPortalPoolArrayTest, ReleasesItsChildrenAtItsEnd) {
  std::weak_ptr<ZtPortalPoolField> watch;
  {
    const auto array = ZtPortalPoolArray::initWithName("LIST");
    watch = array->addString("S", "text");
    EXPECT_FALSE(watch.expired());
  }
  EXPECT_TRUE(watch.expired());
}

// --- access by index --------------------------------------------------------------------------

TEST_F(ZtPortalPoolArrayTest, GivesTheChildAtAnIndex) {
  const auto array = arrayOfThree();
  EXPECT_EQ(array->field(0)->fieldName(), "A");
  EXPECT_EQ(array->field(1)->fieldName(), "B");
  EXPECT_EQ(array->field(2)->fieldName(), "C");
  EXPECT_EQ(array->field(1), array->fields()[1]);
}

TEST_F(ZtPortalPoolArrayTest, ANegativeIndexIsOutOfBoundsAndNamedWithoutASign) {
  const auto array = arrayOfThree();
  EXPECT_EQ(raisedBy([&] { array->field(-1); }), "OUT_OF_BOUNDS: Index (4294967295) out of bounds");
  EXPECT_EQ(raisedBy([&] { array->field(std::numeric_limits<std::int32_t>::min()); }),
            "OUT_OF_BOUNDS: Index (2147483648) out of bounds");
  EXPECT_EQ(raisedBy([&] { array->deleteField(-1); }),
            "OUT_OF_BOUNDS: Index (4294967295) out of bounds");
  EXPECT_EQ(raisedBy([&] { ZtPortalPoolArray::initWithName("EMPTY")->field(-1); }),
            "OUT_OF_BOUNDS: Index (4294967295) out of bounds");
}

TEST_F(ZtPortalPoolArrayTest, TheCountOfAnArrayWithChildrenIsOutOfBounds) {
  const auto array = arrayOfThree();
  EXPECT_EQ(raisedBy([&] { array->field(3); }), "OUT_OF_BOUNDS: Index (3) out of bounds");
  EXPECT_EQ(raisedBy([&] { array->field(std::numeric_limits<std::int32_t>::max()); }),
            "OUT_OF_BOUNDS: Index (2147483647) out of bounds");
  EXPECT_EQ(raisedBy([&] { array->deleteField(3); }), "OUT_OF_BOUNDS: Index (3) out of bounds");
}

TEST_F(ZtPortalPoolArrayTest, AnArrayWithoutChildrenRaisesTheListsOwnRangeError) {
  const auto array = ZtPortalPoolArray::initWithName("EMPTY");
  EXPECT_EQ(raisedBy([&] { array->field(0); }), "LIST_RANGE: Index 0 in an empty list");
  EXPECT_EQ(raisedBy([&] { array->field(5); }), "LIST_RANGE: Index 5 in an empty list");
  EXPECT_EQ(raisedBy([&] { array->deleteField(0); }), "LIST_RANGE: Index 0 in an empty list");
  array->setMutableFields(nullptr);
  EXPECT_EQ(raisedBy([&] { array->field(0); }), "LIST_RANGE: Index 0 in an empty list");
  EXPECT_EQ(raisedBy([&] { array->deleteField(0); }), "LIST_RANGE: Index 0 in an empty list");
  EXPECT_EQ(raisedBy([&] { array->field(-1); }), "OUT_OF_BOUNDS: Index (4294967295) out of bounds");
}

TEST_F(ZtPortalPoolArrayTest, DeletingTheFirstOfThreeMovesTheOthersDown) {
  const auto array = arrayOfThree();
  const auto second = array->field(1);
  const auto third = array->field(2);
  array->deleteField(0);
  EXPECT_EQ(array->fields(), (ZtPortalPoolArray::Fields{second, third}));
  EXPECT_EQ(array->field(0), second);
  EXPECT_EQ(array->field(1), third);
}

TEST_F(ZtPortalPoolArrayTest, DeletesInTheMiddleAndAtTheEnd) {
  const auto array = arrayOfThree();
  array->deleteField(1);
  EXPECT_EQ(namesIn(*array), "A C ");
  array->deleteField(1);
  EXPECT_EQ(namesIn(*array), "A ");
  array->deleteField(0);
  EXPECT_EQ(namesIn(*array), "");
}

TEST_F(ZtPortalPoolArrayTest, AFailedDeleteChangesNothing) {
  const auto array = arrayOfThree();
  EXPECT_THROW(array->deleteField(-1), ZtException);
  EXPECT_THROW(array->deleteField(3), ZtException);
  EXPECT_EQ(namesIn(*array), "A B C ");
}

TEST_F(ZtPortalPoolArrayTest, ADeletedChildLivesOnWithItsHolder) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  const auto child = array->addString("S", "text");
  const auto snapshot = array->fields();
  array->deleteField(0);
  EXPECT_EQ(child->data(), "text");
  EXPECT_EQ(snapshot.size(), 1U);
  EXPECT_TRUE(array->fields().empty());
}

// --- writing ----------------------------------------------------------------------------------

TEST_F(ZtPortalPoolArrayTest, AnEmptyArrayWritesExactlyFourLines) {
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

TEST_F(ZtPortalPoolArrayTest, AnArrayWithoutAListIsWrittenAsEmpty) {
  const auto array = arrayOfThree();
  array->setMutableFields(nullptr);
  EXPECT_EQ(written(*array, "", false),
            "<Field FieldType=\"array\">\r\n"
            "  <Name>THREE</Date>\r\n"
            "  <Fields/>\r\n"
            "</Data>\r\n");
}

TEST_F(ZtPortalPoolArrayTest, WritesItsChildrenFourBlanksDeeperPlain) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  array->addInteger("COUNT", 7);
  EXPECT_EQ(written(*array, "        ", false),
            "        <Field FieldType=\"array\">\r\n"
            "          <Name>LIST</Date>\r\n"
            "          <Fields>\r\n"
            "            <Field FieldType=\"integer\">\r\n"
            "              <Name>COUNT</Name>\r\n"
            "              <Value>7</Value>\r\n"
            "            </Field>\r\n"
            "          </Fields>\r\n"
            "        </Data>\r\n");
}

TEST_F(ZtPortalPoolArrayTest, WritesChildrenOfEveryKindWithSoap) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  array->addString("S", "a<b");
  array->addInteger("I", -7);
  array->addFloat("F", 0.5F);
  array->addBOOL("B", 1);
  array->mutableFields()->push_back(ZtPortalPoolField::initWithName("N"));
  array->addArray("E");
  EXPECT_EQ(written(*array, "", true),
            "<Field xsi:type=\"com_Field\" FieldType=\"array\">\r\n"
            "  <Name xsi:type=\"xsd:string\">LIST</Date>\r\n"
            "  <Fields xsi:type=\"com_Fields\">\r\n"
            "    <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "      <Name xsi:type=\"xsd:string\">S</Name>\r\n"
            "      <Value xsi:type=\"xsd:string\">a<b</Value>\r\n"
            "    </Field>\r\n"
            "    <Field xsi:type=\"com_Field\" FieldType=\"integer\">\r\n"
            "      <Name xsi:type=\"xsd:string\">I</Name>\r\n"
            "      <Value xsi:type=\"xsd:string\">-7</Value>\r\n"
            "    </Field>\r\n"
            "    <Field xsi:type=\"com_Field\" FieldType=\"float\">\r\n"
            "      <Name xsi:type=\"xsd:string\">F</Name>\r\n"
            "      <Value xsi:type=\"xsd:string\">0.50</Value>\r\n"
            "    </Field>\r\n"
            "    <Field xsi:type=\"com_Field\" FieldType=\"boolean\">\r\n"
            "      <Name xsi:type=\"xsd:string\">B</Name>\r\n"
            "      <Value xsi:type=\"xsd:string\">TRUE</Value>\r\n"
            "    </Field>\r\n"
            "    <Field xsi:type=\"com_Field\" type=\"none\">\r\n"
            "      <Name xsi:type=\"xsd:string\" type=\"none\">N</Name>\r\n"
            "    </Field>\r\n"
            "    <Field xsi:type=\"com_Field\" FieldType=\"array\">\r\n"
            "      <Name xsi:type=\"xsd:string\">E</Date>\r\n"
            "      <Fields xsi:type=\"com_Fields\"/>\r\n"
            "    </Data>\r\n"
            "  </Fields>\r\n"
            "</Data>\r\n");
}

TEST_F(ZtPortalPoolArrayTest, NestedArraysAreFourBlanksDeeperEachAndCloseWithData) {
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

TEST_F(ZtPortalPoolArrayTest, WritesAHundredLevels) {
  const auto outer = ZtPortalPoolArray::initWithName("L");
  auto inner = outer;
  for (int level = 1; level < 100; ++level) inner = inner->addArray("L");
  std::string expected;
  for (std::size_t level = 0; level < 100; ++level) {
    const std::string lead(4 * level, ' ');
    expected += lead + "<Field FieldType=\"array\">\r\n" + lead + "  <Name>L</Date>\r\n" + lead +
                (level < 99 ? "  <Fields>\r\n" : "  <Fields/>\r\n");
  }
  for (std::size_t level = 100; level-- > 0;) {
    const std::string lead(4 * level, ' ');
    if (level < 99) expected += lead + "  </Fields>\r\n";
    expected += lead + "</Data>\r\n";
  }
  EXPECT_EQ(written(*outer, "", false), expected);
}

TEST_F(ZtPortalPoolArrayTest, NullChildrenAreLeftOut) {
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
  EXPECT_EQ(written(*array, "", false),
            "<Field FieldType=\"array\">\r\n"
            "  <Name>LIST</Date>\r\n"
            "  <Fields>\r\n"
            "    <Field FieldType=\"integer\">\r\n"
            "      <Name>I</Name>\r\n"
            "      <Value>1</Value>\r\n"
            "    </Field>\r\n"
            "  </Fields>\r\n"
            "</Data>\r\n");
}

TEST_F(ZtPortalPoolArrayTest, WritesAnyPrefixAndNameAsTheyAre) {
  const auto array = ZtPortalPoolArray::initWithName("<&>");
  array->addInteger("I", 1);
  EXPECT_EQ(written(*array, "\t", false),
            "\t<Field FieldType=\"array\">\r\n"
            "\t  <Name><&></Date>\r\n"
            "\t  <Fields>\r\n"
            "\t    <Field FieldType=\"integer\">\r\n"
            "\t      <Name>I</Name>\r\n"
            "\t      <Value>1</Value>\r\n"
            "\t    </Field>\r\n"
            "\t  </Fields>\r\n"
            "\t</Data>\r\n");
  array->setFieldName(nullptr);
  EXPECT_EQ(written(*array, nullptr, false),
            "(null)<Field FieldType=\"array\">\r\n"
            "(null)  <Name>(null)</Date>\r\n"
            "(null)  <Fields>\r\n"
            "(null)    <Field FieldType=\"integer\">\r\n"
            "(null)      <Name>I</Name>\r\n"
            "(null)      <Value>1</Value>\r\n"
            "(null)    </Field>\r\n"
            "(null)  </Fields>\r\n"
            "(null)</Data>\r\n");
}

TEST_F(ZtPortalPoolArrayTest, WritesTheChildrenOfTheMomentAfterTheOldText) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  const auto child = array->addString("S", "before");
  std::string xml = "old";
  child->setData("now");
  array->addToXml("", xml, false);
  EXPECT_EQ(xml,
            "old<Field FieldType=\"array\">\r\n"
            "  <Name>LIST</Date>\r\n"
            "  <Fields>\r\n"
            "    <Field FieldType=\"string\">\r\n"
            "      <Name>S</Name>\r\n"
            "      <Value>now</Value>\r\n"
            "    </Field>\r\n"
            "  </Fields>\r\n"
            "</Data>\r\n");
}

TEST_F(ZtPortalPoolArrayTest, WritesChildrenThatAreAnotherArraysToo) {
  const auto shared = ZtPortalPoolInteger::initWithNameAndValue("I", 1);
  const auto first = ZtPortalPoolArray::initWithName("FIRST");
  const auto second = ZtPortalPoolArray::initWithName("SECOND");
  first->mutableFields()->push_back(shared);
  second->mutableFields()->push_back(shared);
  shared->setData(2);
  EXPECT_EQ(written(*second, "", false),
            "<Field FieldType=\"array\">\r\n"
            "  <Name>SECOND</Date>\r\n"
            "  <Fields>\r\n"
            "    <Field FieldType=\"integer\">\r\n"
            "      <Name>I</Name>\r\n"
            "      <Value>2</Value>\r\n"
            "    </Field>\r\n"
            "  </Fields>\r\n"
            "</Data>\r\n");
}

}  // namespace
