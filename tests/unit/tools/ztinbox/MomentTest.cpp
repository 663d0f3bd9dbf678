#include <gtest/gtest.h>

#include <string>

#include "tools/ztinbox/api/Moment.h"

namespace {

using std::chrono::milliseconds;
using zt::inbox::Moment;
using zt::inbox::parseMoment;

constexpr std::int64_t kNoon = 1'795'262'400'000;  // 2026-11-21T12:00:00Z

TEST(MomentTest, WritesTimesInUtc) {
  EXPECT_EQ(zt::inbox::momentText(Moment(milliseconds(kNoon + 7))), "2026-11-21T12:00:00.007Z");
  EXPECT_EQ(zt::inbox::momentText(Moment(milliseconds(-1))), "1969-12-31T23:59:59.999Z");
}

TEST(MomentTest, ReadsDatesAndTimes) {
  const struct {
    const char* text;
    std::int64_t time;
  } rows[] = {
      {"2026-11-21", kNoon - 12 * 3'600'000},
      {"1970-01-01", 0},
      {"2028-02-29", 1'835'395'200'000},
      {"2026-11-21T12:00:00Z", kNoon},
      {"2026-11-21T12:00:00.123Z", kNoon + 123},
      {"2026-11-21T12:00:00.1239z", kNoon + 123},
      {"2026-11-21T13:00:00.5+01:00", kNoon + 500},
      {"2026-11-21T06:30:00-05:30", kNoon},
      {"2026-11-21T11:59:60Z", kNoon},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(parseMoment(row.text), Moment(milliseconds(row.time))) << row.text;
  }
}

TEST(MomentTest, ReadsNothingElse) {
  for (const char* text : {"",
                           "2026",
                           "2026-11",
                           "2026-11-31",
                           "2026-02-29",
                           "2026-13-01",
                           "0000-01-01",
                           "26-11-21",
                           "2026-11-21 ",
                           "2026-11-21T",
                           "2026-11-21T12:00:00",
                           "2026-11-21T12:00Z",
                           "2026-11-21 12:00:00Z",
                           "2026-11-21T24:00:00Z",
                           "2026-11-21T12:60:00Z",
                           "2026-11-21T12:00:61Z",
                           "2026-11-21T12:00:00.Z",
                           "2026-11-21T12:00:00+0100",
                           "2026-11-21T12:00:00+24:00",
                           "2026-11-21T12:00:00ZZ",
                           "yesterday",
                           "1795262400",
                           "+026-11-21"}) {
    EXPECT_FALSE(parseMoment(text)) << text;
  }
}

TEST(MomentTest, ReadsTheTimesOfReports) {
  const auto moment = zt::inbox::parseReportMoment("2026-11-21T12:00:00.250GMT+1");
  ASSERT_TRUE(moment);
  EXPECT_EQ(moment->time, milliseconds(kNoon + 250));
  EXPECT_EQ(moment->zone, "GMT+1");
  for (const char* text : {"", "(null)", "2026-11-21", "2026-11-21T12:00:00UTC", "2026-02-30T"}) {
    EXPECT_FALSE(zt::inbox::parseReportMoment(text)) << text;
  }
}

}  // namespace
