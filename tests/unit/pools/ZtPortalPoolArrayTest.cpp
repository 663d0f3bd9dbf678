// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalPoolArray.h"

namespace zt::test {
namespace {

class ZtPortalPoolArrayTest : public PoolsFixture {
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
};

TEST_F(ZtPortalPoolArrayTest, BeginsWithItsNameAndAnEmptyList) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  EXPECT_EQ(array->fieldName(), "LIST");
  ASSERT_NE(array->mutableFields(), nullptr);
  EXPECT_TRUE(array->mutableFields()->empty());
  EXPECT_TRUE(array->fields().empty());
  EXPECT_TRUE(ZtPortalPoolArray::initWithName(nullptr)->fieldName().isNull());
}

TEST_F(ZtPortalPoolArrayTest, AddsChildrenOfEveryKindInOrderAndReturnsThem) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  const auto string = array->addString("S", "text");
  const auto integer = array->addInteger("I", -7);
  const auto number = array->addFloat("F", 2.5F);
  const auto boolean = array->addBOOL("B", 2);
  const auto inner = array->addArray("A");
  EXPECT_EQ(string->data(), "text");
  EXPECT_EQ(integer->data(), -7);
  EXPECT_EQ(number->data(), 2.5F);
  EXPECT_EQ(boolean->data(), 2);
  EXPECT_TRUE(inner->fields().empty());
  EXPECT_EQ(array->fields(), (ZtPortalPoolArray::Fields{string, integer, number, boolean, inner}));
  EXPECT_EQ(namesIn(*array), "S I F B A ");
}

TEST_F(ZtPortalPoolArrayTest, ASnapshotDoesNotContainWhatIsAddedLater) {
  const auto array = ZtPortalPoolArray::initWithName("LIST");
  const auto first = array->addString("FIRST", "1");
  const auto snapshot = array->fields();
  array->addString("SECOND", "2");
  EXPECT_EQ(snapshot, ZtPortalPoolArray::Fields{first});
  EXPECT_EQ(array->fields().size(), 2U);
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

TEST_F(ZtPortalPoolArrayTest, ReturnsTheChildAtAnIndex) {
  const auto array = arrayOfThree();
  for (std::int32_t index = 0; index < 3; ++index) {
    EXPECT_EQ(array->field(index), array->fields()[static_cast<std::size_t>(index)]);
  }
}

TEST_F(ZtPortalPoolArrayTest, AWrongIndexThrowsWhetherReadOrDeleted) {
  const auto missing = ZtPortalPoolArray::initWithName("MISSING");
  missing->setMutableFields(nullptr);
  EXPECT_TRUE(missing->fields().empty());
  const struct {
    std::shared_ptr<ZtPortalPoolArray> array;
    std::int32_t index;
    const char* thrown;
  } rows[] = {
      {arrayOfThree(), -1, "OUT_OF_BOUNDS: Index (4294967295) out of bounds"},
      {arrayOfThree(), 3, "OUT_OF_BOUNDS: Index (3) out of bounds"},
      {ZtPortalPoolArray::initWithName("EMPTY"), 0, "LIST_RANGE: Index 0 in an empty list"},
      {missing, 0, "LIST_RANGE: Index 0 in an empty list"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(thrownBy([&row] { row.array->field(row.index); }), row.thrown);
    EXPECT_EQ(thrownBy([&row] { row.array->deleteField(row.index); }), row.thrown);
  }
}

TEST_F(ZtPortalPoolArrayTest, DeletingTheFirstOfThreeMovesTheOthersDown) {
  const auto array = arrayOfThree();
  const auto second = array->field(1);
  const auto third = array->field(2);
  array->deleteField(0);
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

}  // namespace
}  // namespace zt::test
