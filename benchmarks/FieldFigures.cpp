#include <benchmark/benchmark.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/ExecutionPoolPeers.h"
#include "benchmarks/figures/Fastest.h"
#include "benchmarks/figures/Figure.h"

// One string field: an execution pool of 10,000 steps written as SOAP, five string fields a step.

namespace zt::bench {

namespace {

constexpr std::size_t kSteps = 10'000;
constexpr const char* kName = "one string field written";

template <auto kWrite>
Work writer(const std::vector<StepTexts>& texts, const std::string& expected) {
  if (kWrite(texts) != expected) throw std::runtime_error("a peer writes another text");
  return [&texts] {
    const std::string text = kWrite(texts);
    benchmark::DoNotOptimize(text.data());
  };
}

}  // namespace

std::vector<Figure> fieldFigures() {
  const auto pool = makePool(kSteps);
  const std::vector<StepTexts> texts = makeTexts(kSteps);
  const std::string expected = expectedLines(kSteps);
  const std::size_t size = sizeOf(texts);
  if (std::string_view(writeByCopying(texts, size).get(), size) != expected) {
    throw std::runtime_error("the loop copies another text");
  }
  const Work ours = [&pool] {
    std::string xml;
    writePool(*pool, xml);
    benchmark::DoNotOptimize(xml.data());
  };
  const Work copying = [&texts, size] {
    const Buffer buffer = writeByCopying(texts, size);
    benchmark::DoNotOptimize(buffer.get());
  };
  const auto nanoseconds = [](double seconds) { return seconds * 1e9 / (kSteps * kFieldsPerStep); };
  const std::vector<double> best = fastest(2000, {ours, copying});
  const std::vector<double> others =
      fastest(60, {writer<writeByLibxml>(texts, expected), writer<writeByTinyxml>(texts, expected),
                   writer<writeByFmt>(texts, expected), ours});
  const double field = nanoseconds(std::min(best[0], others[3]));
  return {
      atMostTimes(1.5, kName, field, {"copying loop", nanoseconds(best[1])}, "ns"),
      timesFaster(25, kName, field, {"libxml2's text writer", nanoseconds(others[0])}, "ns"),
      timesFaster(8, kName, field, {"tinyxml2's printer", nanoseconds(others[1])}, "ns"),
      timesFaster(5, kName, field, {"fmt::format_to", nanoseconds(others[2])}, "ns"),
  };
}

}  // namespace zt::bench
