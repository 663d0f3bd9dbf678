// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalPoolDeinstallation.h"
#include "ztportal/pools/ZtPortalPoolInitialization.h"

// The removal and the first set-up of a product: two classes that differ only in their pool type.

namespace zt::test {
namespace {

template <class Pool>
constexpr const char* kType = "DEINSTALLATION";
template <>
constexpr const char* kType<ZtPortalPoolInitialization> = "INITIALIZATION";

template <class Pool>
class ZtPortalRunResultTest : public PoolsFixture {
 protected:
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
    const std::string expected = poolText(kType<TypeParam>, R"(
string START_TIME = 2026-11-21T12:00:00.123UTC
string END_TIME = 2026-11-21T12:00:00.123UTC
string END_RESULTSTRING = | string END_RESULTCODE =
string END_ERRORMESSAGESTRING = | string END_ERRORMESSAGECODE =
boolean SUCCESSFULL = TRUE
)",
                                          soap, 6);
    EXPECT_EQ(written(*this->_pool, "      ", soap), expected);
    EXPECT_EQ(written(*base, "      ", soap), expected);
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
    EXPECT_EQ(written(*this->_pool, "", soap), poolText(kType<TypeParam>, R"(
string START_TIME = 2026-11-21T12:00:01.250UTC
string END_TIME = (null)
string END_RESULTSTRING = removed
string END_RESULTCODE = 3
string END_ERRORMESSAGESTRING = a <file> & more
string END_ERRORMESSAGECODE = (null)
boolean SUCCESSFULL = FALSE
integer FILES = 12
)",
                                                        soap));
  }
}

}  // namespace
}  // namespace zt::test
