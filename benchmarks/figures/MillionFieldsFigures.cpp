#include <benchmark/benchmark.h>
#include <malloc.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/ExecutionPoolPeers.h"
#include "benchmarks/figures/Fastest.h"
#include "benchmarks/figures/Figure.h"

// The cost of a field among a million beside that of one among a thousand.

namespace zt::bench {

namespace {

constexpr std::size_t kFew = 1'000;
constexpr std::size_t kMany = 1'000'000;
constexpr std::size_t kTimes = 100;  // what is done with few is timed together

std::shared_ptr<ZtPortalPool> poolOf(std::size_t fields) {
  auto pool = ZtPortalPool::initWithValues("CUSTOM", stepTime(0));
  for (std::size_t i = 0; i < fields; ++i) pool->addString("FIELD", "a value");
  return pool;
}

Work build(std::size_t fields, std::size_t times) {
  return [fields, times] {
    for (std::size_t i = 0; i < times; ++i) benchmark::DoNotOptimize(poolOf(fields).get());
  };
}

/// The text's memory is kept from one time to the next, as that of the fields is.
Work write(std::size_t fields, std::size_t times) {
  return [pool = poolOf(fields), times, xml = std::make_shared<std::string>()] {
    for (std::size_t i = 0; i < times; ++i) {
      xml->clear();
      pool->addToXml("", *xml, true);
      benchmark::DoNotOptimize(xml->data());
    }
  };
}

Figure figure(const std::string& name, const std::vector<double>& seconds) {
  const double few = seconds[0] * 1e9 / static_cast<double>(kFew * kTimes);
  const double many = seconds[1] * 1e9 / static_cast<double>(kMany);
  return atMostTimes(1.25, name, many, {"of a thousand", few}, "ns");
}

}  // namespace

std::vector<Figure> millionFieldsFigures() {
  // Memory that was given back is kept for the next time: for so many fields the time would go into
  // fresh pages from the kernel otherwise, whoever builds.
  mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
  mallopt(M_MMAP_THRESHOLD, std::numeric_limits<int>::max());
  return {
      figure("a field of a million: build", fastest(12, {build(kFew, kTimes), build(kMany, 1)})),
      figure("a field of a million: write", fastest(12, {write(kFew, kTimes), write(kMany, 1)}))};
}

}  // namespace zt::bench
