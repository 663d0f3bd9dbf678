#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/unit/pools/ExpectedText.h"
#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalPoolDeinstallation.h"
#include "ztportal/pools/ZtPortalPoolInitialization.h"

// The removal and the first set-up of a product: two classes that differ only in their pool type.

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
class ZtPortalRunResultTest : public zt::test::PoolsFixture {
 protected:
  /// A new pool.
  static ExpectedText fresh(bool soap) {
    ExpectedText text(soap, 6);
    text.beginPool(kType<Pool>, kNoonText)
        .field("string", "START_TIME", kNoonText)
        .field("string", "END_TIME", kNoonText)
        .field("string", "END_RESULTSTRING", "")
        .field("string", "END_RESULTCODE", "")
        .field("string", "END_ERRORMESSAGESTRING", "")
        .field("string", "END_ERRORMESSAGECODE", "")
        .field("boolean", "SUCCESSFULL", "TRUE");
    return text;
  }

  std::shared_ptr<Pool> _pool = Pool::initWithValues(kNoon);
};

using Pools = ::testing::Types<ZtPortalPoolDeinstallation, ZtPortalPoolInitialization>;
TYPED_TEST_SUITE(ZtPortalRunResultTest, Pools);

TYPED_TEST(ZtPortalRunResultTest, BeginsAndEndsAtItsTimeStampWithDefaults) {
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

TYPED_TEST(ZtPortalRunResultTest, ANewPoolWritesItsDefaults) {
  const std::shared_ptr<ZtPortalPool> base = this->_pool;
  for (const bool soap : {true, false}) {
    EXPECT_EQ(written(*this->_pool, "      ", soap), this->fresh(soap).endPool());
    EXPECT_EQ(written(*base, "      ", soap), this->fresh(soap).endPool());
  }
}

TYPED_TEST(ZtPortalRunResultTest, AFilledPoolWritesItsValuesAndThenItsGenericFields) {
  this->_pool->setStartTime(kLater);
  this->_pool->setEndTime(ZtDate());
  this->_pool->setEndResultString("removed");
  this->_pool->setEndResultCode("3");
  this->_pool->setEndErrorMessageString("a <file> & more");
  this->_pool->setEndErrorMessageCode(nullptr);
  this->_pool->setSuccessfull(2);
  this->_pool->addInteger("FILES", 12);
  for (const bool soap : {true, false}) {
    EXPECT_EQ(written(*this->_pool, "", soap),
              ExpectedText(soap)
                  .beginPool(kType<TypeParam>, kNoonText)
                  .field("string", "START_TIME", kLaterText)
                  .field("string", "END_TIME", "(null)")
                  .field("string", "END_RESULTSTRING", "removed")
                  .field("string", "END_RESULTCODE", "3")
                  .field("string", "END_ERRORMESSAGESTRING", "a <file> & more")
                  .field("string", "END_ERRORMESSAGECODE", "(null)")
                  .field("boolean", "SUCCESSFULL", "FALSE")
                  .field("integer", "FILES", "12")
                  .endPool());
  }
}

}  // namespace
