// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/Printing.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/unit/tools/ztreport/DescriptionGenerator.h"
#include "tools/ztreport/description/DateSearch.h"
#include "ztportal/portal/description/DescribedDate.h"
#include "ztportal/ztportal.h"

namespace {

using zt::dateOf;
using zt::test::ScopedEnvironment;
using zt::tools::DateSearch;

using Found = std::optional<std::string>;

TEST(DateSearchTest, FindsTheTimestampOfADate) {
  const struct {
    const char* zone;
    const char* locale;
    const char* text;
    Found timestamp;
  } rows[] = {
      {"UTC", "C", "2026-11-21T12:00:00.123UTC", "2026-11-21T12:00:00.123Z"},
      {"UTC", "C", "1969-12-31T23:59:59.999UTC", "1969-12-31T23:59:59.999Z"},
      {"Europe/Berlin", "C", "2026-11-21T13:00:00.000GMT+1", "2026-11-21T13:00:00.000+01:00"},
      {"Europe/Berlin", "de_DE.UTF-8", "2026-07-01T13:00:00.000MESZ",
       "2026-07-01T13:00:00.000+02:00"},
      {"Asia/Kolkata", "en_IN.UTF-8", "2026-07-01T13:00:00.000IST",
       "2026-07-01T13:00:00.000+05:30"},
      {"America/St_Johns", "C", "2026-07-01T13:00:00.000GMT-2:30", "2026-07-01T13:00:00.000-02:30"},
      {"CET-1CEST,M3.5.0,M10.5.0/3", "C", "2026-07-01T13:00:00.000CEST",
       "2026-07-01T13:00:00.000+02:00"},
      // The zone's name distinguishes an hour that occurs twice; an hour that is skipped is no
      // date.
      {"Europe/Berlin", "C", "2026-10-25T02:30:00.000GMT+2", "2026-10-25T02:30:00.000+02:00"},
      {"Europe/Berlin", "C", "2026-10-25T02:30:00.000GMT+1", "2026-10-25T02:30:00.000+01:00"},
      {"Europe/Berlin", "C", "2026-03-29T02:30:00.000GMT+1", std::nullopt},
      {"Europe/Berlin", "C", "2026-03-29T03:00:00.000GMT+2", "2026-03-29T03:00:00.000+02:00"},
      // An offset with seconds, the Julian calendar, the leap day before the year 1, other years.
      {"Europe/Berlin", "C", "1880-01-01T00:00:00.000GMT+0:53:28", "1879-12-31T23:59:32.000+00:53"},
      {"UTC", "C", "1500-02-29T12:00:00.000UTC", "1500-03-10T12:00:00.000Z"},
      {"UTC", "C", "0001-02-29T12:00:00.000UTC", "0000-02-27T12:00:00.000Z"},
      {"UTC", "C", "10000-01-01T00:00:00.000UTC", "9999-12-31T00:01:00.000-23:59"},
      {"UTC", "th_TH.UTF-8", "2569-11-21T12:00:00.123UTC", "2026-11-21T12:00:00.123Z"},
      {"UTC", "fa_IR.UTF-8", "۱۴۰۵-۰۸-۳۰T۱۲:۰۰:۰۰.۱۲۳UTC", "2026-11-21T12:00:00.123Z"},
      // Another zone, another language, no date.
      {"UTC", "C", "2026-11-21T13:00:00.000GMT+1", std::nullopt},
      {"Europe/Berlin", "C", "2026-11-21T13:00:00.000MEZ", std::nullopt},
      {"Europe/Berlin", "C", "2026-07-01T13:00:00.000GMT+1", std::nullopt},
      {"UTC", "C", "2026-02-30T12:00:00.000UTC", std::nullopt},
      {"UTC", "C", "2026-13-01T12:00:00.000UTC", std::nullopt},
      {"UTC", "C", "2026-11-21T25:00:00.000UTC", std::nullopt},
      {"UTC", "C", "2026-11-21T12:00:00.000UTC ", std::nullopt},
      {"UTC", "C", "2026-11-21T12:00:00.000", std::nullopt},
      {"UTC", "C", "2026-11-21", std::nullopt},
      {"UTC", "C", "99999-01-01T00:00:00.000UTC", std::nullopt},
      {"UTC", "C", "999999999999999999-01-01T00:00:00.000UTC", std::nullopt},
      {"UTC", "C", "yesterday", std::nullopt},
      {"UTC", "C", "-", std::nullopt},
      {"UTC", "C", "", std::nullopt},
  };
  for (const auto& row : rows) {
    const ScopedEnvironment zone("TZ", row.zone);
    const ScopedEnvironment locale("LC_ALL", row.locale);
    const Found found = DateSearch().timestampOf(row.text);
    EXPECT_EQ(found, row.timestamp) << row.zone << " " << row.locale << " " << row.text;
    if (found && dateOf(*found)) {
      EXPECT_EQ(ZtPortalDef::stringFromDate(*dateOf(*found)), row.text);
    }
  }
}

TEST(DateSearchTest, FindsATimestampForEveryWrittenDate) {
  constexpr int kDates = 40;
  for (const char* zone :
       {"UTC", "Europe/Berlin", "Europe/London", "Asia/Kolkata", "America/St_Johns",
        "Australia/Lord_Howe", "Pacific/Apia", "Africa/Monrovia", "EST5EDT,M3.2.0,M11.1.0"}) {
    for (const char* locale : {"C", "de_DE.UTF-8", "ar_EG.UTF-8", "ar_SA.UTF-8", "fa_IR.UTF-8",
                               "th_TH.UTF-8", "my_MM.UTF-8"}) {
      const ScopedEnvironment zoneThere("TZ", zone);
      const ScopedEnvironment localeThere("LC_ALL", locale);
      zt::test::DescriptionGenerator generator(11);
      DateSearch dates;
      for (int i = 0; i < kDates; ++i) {
        const ZtString text =
            ZtPortalDef::stringFromDate(ZtDate::fromMilliseconds(generator.moment()));
        const Found found = dates.timestampOf(text.view());
        ASSERT_TRUE(found) << zone << " " << locale << " " << text.view();
        ASSERT_EQ(ZtPortalDef::stringFromDate(*dateOf(*found)), text) << zone << " " << locale;
      }
    }
  }
}

}  // namespace
