// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>

#include "tools/ztinbox/Fault.h"
#include "tools/ztinbox/api/QueryParameters.h"

namespace {

using std::chrono::milliseconds;
using zt::inbox::InputFault;
using zt::inbox::QueryParameters;
using zt::inbox::Timestamp;

constexpr std::int64_t kNoon = 1'795'262'400'000;  // 2026-11-21T12:00:00Z

std::optional<Timestamp> timestampOf(const std::string& text) {
  const std::string none;
  const std::multimap<std::string, std::string> parameters{{"since", text}};
  return QueryParameters({none, {}, {}, {}, parameters, none}, {"since"}).timestamp("since");
}

TEST(QueryParametersTest, ReadsDatesAndTimestamps) {
  const struct {
    const char* text;
    std::int64_t time;
  } rows[] = {
      {"2026-11-21", kNoon - 12 * 3'600'000},
      {"1970-01-01", 0},
      {"2028-02-29", 1'835'395'200'000},
      {"2026-11-21T12:00:00.1239z", kNoon + 123},
      {"2026-11-21T13:00:00.5+01:00", kNoon + 500},
      {"2026-11-21T11:59:60Z", kNoon},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(timestampOf(row.text), Timestamp(milliseconds(row.time))) << row.text;
  }
}

TEST(QueryParametersTest, RefusesOtherDates) {
  for (const char* text :
       {"", "2026", "2026-11-31", "0000-01-01", "0000-01-01T00:00:00Z", "2026-11-21 ",
        "2026-11-21T", "2026-11-21T12:00:00", "yesterday", "1795262400"}) {
    EXPECT_THROW(timestampOf(text), InputFault) << text;
  }
}

}  // namespace
