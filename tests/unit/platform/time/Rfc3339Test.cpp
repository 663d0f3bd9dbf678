// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "ztportal/platform/time/Rfc3339.h"

namespace {

using std::chrono::milliseconds;
using zt::formatRfc3339;
using zt::parseRfc3339;

TEST(Rfc3339Test, ReadsTimestampsToTheMillisecond) {
  constexpr std::int64_t kNoon = 1'795'262'400'000;
  constexpr std::int64_t kHour = 3'600'000;
  const struct {
    const char* text;
    std::int64_t milliseconds;
  } rows[] = {
      {"2026-11-21T12:00:00Z", kNoon},
      {"2026-11-21T12:00:00.1Z", kNoon + 100},
      {"2026-11-21T12:00:00.12Z", kNoon + 120},
      {"2026-11-21T12:00:00.123Z", kNoon + 123},
      {"2026-11-21T12:00:00.1239Z", kNoon + 123},
      {"2026-11-21T12:00:00.12399Z", kNoon + 123},
      {"2026-11-21T12:00:00.123999Z", kNoon + 123},
      {"2026-11-21T12:00:00.1239999Z", kNoon + 123},
      {"2026-11-21T12:00:00.12399999Z", kNoon + 123},
      {"2026-11-21T12:00:00.123999999Z", kNoon + 123},
      {"2026-11-21T12:00:00.000999999Z", kNoon},
      {"2026-11-21T12:00:00.001Z", kNoon + 1},
      {"2026-11-21T12:00:00.9Z", kNoon + 900},
      {"2026-11-21T12:00:00+00:00", kNoon},
      {"2026-11-21T12:00:00-00:00", kNoon},
      {"2026-11-21T14:00:00+02:00", kNoon},
      {"2026-11-21T04:00:00-08:00", kNoon},
      {"2026-11-21T17:30:00.250+05:30", kNoon + 250},
      {"2026-11-22T11:59:00+23:59", kNoon},
      {"2026-11-20T12:01:00-23:59", kNoon},
      {"2026-11-22T00:30:00+14:00", kNoon - kHour * 3 / 2},
      {"2024-02-29T00:00:00Z", 1'709'164'800'000},
      {"2000-02-29T23:59:59.999Z", 951'868'799'999},
      {"0000-01-01T00:00:00Z", -62'167'219'200'000},
      {"0000-02-29T00:00:00Z", -62'167'219'200'000 + 59 * 24 * kHour},
      {"9999-12-31T23:59:59.999Z", 253'402'300'799'999},
      {"1970-01-01T00:00:00Z", 0},
      {"1969-12-31T23:59:59Z", -1'000},
      {"1969-12-31T23:59:59.999Z", -1},
      {"1969-12-31T23:59:59.001999Z", -999},
      {"2026-11-21T12:00:00z", kNoon},
      {"2026-11-21T11:59:60Z", kNoon},
      {"2026-11-21T12:00:00.1234567890123Z", kNoon + 123},
  };
  for (const auto& row : rows) {
    const auto parsed = parseRfc3339(row.text);
    ASSERT_TRUE(parsed) << row.text;
    EXPECT_EQ(parsed->time.count(), row.milliseconds) << row.text;
  }
}

TEST(Rfc3339Test, TellsLeapSecondsAndTheDigitsOfAFraction) {
  EXPECT_FALSE(parseRfc3339("2026-11-21T12:00:59Z")->isLeapSecond);
  EXPECT_TRUE(parseRfc3339("2026-11-21T12:00:60Z")->isLeapSecond);
  EXPECT_EQ(parseRfc3339("2026-11-21T12:00:00Z")->fractionDigits, 0U);
  EXPECT_EQ(parseRfc3339("2026-11-21T12:00:00.1234567890Z")->fractionDigits, 10U);
}

TEST(Rfc3339Test, RefusesEveryOtherText) {
  using namespace std::string_view_literals;
  const std::string_view texts[] = {
      "",
      " ",
      "now",
      "2026",
      "2026-11-21",
      "2026-11-21T12:00:00",
      "2026-11-21T12:00:00.123",
      "2026-11-21T12:00Z",
      "2026-11-21t12:00:00Z",
      "2026-11-21 12:00:00Z",
      " 2026-11-21T12:00:00Z",
      "2026-11-21T12:00:00Z ",
      "2026-11-21T12:00:00 Z",
      "2026-11-21T12:00:00Zulu",
      "2026-11-21T12:00:00ZZ",
      "2026-11-21T12:00:00Z\0"sv,
      "2026-11-21T12:00:00.Z",
      "2026-11-21T12:00:00.+01:00",
      "2026-11-21T12:00:00,123Z",
      "2026-11-21T12:00:00.12 Z",
      "2026-11-21T12:00:00+0200",
      "2026-11-21T12:00:00+02",
      "2026-11-21T12:00:00+2:00",
      "2026-11-21T12:00:00+24:00",
      "2026-11-21T12:00:00-24:00",
      "2026-11-21T12:00:00+02:60",
      "2026-11-21T12:00:00+02:00Z",
      "2026-11-21T12:00:00+-2:00",
      "2026-11-21T12:00:00UTC",
      "2026-11-21T24:00:00Z",
      "2026-11-21T12:60:00Z",
      "2026-00-21T12:00:00Z",
      "2026-11-21T12:00:61Z",
      "2026-13-21T12:00:00Z",
      "2026-11-00T12:00:00Z",
      "2026-11-31T12:00:00Z",
      "2026-12-32T12:00:00Z",
      "2023-02-29T12:00:00Z",
      "1900-02-29T12:00:00Z",
      "2026-1-21T12:00:00Z",
      "2026-11-1T12:00:00Z",
      "2026-11-21T1:00:00Z",
      "26-11-21T12:00:00Z",
      "02026-11-21T12:00:00Z",
      "-2026-11-21T12:00:00Z",
      "+2026-11-21T12:00:00Z",
      "20261121T120000Z",
      "2026-11-2xT12:00:00Z",
      "2026-11-21T12:0x:00Z",
      "\xd9\xa2\xd9\xa0\xd9\xa2\xd9\xa6-11-21T12:00:00Z",  // digits, but not those of ASCII
  };
  for (const std::string_view text : texts) EXPECT_FALSE(parseRfc3339(text)) << '"' << text << '"';
}

TEST(Rfc3339Test, ReadsATimeWithATextAfterIt) {
  const auto read = zt::readRfc3339Time("2026-11-21T12:00:00.25GMT+1");
  ASSERT_TRUE(read);
  EXPECT_EQ(read->time, milliseconds(1'795'262'400'250));
  EXPECT_EQ(read->rest, "GMT+1");
  for (const char* text : {"", "(null)", "2026-11-21", "2026-11-21T12:00:00.UTC", "2026-02-30T"}) {
    EXPECT_FALSE(zt::readRfc3339Time(text)) << text;
  }
}

TEST(Rfc3339Test, WritesATimestampWithAnOffset) {
  const struct {
    std::int64_t milliseconds;
    int offset;  // minutes
    const char* text;
  } rows[] = {
      {0, 0, "1970-01-01T00:00:00.000Z"},
      {-1, 0, "1969-12-31T23:59:59.999Z"},
      {1795262400123, 0, "2026-11-21T12:00:00.123Z"},
      {1795262400123, 60, "2026-11-21T13:00:00.123+01:00"},
      {1795262400123, -150, "2026-11-21T09:30:00.123-02:30"},
      {1795262400123, 1439, "2026-11-22T11:59:00.123+23:59"},
      {1795262400123, 1440, "2026-11-21T12:00:00.123Z"},
      {-62167219200000, 0, "0000-01-01T00:00:00.000Z"},
      {-62167219200000, -60, "0000-01-01T23:59:00.000+23:59"},
      {-62167219260000, 0, "0000-01-01T23:58:00.000+23:59"},
      {253402300799999, 0, "9999-12-31T23:59:59.999Z"},
      {253402300800000, 0, "9999-12-31T00:01:00.000-23:59"},
  };
  for (const auto& row : rows) {
    const milliseconds time(row.milliseconds);
    EXPECT_EQ(formatRfc3339(time, std::chrono::minutes(row.offset)), row.text);
    EXPECT_EQ(parseRfc3339(row.text)->time, time) << row.text;
  }
  EXPECT_EQ(formatRfc3339(milliseconds(-1)), "1969-12-31T23:59:59.999Z");
}

}  // namespace
