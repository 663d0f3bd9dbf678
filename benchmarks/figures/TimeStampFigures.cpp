#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/DateTextPeers.h"
#include "benchmarks/ExecutionPoolPeers.h"
#include "benchmarks/figures/Fastest.h"
#include "benchmarks/figures/Figure.h"
#include "ztportal/platform/time/DateText.h"

// One time stamp, of a thousand moments of one day.

namespace zt::bench {

namespace {

constexpr const char* kName = "one time stamp";
constexpr std::size_t kZoneLength = 3;  // "CET", "MEZ"

std::vector<ZtDate> dates() {
  constexpr std::int64_t kStep = std::int64_t{86'400'000} / 1000;
  std::vector<ZtDate> all;
  for (std::int64_t i = 0; i < 1000; ++i) {
    all.push_back(ZtDate::fromMilliseconds(stepTime(0).milliseconds() + i * (kStep - 13)));
  }
  return all;
}

template <class Append>
Work writer(const std::vector<ZtDate>& moments, Append append) {
  return [&moments, append, text = std::make_shared<std::string>()] {
    for (const ZtDate moment : moments) {
      text->clear();
      append(*text, moment);
      benchmark::DoNotOptimize(text->data());
      benchmark::ClobberMemory();
    }
  };
}

}  // namespace

std::vector<Figure> timeStampFigures() {
  setEnvironment();
  const std::vector<ZtDate> moments = dates();
  const std::vector<ZtDate> fewMoments(moments.begin(), moments.begin() + 20);
  const auto ours = [](std::string& text, ZtDate date) { appendTimestamp(text, date); };
  const std::shared_ptr<icu::SimpleDateFormat> kept = icuFormat("Europe/Berlin", "de_DE");
  const auto byKept = [kept](std::string& text, ZtDate date) { appendByIcu(text, *kept, date); };
  const auto byNew = [](std::string& text, ZtDate date) {
    appendByIcu(text, *icuFormat("Europe/Berlin", "de_DE"), date);
  };
  for (const ZtDate moment : moments) {
    std::array<std::string, 3> texts;
    ours(texts[0], moment);
    appendByStrftime(texts[1], moment);
    byKept(texts[2], moment);
    // The C library has another name for the zone than the Unicode data in German.
    const std::size_t digits = texts[1].size() - kZoneLength;
    if (texts[0].substr(0, digits) != texts[1].substr(0, digits) || texts[0] != texts[2]) {
      throw std::runtime_error("a peer writes another time stamp: " + texts[1] + ", " + texts[2]);
    }
  }
  const std::vector<double> best = fastest(
      2000, {writer(moments, ours), writer(moments, appendByStrftime), writer(fewMoments, byKept)});
  const std::vector<double> anew = fastest(50, {writer(fewMoments, byNew)});
  const auto each = [](double seconds, const std::vector<ZtDate>& all) {
    return seconds * 1e9 / static_cast<double>(all.size());
  };
  const double stamp = each(best[0], moments);
  return {
      atMostTimes(1.2, kName, stamp, {"localtime_r, strftime", each(best[1], moments)}, "ns"),
      timesFaster(15, kName, stamp, {"ICU's formatter kept", each(best[2], fewMoments)}, "ns"),
      timesFaster(200, kName, stamp, {"ICU's formatter anew", each(anew[0], fewMoments)}, "ns"),
  };
}

}  // namespace zt::bench
