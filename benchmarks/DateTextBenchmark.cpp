#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <array>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>

#include "benchmarks/DateTextPeers.h"
#include "ztportal/base/ZtDate.h"
#include "ztportal/platform/time/DateText.h"

// One timestamp of a report: ours against the C library's way to the same text and against ICU.

namespace {

using zt::bench::appendByIcu;
using zt::bench::appendByStrftime;
using zt::bench::icuFormat;

constexpr std::int64_t kDay = 86'400'000;
constexpr std::int64_t kNoon = 1'795'262'400'000;  // 2026-11-21T12:00:00.000Z

struct Environment {
  const char* zone;
  const char* locale;
};

constexpr Environment kBerlinGerman{"Europe/Berlin", "de_DE.UTF-8"};
constexpr Environment kUtcPosix{"UTC", "C"};

struct Spread {
  std::int64_t first;
  std::int64_t step;
};

constexpr std::size_t kDates = 1000;
constexpr Spread kSameMoment{kNoon, 0};
constexpr Spread kOneDay{kNoon - kDay / 2, kDay / kDates + 1};
constexpr Spread kHundredDays{kNoon - 50 * kDay, 100 * kDay / kDates + 1};
constexpr Spread kFiftyYears{kNoon - std::int64_t{25} * 365 * kDay,
                             std::int64_t{50} * 365 * kDay / kDates + 1};

std::array<ZtDate, kDates> datesOf(const Spread& spread) {
  std::array<ZtDate, kDates> dates;
  std::int64_t moment = spread.first;
  for (ZtDate& date : dates) {
    date = ZtDate::fromMilliseconds(moment);
    moment += spread.step;
  }
  return dates;
}

void enter(const Environment& environment) {
  for (const char* variable : {"LC_ALL", "LC_TIME"}) unsetenv(variable);
  setenv("LANG", environment.locale, 1);
  setenv("TZ", environment.zone, 1);
  tzset();
}

template <class Write>
void writeDates(benchmark::State& state, const Spread& spread, Write write) {
  const std::array<ZtDate, kDates> dates = datesOf(spread);
  std::string text;
  std::size_t next = 0;
  for (auto _ : state) {
    text.clear();
    write(text, dates[next]);
    benchmark::DoNotOptimize(text.data());
    benchmark::ClobberMemory();
    next = next + 1 == kDates ? 0 : next + 1;
  }
  state.SetLabel(text);
}

void ours(benchmark::State& state, const Environment& environment, const Spread& spread) {
  enter(environment);
  writeDates(state, spread,
             [](std::string& text, ZtDate date) { zt::appendTimestamp(text, date); });
}

void cLibrary(benchmark::State& state, const Environment& environment, const Spread& spread) {
  enter(environment);
  writeDates(state, spread, appendByStrftime);
}

void icuKept(benchmark::State& state, const Environment& environment, const Spread& spread) {
  const std::unique_ptr<icu::SimpleDateFormat> format =
      icuFormat(environment.zone, environment.locale);
  writeDates(state, spread,
             [&](std::string& text, ZtDate date) { appendByIcu(text, *format, date); });
}

void icuAnew(benchmark::State& state, const Environment& environment, const Spread& spread) {
  writeDates(state, spread, [&](std::string& text, ZtDate date) {
    appendByIcu(text, *icuFormat(environment.zone, environment.locale), date);
  });
}

BENCHMARK_CAPTURE(ours, Berlin / same_moment, kBerlinGerman, kSameMoment);
BENCHMARK_CAPTURE(ours, Berlin / one_day, kBerlinGerman, kOneDay);
BENCHMARK_CAPTURE(ours, Berlin / hundred_days, kBerlinGerman, kHundredDays);
BENCHMARK_CAPTURE(ours, Berlin / fifty_years, kBerlinGerman, kFiftyYears);
BENCHMARK_CAPTURE(cLibrary, Berlin / same_moment, kBerlinGerman, kSameMoment);
BENCHMARK_CAPTURE(cLibrary, Berlin / one_day, kBerlinGerman, kOneDay);
BENCHMARK_CAPTURE(cLibrary, Berlin / hundred_days, kBerlinGerman, kHundredDays);
BENCHMARK_CAPTURE(cLibrary, Berlin / fifty_years, kBerlinGerman, kFiftyYears);
BENCHMARK_CAPTURE(icuKept, Berlin / one_day, kBerlinGerman, kOneDay);
BENCHMARK_CAPTURE(icuAnew, Berlin / one_day, kBerlinGerman, kOneDay);
BENCHMARK_CAPTURE(ours, UTC / one_day, kUtcPosix, kOneDay);
BENCHMARK_CAPTURE(cLibrary, UTC / one_day, kUtcPosix, kOneDay);
BENCHMARK_CAPTURE(icuKept, UTC / one_day, kUtcPosix, kOneDay);

}  // namespace
