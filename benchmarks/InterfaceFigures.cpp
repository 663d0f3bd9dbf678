// SPDX-License-Identifier: Apache-2.0
#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/Figure.h"
#include "benchmarks/Reports.h"
#include "ztportal/c/ztportal.h"

// A report through the C interface, compared with the same report through C++: it is created, gets
// 20 values, and its text is written.

namespace zt::bench {

namespace {

constexpr std::size_t kStepsOfReport = 5;

void throwUnless(bool isDone) {
  if (!isDone) throw std::runtime_error(zt_last_error());
}

void setValue(zt_pool* pool, const char* key, const char* value) {
  throwUnless(zt_pool_set_string(pool, key, value) == ZT_OK);
}

/// Calls `use` with the text of the report.
template <class Use>
void writeThroughC(Use use) {
  const auto time = [](std::size_t step) { return stepTime(step).milliseconds(); };
  zt_report* report = nullptr;
  zt_pool* run = nullptr;
  throwUnless(zt_report_create("", "Kelvane", "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}", "2.1.77",
                               ZT_OFFLINE, &report) == ZT_OK);
  throwUnless(zt_report_add_pool(report, "execution", time(0), &run) == ZT_OK);
  setValue(run, "startPoint", "setup");
  setValue(run, "endPoint", "finish");
  throwUnless(zt_pool_set_date(run, "endTime", time(kStepsOfReport)) == ZT_OK);
  setValue(run, "endResultString", "installed");
  throwUnless(zt_pool_set_boolean(run, "successfull", true) == ZT_OK);
  for (std::size_t i = 0; i < kStepsOfReport; ++i) {
    zt_pool* step = nullptr;
    throwUnless(zt_pool_add_record(run, "steps", time(i), &step) == ZT_OK);
    setValue(step, "stepName", "Copy");
    throwUnless(zt_pool_set_integer(step, "stepType", ZtPortalStepLeave) == ZT_OK);
    setValue(step, "stepMessageCode", "0");
  }
  const char* text = nullptr;
  std::size_t length = 0;
  throwUnless(zt_report_render(report, true, &text, &length) == ZT_OK);
  use(std::string_view(text, length));
  zt_report_destroy(report);
}

template <class Use>
void writeThroughCpp(Use use) {
  const auto report = emptyReport();
  const auto run = report->addPoolExecution(stepTime(0));
  run->setStartPoint("setup");
  run->setEndPoint("finish");
  run->setEndTime(stepTime(kStepsOfReport));
  run->setEndResultString("installed");
  run->setSuccessfull(1);
  for (std::size_t i = 0; i < kStepsOfReport; ++i) {
    const auto step = run->addStep(stepTime(i), "Copy", ZtPortalStepLeave);
    step->setStepMessageCode("0");
  }
  use(std::string_view(report->getSoapString()));
}

/// The text from the first pool on: the IDs of the reports differ.
std::string withoutIds(std::string_view text) {
  return std::string(text.substr(text.find("EXECUTION")));
}

}  // namespace

std::vector<Figure> interfaceFigures() {
  setEnvironment();
  std::array<std::string, 2> texts;
  writeThroughC([&texts](std::string_view text) { texts[0] = withoutIds(text); });
  writeThroughCpp([&texts](std::string_view text) { texts[1] = withoutIds(text); });
  if (texts[0] != texts[1]) throw std::runtime_error("the reports differ");
  const auto drop = [](std::string_view text) { benchmark::DoNotOptimize(text.data()); };
  const std::vector<double> best =
      fastest(20'000, {[drop] { writeThroughC(drop); }, [drop] { writeThroughCpp(drop); }});
  return {atMostTimes(1.05, "a report with 20 values through C", best[0] * 1e6,
                      {"through C++", best[1] * 1e6}, "us")};
}

}  // namespace zt::bench
