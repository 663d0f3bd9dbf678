// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <new>
#include <string>

#include "tests/unit/base/CountedMemory.h"
#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalPoolDiagnose.h"
#include "ztportal/pools/ZtPortalPoolExecution.h"

namespace zt::test {
namespace {

class OutOfMemoryTest : public PoolsFixture {
 protected:
  /// Calls `call` with ever more memory until it succeeds; `check` looks after each failure.
  /// Returns how often it failed.
  template <class Call, class Check>
  static int failUntilItSucceeds(Call call, Check check) {
    for (int allocations = 0;; ++allocations) {
      try {
        allocationsLeft = allocations;
        call();
        allocationsLeft = -1;
        return allocations;
      } catch (const std::bad_alloc&) {
        allocationsLeft = -1;
        check();
      }
    }
  }

  const ZtString _name = "NAME";
  const ZtString _value = "value";
};

TEST_F(OutOfMemoryTest, IsNoReasonForANullFieldAndNothingHalfIsAdded) {
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", kNoon);
  const auto& fields = *pool->fields()->mutableFields();
  std::size_t count = 0;
  const auto unchanged = [&] { EXPECT_EQ(fields.size(), count); };
  const auto expectToFail = [&](auto call) {
    EXPECT_GT(failUntilItSucceeds([&] { EXPECT_NE(call(), nullptr); }, unchanged), 0);
    ++count;
    EXPECT_EQ(fields.size(), count);
  };
  expectToFail([&] { return pool->addString(_name, _value); });
  expectToFail([&] { return pool->addInteger(_name, 1); });
  expectToFail([&] { return pool->addFloat(_name, 1.0F); });
  expectToFail([&] { return pool->addBOOL(_name, 1); });
  expectToFail([&] { return pool->addArray(_name); });
}

TEST_F(OutOfMemoryTest, IsNoReasonForANullStepAndNothingHalfIsAdded) {
  const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
  const int failures =
      failUntilItSucceeds([&] { EXPECT_NE(pool->addStep(kNoon, _name, 0), nullptr); },
                          [&] { EXPECT_TRUE(pool->executionSteps().empty()); });
  EXPECT_GT(failures, 0);
  EXPECT_EQ(pool->executionSteps().size(), 1U);
}

TEST_F(OutOfMemoryTest, WhileWritingLeavesThePoolAsItWas) {
  const auto pool = ZtPortalPoolExecution::initWithValues(kNoon);
  pool->setStartPoint(std::string(1000, 's'));
  pool->addStep(kNoon, std::string(1000, 'n'), 0)->setStepMessageString(std::string(5000, 'm'));
  pool->addString("EDITION", std::string(9000, 'e'));
  pool->addArray("LIST")->addInteger("COUNT", 7);
  const std::string expected = written(*pool, "    ", true);
  const int failures =
      failUntilItSucceeds([&] { written(*pool, "    ", true); },
                          [&] { EXPECT_EQ(pool->startPoint().view().size(), 1000U); });
  EXPECT_GT(failures, 5);
  EXPECT_EQ(written(*pool, "    ", true), expected);
}

TEST_F(OutOfMemoryTest, RecordsNeedMemoryForOneOfThemHoweverManyThereAre) {
  const auto pool = ZtPortalPoolDiagnose::initWithValues(ZtDate());
  const ZtString prefix = "    ";
  std::string xml;
  xml.reserve(std::size_t{1024} * 1024);
  constexpr int kAllocations = 4;  // at most, whatever the number of records
  for (int step = 0; step < 100; ++step) {
    pool->addStep(ZtDate(), "Step", 0);
    const auto write = [&] { pool->addToXml(prefix, xml, true); };
    EXPECT_LE(failUntilItSucceeds(write, [] {}), kAllocations) << step;
    xml.clear();
  }
}

}  // namespace
}  // namespace zt::test
