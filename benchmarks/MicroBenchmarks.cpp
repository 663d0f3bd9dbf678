// SPDX-License-Identifier: Apache-2.0
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "benchmarks/Reports.h"
#include "ztportal/platform/time/DateText.h"
#include "ztportal/ztportal.h"

// Details that the table of figures does not show: cost by number of fields and by kind of dates.

namespace {

using zt::bench::stepTime;

/// Adds the time of one field to the output.
void countFields(benchmark::State& state) {
  state.counters["field"] = benchmark::Counter(
      static_cast<double>(state.range(0)),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

/// Keeps the memory of the text between rounds. Otherwise new pages from the kernel would dominate
/// the time of the largest texts.
void write(benchmark::State& state, const ZtPortalPool& pool) {
  std::string xml;
  pool.addToXml("           ", xml, true);
  for ([[maybe_unused]] auto _ : state) {
    xml.clear();
    pool.addToXml("           ", xml, true);
    benchmark::DoNotOptimize(xml.data());
  }
  countFields(state);
}

void ExecutionPool_Write(benchmark::State& state) {
  constexpr std::int64_t kFieldsPerStep = 5;
  zt::bench::setEnvironment();
  const auto pool = ZtPortalPoolExecution::initWithValues(stepTime(0));
  for (std::int64_t i = 0; i < state.range(0) / kFieldsPerStep; ++i) {
    const auto step = pool->addStep(stepTime(static_cast<std::size_t>(i)),
                                    "Copy file " + std::to_string(i), ZtPortalStepInfo);
    step->setStepMessageCode("0");
  }
  write(state, *pool);
}
BENCHMARK(ExecutionPool_Write)->RangeMultiplier(10)->Range(100, 1000000);

void GenericPool_Write(benchmark::State& state) {
  zt::bench::setEnvironment();
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", stepTime(0));
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    pool->addString("FIELD_" + std::to_string(i), "value " + std::to_string(i));
  }
  write(state, *pool);
}
BENCHMARK(GenericPool_Write)->RangeMultiplier(10)->Range(100, 1000000);

/// Builds a pool and destroys it.
void GenericPool_Build(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) {
    const auto pool = ZtPortalPool::initWithValues("CUSTOM", stepTime(0));
    for (std::int64_t i = 0; i < state.range(0); ++i) pool->addString("FIELD", "value");
    benchmark::DoNotOptimize(pool.get());
  }
  countFields(state);
}
BENCHMARK(GenericPool_Build)->RangeMultiplier(10)->Range(100, 1000000);

/// Timestamps of a thousand dates that are spread over `days` days.
void Timestamp(benchmark::State& state, const char* zone, const char* locale, std::int64_t days) {
  constexpr std::int64_t kDates = 1000;
  constexpr std::int64_t kDay = 86'400'000;
  setenv("TZ", zone, 1);
  setenv("LC_ALL", locale, 1);
  tzset();
  std::vector<ZtDate> dates;
  for (std::int64_t i = 0; i < kDates; ++i) {
    const std::int64_t offset = (i - kDates / 2) * (days * kDay / kDates);
    dates.push_back(ZtDate::fromMilliseconds(stepTime(0).milliseconds() + offset + i % 7));
  }
  std::string text;
  std::size_t next = 0;
  for ([[maybe_unused]] auto _ : state) {
    text.clear();
    zt::appendTimestamp(text, dates[next]);
    benchmark::DoNotOptimize(text.data());
    next = (next + 1) % dates.size();
  }
  state.SetLabel(text);
}
BENCHMARK_CAPTURE(Timestamp, Berlin_one_moment, "Europe/Berlin", "de_DE.UTF-8", 0);
BENCHMARK_CAPTURE(Timestamp, Berlin_one_day, "Europe/Berlin", "de_DE.UTF-8", 1);
BENCHMARK_CAPTURE(Timestamp, Berlin_hundred_days, "Europe/Berlin", "de_DE.UTF-8", 100);
BENCHMARK_CAPTURE(Timestamp, Berlin_fifty_years, "Europe/Berlin", "de_DE.UTF-8", 18250);
BENCHMARK_CAPTURE(Timestamp, UTC_one_day, "UTC", "C", 1);

}  // namespace
