// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalDef.h"

namespace zt::test {
namespace {

class ZtPortalDefTest : public PoolsFixture {};

TEST_F(ZtPortalDefTest, AnAttributeIsABlankAndTheTextWithSoapAndEmptyWithout) {
  EXPECT_EQ(ZtPortalDef::appendSOAPParams(true, "xsi:type=\"com_Field\""),
            " xsi:type=\"com_Field\"");
  EXPECT_EQ(ZtPortalDef::appendSOAPParams(true, ""), " ");
  EXPECT_EQ(ZtPortalDef::appendSOAPParams(true, nullptr), " (null)");
  EXPECT_EQ(ZtPortalDef::appendSOAPParams(false, "xsi:type=\"com_Field\""), "");
  EXPECT_EQ(ZtPortalDef::appendSOAPParams(false, ""), "");
  EXPECT_FALSE(ZtPortalDef::appendSOAPParams(false, nullptr).isNull());
}

TEST_F(ZtPortalDefTest, ADateIsWrittenWithMillisecondsAndZoneAndAMissingOneHasNoText) {
  EXPECT_EQ(ZtPortalDef::stringFromDate(kNoon), "2026-11-21T12:00:00.123UTC");
  EXPECT_EQ(ZtPortalDef::stringFromDate(kEpoch), "1970-01-01T00:00:00.000UTC");
  EXPECT_TRUE(ZtPortalDef::stringFromDate(ZtDate()).isNull());
}

TEST_F(ZtPortalDefTest, NoonInGreenwichIsOneOClockInACentralEuropeanWinter) {
  const ScopedEnvironment zone("TZ", "Europe/Berlin");
  {
    const ScopedEnvironment locale("LC_ALL", "de_DE.UTF-8");
    EXPECT_EQ(ZtPortalDef::stringFromDate(kNoon), "2026-11-21T13:00:00.123MEZ");
  }
  const ScopedEnvironment locale("LC_ALL", "en_US.UTF-8");
  EXPECT_EQ(ZtPortalDef::stringFromDate(kNoon), "2026-11-21T13:00:00.123GMT+1");
}

TEST_F(ZtPortalDefTest, TypesOfStepsHaveTheirNumbersAndTextsAndOthersTheEmptyText) {
  const struct {
    std::uint64_t number;
    const char* stepType;
    const char* diagnoseType;
  } rows[] = {{ZtPortalStepEnter, "ENTER", "MANUAL"},
              {ZtPortalStepLeave, "LEAVE", "AUTOMATIC"},
              {ZtPortalStepExit, "EXIT", "RIS"},
              {ZtPortalStepInfo, "INFO", ""},
              {ZtPortalStepError, "ERROR", ""},
              {5, "", ""},
              {255, "", ""},
              {(std::uint64_t{1} << 32U) + 1, "", ""},
              {std::numeric_limits<std::uint64_t>::max(), "", ""}};
  for (const auto& row : rows) {
    EXPECT_EQ(ZtPortalDef::stepTypeToString(row.number), row.stepType) << row.number;
    EXPECT_EQ(ZtPortalDef::diagnoseTypeToString(row.number), row.diagnoseType) << row.number;
  }
  EXPECT_EQ(std::uint64_t{ZtPortalStepEnter}, 0U);
  EXPECT_EQ(std::uint64_t{ZtPortalStepError}, 4U);
  EXPECT_EQ(std::uint64_t{ZtPortalDiagnoseManual}, 0U);
  EXPECT_EQ(std::uint64_t{ZtPortalDiagnoseRIS}, 2U);
}

}  // namespace
}  // namespace zt::test
