#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/unit/pools/ExpectedText.h"
#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalPoolDeinstallation.h"
#include "ztportal/pools/ZtPortalPoolInitialization.h"

// The removal and the first set-up of a product: two classes that differ in their pool type alone.

namespace {

using zt::test::ExpectedText;
using zt::test::kLater;
using zt::test::kLaterText;
using zt::test::kNoon;
using zt::test::kNoonText;
using zt::test::written;

template <class Pool>
constexpr const char* kType = "DEINSTALLATION";
template <>
constexpr const char* kType<ZtPortalPoolInitialization> = "INITIALIZATION";

template <class Pool>
class SmallRunPoolsTest : public zt::test::PoolsFixture {
 protected:
  /// A pool as it was made at noon, whose success is `success`.
  static ExpectedText fresh(bool soap, const char* success = "TRUE", std::size_t indent = 0) {
    ExpectedText text(soap, indent);
    text.beginPool(kType<Pool>, kNoonText)
        .field("string", "START_TIME", kNoonText)
        .field("string", "END_TIME", kNoonText)
        .field("string", "END_RESULTSTRING", "")
        .field("string", "END_RESULTCODE", "")
        .field("string", "END_ERRORMESSAGESTRING", "")
        .field("string", "END_ERRORMESSAGECODE", "")
        .field("boolean", "SUCCESSFULL", success);
    return text;
  }

  std::shared_ptr<Pool> _pool = Pool::initWithValues(kNoon);
};

using Pools = ::testing::Types<ZtPortalPoolDeinstallation, ZtPortalPoolInitialization>;
TYPED_TEST_SUITE(SmallRunPoolsTest, Pools);

TYPED_TEST(SmallRunPoolsTest, BeginsAndEndsAtItsTimeStampWithDefaults) {
  EXPECT_EQ(this->_pool->poolType(), kType<TypeParam>);
  EXPECT_EQ(this->_pool->timeStamp(), kNoon);
  EXPECT_EQ(this->_pool->startTime(), kNoon);
  EXPECT_EQ(this->_pool->endTime(), kNoon);
  EXPECT_EQ(this->_pool->endResultString(), "");
  EXPECT_EQ(this->_pool->endResultCode(), "");
  EXPECT_EQ(this->_pool->endErrorMessageString(), "");
  EXPECT_EQ(this->_pool->endErrorMessageCode(), "");
  EXPECT_EQ(this->_pool->successfull(), 1);
}

TYPED_TEST(SmallRunPoolsTest, AFreshPoolWritesItsTypeItsTimesEmptyTextsAndSuccess) {
  EXPECT_EQ(written(*this->_pool, "", true), this->fresh(true).endPool());
  EXPECT_EQ(written(*this->_pool, "", false), this->fresh(false).endPool());
  EXPECT_EQ(written(*this->_pool, "      ", true), this->fresh(true, "TRUE", 6).endPool());
}

TYPED_TEST(SmallRunPoolsTest, WithoutSuccessTheFieldIsFalse) {
  this->_pool->setSuccessfull(0);
  EXPECT_EQ(written(*this->_pool, "", false), this->fresh(false, "FALSE").endPool());
}

TYPED_TEST(SmallRunPoolsTest, AGenericIntegerFollowsSuccessAtTheDepthOfTheFixedFields) {
  this->_pool->addInteger("FILES", 12);
  EXPECT_EQ(written(*this->_pool, "", true),
            this->fresh(true).field("integer", "FILES", "12").endPool());
}

TYPED_TEST(SmallRunPoolsTest, WritesWhatTheRunCameTo) {
  this->_pool->setStartTime(kLater);
  this->_pool->setEndTime(ZtDate());
  this->_pool->setEndResultString("removed");
  this->_pool->setEndResultCode("3");
  this->_pool->setEndErrorMessageString("a <file> & more");
  this->_pool->setEndErrorMessageCode(nullptr);
  this->_pool->setSuccessfull(2);
  EXPECT_EQ(written(*this->_pool, "", false),
            ExpectedText(false)
                .beginPool(kType<TypeParam>, kNoonText)
                .field("string", "START_TIME", kLaterText)
                .field("string", "END_TIME", "(null)")
                .field("string", "END_RESULTSTRING", "removed")
                .field("string", "END_RESULTCODE", "3")
                .field("string", "END_ERRORMESSAGESTRING", "a <file> & more")
                .field("string", "END_ERRORMESSAGECODE", "(null)")
                .field("boolean", "SUCCESSFULL", "FALSE")
                .endPool());
}

TYPED_TEST(SmallRunPoolsTest, IsWrittenThroughItsBaseToo) {
  const std::shared_ptr<ZtPortalPool> base = this->_pool;
  EXPECT_EQ(written(*base, "", false), this->fresh(false).endPool());
}

}  // namespace
