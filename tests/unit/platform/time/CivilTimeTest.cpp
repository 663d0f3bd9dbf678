// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <ctime>
#include <random>
#include <string>

#include "ztportal/platform/time/CivilTime.h"

namespace {

std::string civilTime(std::int64_t milliseconds) {
  std::string text;
  zt::appendCivilTime(text, std::chrono::milliseconds(milliseconds));
  return text;
}

TEST(CivilTimeTest, AlwaysWritesTheSameNumberOfDigits) {
  struct Row {
    std::int64_t milliseconds;
    const char* text;
  };
  const Row rows[] = {
      {0, "1970-01-01T00:00:00.000"},
      {-1, "1969-12-31T23:59:59.999"},
      {1'795'262'400'123, "2026-11-21T12:00:00.123"},
      {1'582'979'696'078, "2020-02-29T12:34:56.078"},
      {951'868'799'999, "2000-02-29T23:59:59.999"},
      {-2'203'891'200'000, "1900-03-01T00:00:00.000"},
      {-62'135'596'800'000, "0001-01-01T00:00:00.000"},
      {253'402'300'799'999, "9999-12-31T23:59:59.999"},
  };
  for (const Row& row : rows) EXPECT_EQ(civilTime(row.milliseconds), row.text);
}

TEST(CivilTimeTest, AgreesWithTheCLibraryOnEveryDate) {
  std::mt19937_64 random(20261121);
  std::uniform_int_distribution<std::int64_t> seconds(-30'610'224'000, 253'402'300'799);
  for (int i = 0; i < 20'000; ++i) {
    const std::time_t time = seconds(random);  // from the year 1000, before which %Y is shorter
    std::tm utc{};
    gmtime_r(&time, &utc);
    char expected[32];
    std::strftime(expected, sizeof(expected), "%Y-%m-%dT%H:%M:%S.000", &utc);
    ASSERT_EQ(civilTime(time * 1000), expected) << time;
  }
}

TEST(CivilTimeTest, AppendsToTheText) {
  std::string text = "at ";
  zt::appendCivilTime(text, std::chrono::milliseconds(0));
  EXPECT_EQ(text, "at 1970-01-01T00:00:00.000");
}

}  // namespace
