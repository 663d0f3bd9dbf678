#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/ExecutionPoolPeers.h"
#include "ztportal/ztportal.h"

// The cost of a field by the number of fields, and an execution pool beside its peers.

namespace {

using zt::bench::Buffer;
using zt::bench::expectedLines;
using zt::bench::kFieldsPerStep;
using zt::bench::makePool;
using zt::bench::makeTexts;
using zt::bench::setEnvironment;
using zt::bench::sizeOf;
using zt::bench::StepTexts;
using zt::bench::stepTime;
using zt::bench::writeByCopying;
using zt::bench::writeByFmt;
using zt::bench::writeByLibxml;
using zt::bench::writeByTinyxml;
using zt::bench::writePool;

const ZtString kPrefix = "           ";

/// Shows the time of one field.
void countEach(benchmark::State& state, double fields) {
  state.counters["field"] = benchmark::Counter(
      fields, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void countFields(benchmark::State& state, std::size_t steps) {
  countEach(state, static_cast<double>(steps * kFieldsPerStep));
}

std::size_t stepsOf(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(0)) / kFieldsPerStep;
}

void ExecutionPool_Ours(benchmark::State& state) {
  const auto pool = makePool(stepsOf(state));
  for (auto _ : state) {
    std::string xml;
    writePool(*pool, xml);
    benchmark::DoNotOptimize(xml.data());
  }
  countFields(state, stepsOf(state));
}
BENCHMARK(ExecutionPool_Ours)->Arg(50000);

/// The cost of a field by their number. The text's memory is kept from one round to the next: for
/// the largest texts the time goes into fresh pages from the kernel otherwise, whoever writes.
void ExecutionPool_OursByCount(benchmark::State& state) {
  const auto pool = makePool(stepsOf(state));
  std::string xml;
  writePool(*pool, xml);  // the round that the pages come in
  for (auto _ : state) {
    xml.clear();
    writePool(*pool, xml);
    benchmark::DoNotOptimize(xml.data());
  }
  countFields(state, stepsOf(state));
}
BENCHMARK(ExecutionPool_OursByCount)->RangeMultiplier(10)->Range(100, 1000000);

void ExecutionPool_Copying(benchmark::State& state) {
  const std::vector<StepTexts> texts = makeTexts(stepsOf(state));
  const std::size_t size = sizeOf(texts);
  if (std::string_view(writeByCopying(texts, size).get(), size) != expectedLines(stepsOf(state))) {
    return state.SkipWithError("another text");
  }
  for (auto _ : state) {
    const Buffer buffer = writeByCopying(texts, size);
    benchmark::DoNotOptimize(buffer.get());
  }
  countFields(state, stepsOf(state));
}
BENCHMARK(ExecutionPool_Copying)->Arg(50000);

template <auto kWrite>
void ExecutionPool(benchmark::State& state) {
  const std::vector<StepTexts> texts = makeTexts(stepsOf(state));
  if (kWrite(texts) != expectedLines(stepsOf(state))) return state.SkipWithError("another text");
  for (auto _ : state) {
    const std::string text = kWrite(texts);
    benchmark::DoNotOptimize(text.data());
  }
  countFields(state, stepsOf(state));
}
BENCHMARK(ExecutionPool<writeByFmt>)->Name("ExecutionPool_fmt")->Arg(50000);
BENCHMARK(ExecutionPool<writeByTinyxml>)->Name("ExecutionPool_tinyxml2")->Arg(50000);
BENCHMARK(ExecutionPool<writeByLibxml>)->Name("ExecutionPool_libxml2")->Arg(50000);

/// The same for a generic pool of string fields: what a host adds by itself, one object a field.
void GenericPool_OursByCount(benchmark::State& state) {
  setEnvironment();
  const auto pool = ZtPortalPool::initWithValues("CUSTOM", stepTime(0));
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    pool->addString("FIELD_" + std::to_string(i), "value " + std::to_string(i));
  }
  std::string xml;
  pool->addToXml(kPrefix, xml, true);  // the round that the pages come in
  for (auto _ : state) {
    xml.clear();
    pool->addToXml(kPrefix, xml, true);
    benchmark::DoNotOptimize(xml.data());
  }
  countEach(state, static_cast<double>(state.range(0)));
}
BENCHMARK(GenericPool_OursByCount)->RangeMultiplier(10)->Range(100, 1000000);

/// Building the same pool, and dropping it.
void GenericPool_BuildByCount(benchmark::State& state) {
  for (auto _ : state) {
    const auto pool = ZtPortalPool::initWithValues("CUSTOM", stepTime(0));
    for (std::int64_t i = 0; i < state.range(0); ++i) pool->addString("FIELD", "value");
    benchmark::DoNotOptimize(pool.get());
  }
  countEach(state, static_cast<double>(state.range(0)));
}
BENCHMARK(GenericPool_BuildByCount)->RangeMultiplier(10)->Range(100, 1000000);

}  // namespace
