#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "benchmarks/ExecutionPoolPeers.h"
#include "benchmarks/TypicalReport.h"
#include "ztportal/platform/DateText.h"

// Does a figure's work where callgrind counts it: `script/instructions` collects in `measured()`
// alone, and divides by the number of times that this program prints.
//
//     zt_instructions FIGURE

namespace {

using zt::bench::setEnvironment;
using zt::bench::stepTime;

constexpr std::size_t kTimes = 20;

template <class Work>
[[gnu::noinline]] void measured(const Work& work) {
  for (std::size_t i = 0; i < kTimes; ++i) work(i);
}

/// Prints how many times the figure's work was done, `each` a round.
template <class Work>
void count(std::size_t each, const Work& work) {
  work(0);  // what is put together once is put together now
  measured(work);
  std::printf("%zu\n", each * kTimes);
}

/// The execution pool with its steps, the text's memory kept.
void countField() {
  constexpr std::size_t kSteps = 1000;
  const auto pool = zt::bench::makePool(kSteps);
  std::string xml;
  count(kSteps * zt::bench::kFieldsPerStep, [&](std::size_t) {
    xml.clear();
    zt::bench::writePool(*pool, xml);
    benchmark::DoNotOptimize(xml.data());
  });
}

void countStamp() {
  constexpr std::size_t kStamps = 1000;
  constexpr std::int64_t kApart = 86'399;  // a thousand of them make a day
  const std::int64_t first = stepTime(0).milliseconds();
  std::string text;
  count(kStamps, [&](std::size_t) {
    for (std::size_t i = 0; i < kStamps; ++i) {
      text.clear();
      zt::appendTimestamp(text,
                          ZtDate::fromMilliseconds(first + static_cast<std::int64_t>(i) * kApart));
      benchmark::DoNotOptimize(text.data());
    }
  });
}

void countRequest() {
  const auto report = zt::bench::typicalReport();
  count(1, [&](std::size_t) {
    const std::string text = report->generateXml(nullptr, true);
    benchmark::DoNotOptimize(text.data());
  });
}

constexpr struct {
  std::string_view name;
  void (*count)();
} kFigures[] = {{"field", countField}, {"stamp", countStamp}, {"request", countRequest}};

}  // namespace

int main(int count, char** words) {
  setEnvironment();
  for (const auto& figure : kFigures) {
    if (count != 2 || figure.name != words[1]) continue;
    figure.count();
    return 0;
  }
  std::fputs("zt_instructions: usage: zt_instructions field|stamp|request\n", stderr);
  return 2;
}
