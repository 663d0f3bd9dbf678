#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalDef.h"

namespace {

using zt::test::kEpoch;
using zt::test::kNoon;
using zt::test::ScopedEnvironment;

class ZtPortalDefTest : public zt::test::PoolsFixture {};

TEST_F(ZtPortalDefTest, AnAttributeIsABlankAndTheTextWithSoapAndEmptyWithout) {
  EXPECT_EQ(ZtPortalDef::appendSOAPParams(true, "xsi:type=\"com_Field\""),
            " xsi:type=\"com_Field\"");
  EXPECT_EQ(ZtPortalDef::appendSOAPParams(true, ""), " ");
  EXPECT_EQ(ZtPortalDef::appendSOAPParams(true, nullptr), " (null)");
  EXPECT_EQ(ZtPortalDef::appendSOAPParams(false, "xsi:type=\"com_Field\""), "");
  EXPECT_EQ(ZtPortalDef::appendSOAPParams(false, ""), "");
  EXPECT_FALSE(ZtPortalDef::appendSOAPParams(false, nullptr).isNull());
}

TEST_F(ZtPortalDefTest, AMissingDateHasNoText) {
  EXPECT_TRUE(ZtPortalDef::stringFromDate(ZtDate()).isNull());
}

TEST_F(ZtPortalDefTest, ADateIsWrittenWithMillisecondsAndZone) {
  struct Row {
    std::int64_t milliseconds;
    const char* expected;
  };
  const Row table[] = {
      {1795262400123, "2026-11-21T12:00:00.123UTC"},
      {1795262400000, "2026-11-21T12:00:00.000UTC"},
      {0, "1970-01-01T00:00:00.000UTC"},
      {-1, "1969-12-31T23:59:59.999UTC"},
      {7, "1970-01-01T00:00:00.007UTC"},
      {951782399999, "2000-02-28T23:59:59.999UTC"},
      {951782400000, "2000-02-29T00:00:00.000UTC"},
      {253402300799000, "9999-12-31T23:59:59.000UTC"},
  };
  for (const Row& row : table) {
    EXPECT_EQ(ZtPortalDef::stringFromDate(ZtDate::fromMilliseconds(row.milliseconds)), row.expected)
        << row.milliseconds;
  }
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

TEST_F(ZtPortalDefTest, TheZoneIsAskedAfreshForEveryDate) {
  EXPECT_EQ(ZtPortalDef::stringFromDate(kEpoch), "1970-01-01T00:00:00.000UTC");
  {
    const ScopedEnvironment zone("TZ", "Europe/Berlin");
    const ScopedEnvironment locale("LC_ALL", "de_DE.UTF-8");
    EXPECT_EQ(ZtPortalDef::stringFromDate(kEpoch), "1970-01-01T01:00:00.000MEZ");
  }
  EXPECT_EQ(ZtPortalDef::stringFromDate(kEpoch), "1970-01-01T00:00:00.000UTC");
}

TEST_F(ZtPortalDefTest, ManyThreadsMayWriteTextsOfTheirOwn) {
  const ZtString name = "SHARED";
  std::vector<std::string> texts(4);
  std::vector<std::thread> threads;
  threads.reserve(texts.size());
  for (std::string& text : texts) {
    threads.emplace_back([&text, &name] {
      for (int round = 0; round < 50; ++round) {
        ZtPortalDef::addStringFieldToXml("", text, name, ZtPortalDef::stringFromDate(kNoon), false);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::string expected;
  for (int round = 0; round < 50; ++round) {
    expected +=
        "<Field FieldType=\"string\">\r\n  <Name>SHARED</Name>\r\n"
        "  <Value>2026-11-21T12:00:00.123UTC</Value>\r\n</Field>\r\n";
  }
  for (const std::string& text : texts) EXPECT_EQ(text, expected);
}

TEST_F(ZtPortalDefTest, TypesOfStepsHaveTheirNumbersAndTextsAndOthersTheEmptyText) {
  struct Row {
    std::uint64_t number;
    const char* stepType;
    const char* diagnoseType;
  };
  const Row table[] = {{ZtPortalStepEnter, "ENTER", "MANUAL"},
                       {ZtPortalStepLeave, "LEAVE", "AUTOMATIC"},
                       {ZtPortalStepExit, "EXIT", "RIS"},
                       {ZtPortalStepInfo, "INFO", ""},
                       {ZtPortalStepError, "ERROR", ""},
                       {5, "", ""},
                       {255, "", ""},
                       {(std::uint64_t{1} << 32U) + 1, "", ""},
                       {std::numeric_limits<std::uint64_t>::max(), "", ""}};
  for (const Row& row : table) {
    EXPECT_EQ(ZtPortalDef::stepTypeToString(row.number), row.stepType) << row.number;
    EXPECT_EQ(ZtPortalDef::diagnoseTypeToString(row.number), row.diagnoseType) << row.number;
  }
  EXPECT_EQ(std::uint64_t{ZtPortalStepEnter}, 0U);
  EXPECT_EQ(std::uint64_t{ZtPortalStepError}, 4U);
  EXPECT_EQ(std::uint64_t{ZtPortalDiagnoseManual}, 0U);
  EXPECT_EQ(std::uint64_t{ZtPortalDiagnoseRIS}, 2U);
}

}  // namespace
