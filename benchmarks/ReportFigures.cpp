// SPDX-License-Identifier: Apache-2.0
#include <benchmark/benchmark.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <array>
#include <cstdint>
#include <ctime>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/Figure.h"
#include "benchmarks/Reports.h"
#include "ztportal/platform/time/DateText.h"

// One timestamp compared with other formatters, the text of a typical report, and the memory of a
// report while it is built.

namespace zt::bench {

namespace {

/// Uses localtime_r() and strftime(), with the C library's name of the zone.
void appendByStrftime(std::string& text, ZtDate date) {
  const std::time_t seconds = date.milliseconds() / 1000;
  const auto milliseconds = static_cast<unsigned>(date.milliseconds() % 1000);
  std::tm local{};
  localtime_r(&seconds, &local);
  char out[64];
  std::size_t length = std::strftime(out, sizeof(out), "%Y-%m-%dT%H:%M:%S", &local);
  out[length++] = '.';
  out[length++] = static_cast<char>('0' + milliseconds / 100);
  out[length++] = static_cast<char>('0' + milliseconds / 10 % 10);
  out[length++] = static_cast<char>('0' + milliseconds % 10);
  text.append(out, length).append(local.tm_zone);
}

/// ICU's formatter with the same pattern.
std::unique_ptr<icu::SimpleDateFormat> icuFormat(const char* zone, const char* locale) {
  UErrorCode status = U_ZERO_ERROR;
  auto format = std::make_unique<icu::SimpleDateFormat>(
      u"yyyy-MM-dd'T'HH:mm:ss.SSSz", icu::Locale::createCanonical(locale), status);
  format->adoptTimeZone(icu::TimeZone::createTimeZone(zone));
  return format;
}

void appendByIcu(std::string& text, const icu::SimpleDateFormat& format, ZtDate date) {
  icu::UnicodeString formatted;
  format.format(static_cast<UDate>(date.milliseconds()), formatted).toUTF8String(text);
}

constexpr const char* kTimestampFigure = "one timestamp";
constexpr std::size_t kZoneLength = 3;  // "CET", "MEZ"

/// A thousand dates of one day.
std::vector<ZtDate> thousandDates() {
  constexpr std::int64_t kStep = std::int64_t{86'400'000} / 1000;
  std::vector<ZtDate> all;
  for (std::int64_t i = 0; i < 1000; ++i) {
    all.push_back(ZtDate::fromMilliseconds(stepTime(0).milliseconds() + i * (kStep - 13)));
  }
  return all;
}

template <class Append>
Work writer(const std::vector<ZtDate>& dates, Append append) {
  return [&dates, append, text = std::make_shared<std::string>()] {
    for (const ZtDate& date : dates) {
      text->clear();
      append(*text, date);
      benchmark::DoNotOptimize(text->data());
      benchmark::ClobberMemory();
    }
  };
}

constexpr std::size_t kFields = 10'000;

/// The bytes that one field of a large report takes, without those of its name and value.
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

std::vector<Figure> timestampFigures() {
  setEnvironment();
  const std::vector<ZtDate> dates = thousandDates();
  const std::vector<ZtDate> fewDates(dates.begin(), dates.begin() + 20);
  const auto ours = [](std::string& text, ZtDate date) { appendTimestamp(text, date); };
  const std::shared_ptr<icu::SimpleDateFormat> kept = icuFormat("Europe/Berlin", "de_DE");
  const auto byKept = [kept](std::string& text, ZtDate date) { appendByIcu(text, *kept, date); };
  const auto byNew = [](std::string& text, ZtDate date) {
    appendByIcu(text, *icuFormat("Europe/Berlin", "de_DE"), date);
  };
  for (const ZtDate& date : dates) {
    std::array<std::string, 3> texts;
    ours(texts[0], date);
    appendByStrftime(texts[1], date);
    byKept(texts[2], date);
    // In German, the C library's name of the zone differs from that of the Unicode data.
    const std::size_t digits = texts[1].size() - kZoneLength;
    if (texts[0].substr(0, digits) != texts[1].substr(0, digits) || texts[0] != texts[2]) {
      throw std::runtime_error("a peer writes another timestamp: " + texts[1] + ", " + texts[2]);
    }
  }
  const std::vector<double> best = fastest(
      2000, {writer(dates, ours), writer(dates, appendByStrftime), writer(fewDates, byKept)});
  const std::vector<double> anew = fastest(50, {writer(fewDates, byNew)});
  const auto each = [](double seconds, const std::vector<ZtDate>& all) {
    return seconds * 1e9 / static_cast<double>(all.size());
  };
  const double stamp = each(best[0], dates);
  return {
      atMostTimes(1.2, kTimestampFigure, stamp, {"localtime_r, strftime", each(best[1], dates)},
                  "ns"),
      timesFaster(15, kTimestampFigure, stamp, {"ICU's formatter, reused", each(best[2], fewDates)},
                  "ns"),
      timesFaster(200, kTimestampFigure, stamp,
                  {"ICU's formatter, created anew", each(anew[0], fewDates)}, "ns"),
  };
}

std::vector<Figure> requestFigures() {
  setEnvironment();
  const auto report = typicalReport();
  // The report has a made-up inventory; taking one is a separate figure.
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
