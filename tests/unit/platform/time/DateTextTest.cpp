// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <ctime>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/unit/platform/time/DateTextEnvironment.h"
#include "ztportal/platform/time/DateText.h"

namespace {

using zt::test::kDay;
using zt::test::kWinterNoon;
using zt::test::ScopedEnvironment;
using zt::test::timestamp;
using zt::test::UserIn;

constexpr std::int64_t kSummerNoon = 1'784'635'200'000;  // 2026-07-21T12:00:00.000Z

TEST(DateTextTest, WritesTheZonesHourAndTheLocalesZoneName) {
  struct Row {
    const char* zone;
    const char* locale;
    std::int64_t milliseconds;
    const char* text;
  };
  const Row rows[] = {
      {"Europe/Berlin", "de_DE.UTF-8", kWinterNoon, "2026-11-21T13:00:00.000MEZ"},
      {"Europe/Berlin", "de_DE.UTF-8", kSummerNoon, "2026-07-21T14:00:00.000MESZ"},
      {"Europe/Berlin", "de_DE.UTF-8@euro", kWinterNoon, "2026-11-21T13:00:00.000MEZ"},
      {"Europe/Berlin", "en_GB.UTF-8", kWinterNoon, "2026-11-21T13:00:00.000CET"},
      {"Europe/Berlin", "en_GB.UTF-8", kSummerNoon, "2026-07-21T14:00:00.000CEST"},
      {"Europe/Berlin", "en_US.UTF-8", kWinterNoon, "2026-11-21T13:00:00.000GMT+1"},
      {"Europe/Berlin", "C", kWinterNoon, "2026-11-21T13:00:00.000GMT+1"},
      {"Europe/Berlin", "C.UTF-8", kWinterNoon, "2026-11-21T13:00:00.000GMT+1"},
      {"Europe/Berlin", "", kWinterNoon, "2026-11-21T13:00:00.000GMT+1"},
      {"Europe/Berlin", "no locale at all", kWinterNoon, "2026-11-21T13:00:00.000GMT+1"},
      {"America/New_York", "en_US.UTF-8", kWinterNoon, "2026-11-21T07:00:00.000EST"},
      {"America/New_York", "en_US.UTF-8", kSummerNoon, "2026-07-21T08:00:00.000EDT"},
      {"Asia/Kolkata", "en_US.UTF-8", kWinterNoon, "2026-11-21T17:30:00.000GMT+5:30"},
      {"Asia/Kathmandu", "en_US.UTF-8", kWinterNoon, "2026-11-21T17:45:00.000GMT+5:45"},
      {"Pacific/Apia", "en_US.UTF-8", 1'325'239'199'999, "2011-12-29T23:59:59.999GMT-10"},
      {"Pacific/Apia", "en_US.UTF-8", 1'325'239'200'000, "2011-12-31T00:00:00.000GMT+14"},
      {"UTC", "C", kWinterNoon, "2026-11-21T12:00:00.000UTC"},
      {"UTC", "C", 0, "1970-01-01T00:00:00.000UTC"},
      {"UTC", "C", -1, "1969-12-31T23:59:59.999UTC"},
      {"UTC", "C", 1'582'979'696'789, "2020-02-29T12:34:56.789UTC"},
      {"UTC", "C", 253'402'300'799'999, "9999-12-31T23:59:59.999UTC"},
      {"UTC", "C", 253'402'300'800'000, "10000-01-01T00:00:00.000UTC"},
      {"UTC", "C", -12'219'292'800'001, "1582-10-04T23:59:59.999UTC"},
      {"UTC", "C", -12'219'292'800'000, "1582-10-15T00:00:00.000UTC"},
      {"UTC", "de_DE@calendar=buddhist", kWinterNoon, "2569-11-21T12:00:00.000UTC"},
      {"UTC", "fa_IR", kWinterNoon, "۱۴۰۵-۰۸-۳۰T۱۲:۰۰:۰۰.۰۰۰UTC"},
  };
  for (const Row& row : rows) {
    const UserIn user(row.zone, row.locale);
    EXPECT_EQ(timestamp(row.milliseconds), row.text) << row.zone << " " << row.locale;
  }
}

TEST(DateTextTest, UnderstandsEveryWayToNameAZone) {
  struct Row {
    const char* zone;
    const char* text;
  };
  const Row rows[] = {
      {"", "2026-11-21T12:00:00.000UTC"},
      {":Europe/Berlin", "2026-11-21T13:00:00.000MEZ"},
      {"/usr/share/zoneinfo/Europe/Berlin", "2026-11-21T13:00:00.000MEZ"},
      {":/usr/share/zoneinfo/Europe/Berlin", "2026-11-21T13:00:00.000MEZ"},
      {"posix/Europe/Berlin", "2026-11-21T13:00:00.000MEZ"},
      {":/usr/share/zoneinfo/posix/Europe/Berlin", "2026-11-21T13:00:00.000MEZ"},
      {"Etc/GMT+5", "2026-11-21T07:00:00.000GMT-5"},
      {"EST5EDT", "2026-11-21T07:00:00.000GMT-5"},
      // POSIX values: hours west of Greenwich, and names that the C library uses as they are.
      {"GMT+2", "2026-11-21T10:00:00.000GMT"},
      {"CET-1CEST,M3.5.0,M10.5.0/3", "2026-11-21T13:00:00.000CET"},
      {":CET-1CEST,M3.5.0,M10.5.0/3", "2026-11-21T13:00:00.000CET"},
      {"<+0330>-3:30", "2026-11-21T15:30:00.000+0330"},
      {"Mars/Phobos", "2026-11-21T12:00:00.000Mars"},
      {":", "2026-11-21T12:00:00.000UTC"},
      {"/nowhere/Europe/Berlin", "2026-11-21T12:00:00.000"},
  };
  for (const Row& row : rows) {
    const UserIn user(row.zone, "de_DE.UTF-8");
    EXPECT_EQ(timestamp(kWinterNoon), row.text) << "TZ=" << row.zone;
  }
}

/// The same text, written by the C library.
std::string strftimeText(std::int64_t milliseconds) {
  const auto sinceEpoch = std::chrono::milliseconds(milliseconds);
  const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
  const std::time_t time = seconds.count();
  std::tm local{};
  tzset();
  localtime_r(&time, &local);
  char out[64];
  std::strftime(out, sizeof(out), "%Y-%m-%dT%H:%M:%S.", &local);
  const std::string fraction = std::to_string(1000 + (sinceEpoch - seconds).count());
  return out + fraction.substr(1) + local.tm_zone;
}

TEST(DateTextTest, WritesZonesThatOnlyTheCLibraryKnowsLikeStrftime) {
  const char* const zones[] = {"CET-1CEST,M3.5.0,M10.5.0/3",
                               "<+0330>-3:30",
                               "<-03>3<-02>,M3.5.0/-2,M10.5.0/-1",
                               "EST5EDT4,M3.2.0,M11.1.0",
                               "LHST-10:30LHDT-11,M10.1.0,M4.1.0/2",
                               "XXX-0:00:01",
                               "AAA24",
                               "GMT-14",
                               "IST-2IDT,J88,300/1",
                               "Nowhere/AtAll"};
  std::mt19937_64 random(20261121);
  std::uniform_int_distribution<std::int64_t> moments(-4'000'000'000'000, 8'000'000'000'000);
  for (const char* zone : zones) {
    const UserIn user(zone, "C");
    for (int i = 0; i < 500; ++i) {
      const std::int64_t moment = moments(random);
      ASSERT_EQ(timestamp(moment), strftimeText(moment)) << "TZ=" << zone << " " << moment;
    }
  }
}

TEST(DateTextTest, TheLocalesDigitsStandBeforeTheCLibrarysZoneName) {
  const UserIn user("CET-1", "fa_IR");
  EXPECT_EQ(timestamp(kWinterNoon), "۱۴۰۵-۰۸-۳۰T۱۳:۰۰:۰۰.۰۰۰CET");
}

TEST(DateTextTest, ALocaleThatIcuCannotWriteInIsTheCLocale) {
  for (const std::string& locale :
       {std::string("de_DE@numbers=nonsense"), "de_" + std::string(200, 'X')}) {
    const UserIn user("Europe/Berlin", locale.c_str());
    EXPECT_EQ(timestamp(kWinterNoon), "2026-11-21T13:00:00.000GMT+1") << locale;
    const std::string inThatLocale = zt::shortDateAndTime(ZtDate::fromMilliseconds(kWinterNoon));
    const UserIn posix("Europe/Berlin", "C");
    EXPECT_EQ(inThatLocale, zt::shortDateAndTime(ZtDate::fromMilliseconds(kWinterNoon))) << locale;
  }
}

TEST(DateTextTest, AChangedZoneShowsAtTheNextCall) {
  const UserIn user("Europe/Berlin", "de_DE.UTF-8");
  EXPECT_EQ(timestamp(kWinterNoon), "2026-11-21T13:00:00.000MEZ");
  const std::pair<const char*, const char*> rows[] = {
      {"America/New_York", "2026-11-21T07:00:00.000GMT-5"},
      {"NST3:30", "2026-11-21T08:30:00.000NST"},
      {"NST4:30", "2026-11-21T07:30:00.000NST"},
  };
  for (const auto& [zone, expected] : rows) {
    const ScopedEnvironment changed("TZ", zone);
    EXPECT_EQ(timestamp(kWinterNoon), expected);
  }
  EXPECT_EQ(timestamp(kWinterNoon), "2026-11-21T13:00:00.000MEZ");
}

TEST(DateTextTest, AChangedLocaleShowsAtTheNextCall) {
  const UserIn user("Europe/Berlin", "de_DE.UTF-8");
  EXPECT_EQ(timestamp(kWinterNoon), "2026-11-21T13:00:00.000MEZ");
  {
    const ScopedEnvironment time("LC_TIME", "en_GB.UTF-8");
    EXPECT_EQ(timestamp(kWinterNoon), "2026-11-21T13:00:00.000CET");
    const ScopedEnvironment all("LC_ALL", "en_US.UTF-8");
    EXPECT_EQ(timestamp(kWinterNoon), "2026-11-21T13:00:00.000GMT+1");
  }
  EXPECT_EQ(timestamp(kWinterNoon), "2026-11-21T13:00:00.000MEZ");
}

TEST(DateTextTest, ATextStaysInTheZoneAndTheLocaleInWhichItWasBegun) {
  for (const char* zone : {"Europe/Berlin", "CET-1"}) {
    const UserIn user(zone, "de_DE.UTF-8");
    const std::string before = timestamp(kWinterNoon);
    {
      const zt::Timestamps text;
      const UserIn another("UTC", "en_GB.UTF-8");
      EXPECT_EQ(timestamp(kWinterNoon), before);
      const zt::Timestamps part;
      std::string written;
      part.append(written, ZtDate::fromMilliseconds(kWinterNoon));
      EXPECT_EQ(written, before);
      std::thread([] { EXPECT_EQ(timestamp(kWinterNoon), "2026-11-21T12:00:00.000UTC"); }).join();
    }
    const UserIn another("UTC", "de_DE.UTF-8");
    EXPECT_EQ(timestamp(kWinterNoon), "2026-11-21T12:00:00.000UTC");
  }
}

TEST(DateTextTest, AppendsToWhatIsThere) {
  const UserIn user("UTC", "C");
  std::string text = "<Date>";
  zt::appendTimestamp(text, ZtDate::fromMilliseconds(kWinterNoon));
  zt::appendTimestamp(text, ZtDate::fromMilliseconds(kWinterNoon + 1));
  EXPECT_EQ(text, "<Date>2026-11-21T12:00:00.000UTC2026-11-21T12:00:00.001UTC");
}

TEST(DateTextTest, AMissingDateIsNoText) {
  std::string text = "before";
  zt::appendTimestamp(text, ZtDate());
  EXPECT_EQ(text, "before");
  EXPECT_EQ(zt::shortDateAndTime(ZtDate()), "");
}

TEST(DateTextTest, TheEndsOfTimeHaveATextInAZoneOfTheCLibrary) {
  const UserIn user("CET-1", "de_DE.UTF-8");
  for (const std::int64_t moment :
       {std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min() + 1}) {
    EXPECT_THAT(timestamp(moment), testing::EndsWith("CET")) << moment;
    EXPECT_NE(zt::shortDateAndTime(ZtDate::fromMilliseconds(moment)), "") << moment;
  }
}

TEST(DateTextTest, ThreadsWriteAtOnce) {
  const UserIn user("Europe/Berlin", "de_DE.UTF-8");
  std::vector<std::string> expected;
  for (int day = 0; day < 400; ++day) expected.push_back(timestamp(kWinterNoon + day * kDay));

  std::vector<std::string> written[2];
  std::vector<std::thread> threads;
  for (std::vector<std::string>& texts : written) {
    threads.emplace_back([&texts] {
      for (int day = 0; day < 400; ++day) texts.push_back(timestamp(kWinterNoon + day * kDay));
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(written[0], expected);
  EXPECT_EQ(written[1], expected);
}

/// Writes a timestamp in its destructor.
struct LateWriter {
  std::string* text = nullptr;
  ~LateWriter() {
    if (text != nullptr) *text = timestamp(kWinterNoon);
  }
};

TEST(DateTextTest, AnObjectThatOutlivesTheThreadsFormatterCanWriteATimestamp) {
  const UserIn user("Europe/Berlin", "de_DE.UTF-8");
  std::string late;
  std::thread([&late] {
    // Created before the formatter, so it is destroyed after it.
    thread_local LateWriter writer;
    writer.text = &late;
    EXPECT_EQ(timestamp(kWinterNoon), "2026-11-21T13:00:00.000MEZ");
  }).join();
  EXPECT_EQ(late, "2026-11-21T13:00:00.000MEZ");
}

TEST(DateTextTest, WritesAShortDateAndTime) {
  struct Row {
    const char* zone;
    const char* locale;
    const char* text;
  };
  const Row rows[] = {
      {"Europe/Berlin", "de_DE.UTF-8", "21.11.26, 13:00"},
      {"America/New_York", "de_DE.UTF-8", "21.11.26, 07:00"},
      {"Europe/London", "en_GB.UTF-8", "21/11/2026, 12:00"},
      {"", "de_DE.UTF-8", "21.11.26, 12:00"},
      {"NST3:30", "de_DE.UTF-8", "21.11.26, 08:30"},
      {"GMT+2", "de_DE.UTF-8", "21.11.26, 10:00"},
  };
  for (const Row& row : rows) {
    const UserIn user(row.zone, row.locale);
    EXPECT_EQ(zt::shortDateAndTime(ZtDate::fromMilliseconds(kWinterNoon)), row.text)
        << row.zone << " " << row.locale;
  }
}

}  // namespace
