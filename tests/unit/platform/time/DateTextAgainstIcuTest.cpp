// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <unicode/basictz.h>
#include <unicode/datefmt.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/tztrans.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/unit/platform/time/DateTextEnvironment.h"
#include "ztportal/platform/time/DateText.h"

// Compares with ICU's own formatter, which is created anew for each date.

namespace {

using zt::test::kDay;
using zt::test::timestamp;
using zt::test::UserIn;

constexpr std::int64_t kYear = 365 * kDay + kDay / 4;

constexpr const char* kZones[] = {
    "Europe/Berlin",
    "America/New_York",
    "Asia/Kolkata",
    "Asia/Kathmandu",
    "Asia/Tehran",
    "Australia/Lord_Howe",
    "America/St_Johns",
    "Africa/Casablanca",
    "Pacific/Apia",
    "Europe/Istanbul",
    "Africa/Monrovia",
    "Asia/Pyongyang",
    "Asia/Gaza",
    "Antarctica/Troll",
    "America/Caracas",
    "Pacific/Kiritimati",
    "Europe/Dublin",
    "Europe/Moscow",
    "America/Sao_Paulo",
    "America/Argentina/San_Luis",
    "Pacific/Chatham",
    "America/Anchorage",
    "UTC",
    "Etc/GMT+5",
    "EST5EDT",
};

struct LocaleRow {
  const char* posix;
  const char* icu;
};

constexpr LocaleRow kIcuLocales[] = {
    {"en_US.UTF-8", "en_US"},
    {"de_DE.UTF-8", "de_DE"},
    {"en_GB.UTF-8", "en_GB"},
    {"fr_FR", "fr_FR"},
    {"ja_JP", "ja_JP"},
    {"ar_EG", "ar_EG"},
    {"th_TH", "th_TH"},
    {"fa_IR", "fa_IR"},
    {"C", "en_US_POSIX"},
    {"hi_IN", "hi_IN"},
    {"sr_RS@latin", "sr_Latn_RS"},
    {"ru_RU.KOI8-R", "ru_RU"},
};

std::unique_ptr<icu::TimeZone> zoneNamed(const char* name) {
  return std::unique_ptr<icu::TimeZone>(icu::TimeZone::createTimeZone(name));
}

std::string formatted(icu::DateFormat& format, const icu::TimeZone& zone, std::int64_t moment) {
  format.setTimeZone(zone);
  icu::UnicodeString text;
  std::string bytes;
  return format.format(static_cast<UDate>(moment), text).toUTF8String(bytes);
}

std::string icuTimestamp(const char* locale, const icu::TimeZone& zone, std::int64_t moment) {
  UErrorCode status = U_ZERO_ERROR;
  icu::SimpleDateFormat format(u"yyyy-MM-dd'T'HH:mm:ss.SSSz", icu::Locale(locale), status);
  return formatted(format, zone, moment);
}

std::int64_t startOfYear(int year) { return (year - 1970) * kYear; }

/// The times around the year `year` at which the zone's offset or name changes, and the times just
/// before and after them.
std::vector<std::int64_t> momentsAroundChanges(const icu::TimeZone& zone, int year) {
  const auto& basic = dynamic_cast<const icu::BasicTimeZone&>(zone);
  std::vector<std::int64_t> moments;
  auto date = static_cast<UDate>(startOfYear(year));
  icu::TimeZoneTransition change;
  while (basic.getNextTransition(date, false, change) &&
         change.getTime() < static_cast<UDate>(startOfYear(year + 1))) {
    date = change.getTime();
    const auto moment = static_cast<std::int64_t>(date);
    for (const std::int64_t distance : {-kDay, -1L, 0L, 1L, kDay}) {
      moments.push_back(moment + distance);
    }
  }
  return moments;
}

/// Random dates of all ages; the seed selects them. Each is followed by others in the same weeks.
std::vector<std::int64_t> momentsOfAllAges(unsigned seed) {
  std::vector<std::int64_t> moments{0,
                                    -1,
                                    1,
                                    999,
                                    -999,
                                    std::numeric_limits<std::int64_t>::max(),
                                    std::numeric_limits<std::int64_t>::min() + 1};
  std::mt19937_64 random(seed);
  std::uniform_int_distribution<std::int64_t> nearby(-20 * kDay, 20 * kDay);
  const auto add = [&](int firstYear, int lastYear, int count) {
    std::uniform_int_distribution<std::int64_t> anywhere(startOfYear(firstYear),
                                                         startOfYear(lastYear));
    for (int i = 0; i < count; ++i) {
      const std::int64_t moment = anywhere(random);
      moments.insert(moments.end(), {moment, moment + nearby(random), moment + nearby(random)});
    }
  };
  add(-5000, 1580, 2);
  add(1580, 1584, 2);
  add(1584, 1900, 2);
  add(1900, 2040, 8);
  add(2040, 9990, 2);
  add(9998, 10003, 2);
  add(10003, 300'000, 1);
  return moments;
}

TEST(DateTextTest, WritesWhatIcuWritesInEveryZoneAndLocale) {
  unsigned seed = 20261121;
  for (const char* zoneName : kZones) {
    const std::unique_ptr<icu::TimeZone> zone = zoneNamed(zoneName);
    for (const LocaleRow& locale : kIcuLocales) {
      const UserIn user(zoneName, locale.posix);
      for (const std::int64_t moment : momentsOfAllAges(++seed)) {
        ASSERT_EQ(timestamp(moment), icuTimestamp(locale.icu, *zone, moment))
            << zoneName << " " << locale.posix << " " << moment;
      }
    }
  }
}

TEST(DateTextTest, WritesWhatIcuWritesAroundEveryChangeOfTheOffset) {
  for (const char* zoneName : kZones) {
    const std::unique_ptr<icu::TimeZone> zone = zoneNamed(zoneName);
    std::vector<std::int64_t> moments;
    for (const int year : {1945, 1972, 1980, 2011, 2018, 2026, 2040}) {
      for (const std::int64_t moment : momentsAroundChanges(*zone, year)) {
        moments.push_back(moment);
      }
    }
    for (const LocaleRow& locale : kIcuLocales) {
      const UserIn user(zoneName, locale.posix);
      for (const std::int64_t moment : moments) {
        ASSERT_EQ(timestamp(moment), icuTimestamp(locale.icu, *zone, moment))
            << zoneName << " " << locale.posix << " " << moment;
      }
    }
  }
}

// Egypt had winter time for the four weeks of Ramadan, so a window around them has the same offset
// at both ends and another one in between.
TEST(DateTextTest, DetectsAnOffsetThatLastsOnlyFourWeeks) {
  const std::unique_ptr<icu::TimeZone> cairo = zoneNamed("Africa/Cairo");
  std::vector<std::int64_t> moments;
  for (std::int64_t day = 0; day < 100; ++day) moments.push_back(1'280'000'000'000 + day * kDay);
  for (int direction = 0; direction < 2; ++direction) {
    {
      const UserIn elsewhere("UTC", "en_US.UTF-8");
      timestamp(0);  // so that nothing is kept of the dates written before
    }
    const UserIn user("Africa/Cairo", "en_US.UTF-8");
    for (const std::int64_t moment : moments) {
      ASSERT_EQ(timestamp(moment), icuTimestamp("en_US", *cairo, moment)) << moment;
    }
    std::reverse(moments.begin(), moments.end());
  }
}

TEST(DateTextTest, WritesTheMachinesZoneWhereNoneIsSet) {
  const UserIn user(nullptr, "en_GB.UTF-8");
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
  for (const std::int64_t moment : momentsOfAllAges(20261121)) {
    ASSERT_EQ(timestamp(moment), icuTimestamp("en_GB", *zone, moment)) << moment;
  }
}

TEST(DateTextTest, WritesTheShortDateAndTimeThatIcuWrites) {
  unsigned seed = 20261121;
  for (const char* zoneName : {"Europe/Berlin", "America/St_Johns", "Pacific/Apia"}) {
    const std::unique_ptr<icu::TimeZone> zone = zoneNamed(zoneName);
    for (const LocaleRow& locale : kIcuLocales) {
      const UserIn user(zoneName, locale.posix);
      for (const std::int64_t moment : momentsOfAllAges(++seed)) {
        const std::unique_ptr<icu::DateFormat> format(icu::DateFormat::createDateTimeInstance(
            icu::DateFormat::kShort, icu::DateFormat::kShort, icu::Locale(locale.icu)));
        ASSERT_EQ(zt::shortDateAndTime(ZtDate::fromMilliseconds(moment)),
                  formatted(*format, *zone, moment))
            << zoneName << " " << locale.posix << " " << moment;
      }
    }
  }
}

}  // namespace
