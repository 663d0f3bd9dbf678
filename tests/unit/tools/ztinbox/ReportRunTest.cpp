#include <gtest/gtest.h>

#include <string>

#include "tests/unit/tools/common/ReportText.h"
#include "tools/common/ReportReader.h"
#include "tools/ztinbox/soap/ReportRun.h"
#include "ztportal/ztportal.h"

namespace {

using std::chrono::milliseconds;
using zt::inbox::PoolRun;
using zt::inbox::readRun;
using zt::reader::readReport;

constexpr std::int64_t kStart = 1'795'262'400'000;

ZtDate after(std::int64_t time) { return ZtDate::fromMilliseconds(kStart + time); }

std::string text(const std::optional<milliseconds>& time) {
  return time ? std::to_string(time->count()) : "-";
}

/// A line for each step, behind the run's own.
std::string shown(const ZtPortalPool& pool) {
  std::string pools;
  pool.addToXml("    ", pools, false);
  const std::string written = zt::test::plainReportOf(pools);
  const auto report = readReport(written);
  const auto run = readRun(report, report.pools.at(0));
  if (!run) return "no run";
  std::string lines(run->result.value_or("-"));
  lines.append(" ").append(text(run->duration)).append("\n");
  for (const auto& step : run->steps) {
    lines.append(step.name).append(" ").append(step.type).append(" ").append(step.message);
    lines.append(" ").append(step.code).append(step.failed ? " failed " : " ");
    lines.append(text(step.offset)).append(" ").append(text(step.duration)).append("\n");
  }
  return lines;
}

TEST(ReportRunTest, TellsHowAnExecutionWent) {
  const auto run = ZtPortalPoolExecution::initWithValues(after(0));
  run->setEndTime(after(9'000));
  EXPECT_EQ(shown(*run), "succeeded 9000\n");
  run->setSuccessfull(0);
  EXPECT_EQ(shown(*run), "failed 9000\n");
  run->setCancelled(1);
  EXPECT_EQ(shown(*run), "cancelled 9000\n");
  run->setEndTime(after(-1));
  EXPECT_EQ(shown(*run), "cancelled -\n") << "the clock was set back";
}

TEST(ReportRunTest, AStepLastsUntilItIsLeft) {
  const auto run = ZtPortalPoolExecution::initWithValues(after(0));
  run->setEndTime(after(9'000));
  run->addStep(after(100), "Copy", ZtPortalStepEnter);
  run->addStep(after(200), "Copy", ZtPortalStepInfo)->setStepMessageString("214 files");
  run->addStep(after(700), "Copy", ZtPortalStepLeave);
  run->addStep(after(800), "Check", ZtPortalStepEnter);
  run->addStep(after(1'000), "Check", ZtPortalStepError)->setStepMessageCode("5");
  run->addStep(after(1'500), "Copy", ZtPortalStepEnter);
  run->addStep(after(1'700), "Copy", ZtPortalStepExit);
  run->addStep(after(2'000), "Finish", ZtPortalStepEnter);
  EXPECT_EQ(shown(*run),
            "succeeded 9000\n"
            "Copy ENTER   100 600\n"
            "Copy INFO 214 files  200 -\n"
            "Copy LEAVE   700 -\n"
            "Check ENTER   800 200\n"
            "Check ERROR  5 failed 1000 -\n"
            "Copy ENTER   1500 200\n"
            "Copy EXIT   1700 -\n"
            "Finish ENTER   2000 7000\n");
}

TEST(ReportRunTest, WithoutTimesThereAreNoDurations) {
  const auto run = ZtPortalPoolExecution::initWithValues(ZtDate());
  run->addStep(ZtDate(), "Copy", ZtPortalStepEnter);
  run->addStep(after(5), "Copy", ZtPortalStepLeave);
  EXPECT_EQ(shown(*run), "succeeded -\nCopy ENTER   - -\nCopy LEAVE   - -\n");
}

TEST(ReportRunTest, OtherPoolsTellNothing) {
  EXPECT_EQ(shown(*ZtPortalPool::initWithValues("CUSTOM", after(0))), "no run");
  EXPECT_TRUE(zt::inbox::isRun("EXECUTION"));
  EXPECT_TRUE(zt::inbox::isRun("DIAGNOSE"));
  EXPECT_FALSE(zt::inbox::isRun("execution"));
}

TEST(ReportRunTest, ReadsTheStepsOfADiagnosis) {
  const auto diagnose = ZtPortalPoolDiagnose::initWithValues(after(0));
  diagnose->addStep(after(5), "A", ZtPortalDiagnoseManual)->setSuccessfullRepair(1);
  const auto failed = diagnose->addStep(after(6), "B", ZtPortalDiagnoseManual);
  failed->setSuccessfullRepair(0);
  failed->setStepMessageString("m");
  failed->setStepMessageCode("c");
  EXPECT_EQ(shown(*diagnose), "- -\nA MANUAL   - -\nB MANUAL m c failed - -\n");
}

TEST(ReportRunTest, StepsAreARunsOwnList) {
  // A generic array may have the same name, and a pool of a run's type may be anything.
  const auto run = ZtPortalPool::initWithValues("EXECUTION", after(0));
  run->addArray("INSTALLATIONSTEPS")->addString("STEP_NAME", "Copy");
  EXPECT_EQ(shown(*run), "- -\n");
}

}  // namespace
