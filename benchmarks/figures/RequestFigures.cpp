#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "benchmarks/ExecutionPoolPeers.h"
#include "benchmarks/TypicalReport.h"
#include "benchmarks/figures/Allocations.h"
#include "benchmarks/figures/Fastest.h"
#include "benchmarks/figures/Figure.h"

// The text of a typical report, and the memory of a report while it is built.

namespace zt::bench {

namespace {

constexpr std::size_t kFields = 10'000;

/// The bytes in use for one field of a report with many, beyond those of its name and value.
double bytesBeyondTexts() {
  std::vector<std::string> names;
  std::vector<std::string> values;
  std::size_t texts = 0;
  for (std::size_t i = 0; i < kFields; ++i) {
    names.push_back("INSTALLED_COMPONENT_" + std::to_string(i));
    values.push_back("version 12.4 of " + std::to_string(i * 37));
    texts += names.back().size() + values.back().size();
  }
  const std::int64_t before = allocations().bytesInUse;
  const auto report = emptyReport();
  const auto pool = report->addPool("CUSTOM", stepTime(0));
  for (std::size_t i = 0; i < kFields; ++i) pool->addString(names[i], values[i]);
  const auto used = static_cast<double>(allocations().bytesInUse - before);
  return (used - static_cast<double>(texts)) / static_cast<double>(kFields);
}

}  // namespace

std::vector<Figure> requestFigures() {
  setEnvironment();
  const auto report = typicalReport();
  // The text alone: what is asked of the machine on the way is a figure of its own.
  const Work write = [&report] {
    const std::string text = report->generateXml(nullptr, true);
    benchmark::DoNotOptimize(text.data());
  };
  const double best = fastest(5000, {write})[0];
  const std::uint64_t before = allocations().count;
  write();
  const auto count = static_cast<double>(allocations().count - before);
  return {
      atMost(40, "request text of a typical report", best * 1e6, "us"),
      atMost(5, "its memory allocations", count, ""),
      atMost(96, "memory of a field beyond its name and value", bytesBeyondTexts(), "bytes"),
  };
}

}  // namespace zt::bench
