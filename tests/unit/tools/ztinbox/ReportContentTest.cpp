// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/unit/tools/common/ReportText.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"
#include "tools/common/ReportReader.h"
#include "tools/ztinbox/soap/ReportContent.h"
#include "ztportal/ztportal.h"

namespace {

using zt::inbox::ReportIdentity;
using zt::test::kLargestReport;
using zt::test::repeated;
using zt::test::SampleReport;

using Pools = std::vector<std::string>;

ReportIdentity readIdentity(const std::string& report) {
  return zt::inbox::readContent(report).identity;
}

TEST(ReportContentTest, ReadsWhoSentTheReportAndItsPools) {
  SampleReport report;
  report.applicationVersion = std::string("1\0002", 3);
  report.pools = {"EXECUTION", "a\"b", "", "<x>", "(null)", "Pool=\"y", "EXECUTION"};
  const ReportIdentity identity = readIdentity(report.text());
  EXPECT_EQ(identity.reportId, report.reportId);
  EXPECT_EQ(identity.machineId, report.machineId);
  EXPECT_EQ(identity.customerId, "Kelvane");
  EXPECT_EQ(identity.applicationId, report.applicationId);
  EXPECT_EQ(identity.applicationVersion, report.applicationVersion);
  EXPECT_EQ(identity.pools, report.pools);
}

TEST(ReportContentTest, ReadsThePlainFormToo) {
  const ReportIdentity identity =
      readIdentity(zt::test::plainReportOf(zt::test::crlf(zt::test::plainPool(""))));
  EXPECT_EQ(identity.reportId, "{R}");
  EXPECT_EQ(identity.customerId, "Kelvane");
  EXPECT_EQ(identity.pools, Pools{"CUSTOM"});
}

TEST(ReportContentTest, GivesUnescapedValuesAsTheyStand) {
  for (const char* value : {"", "a&b", "a<b", "<CustomerID>", "x</CustomerID>y", "&lt;", "(null)",
                            "<ApplicationID>no</ApplicationID>", "a\r\nb", "\xff\xfe", "]]>"}) {
    SampleReport report;
    report.customerId = value;
    const ReportIdentity identity = readIdentity(report.text());
    EXPECT_EQ(identity.customerId, value);
    EXPECT_EQ(identity.applicationId, report.applicationId) << value;
    EXPECT_EQ(identity.pools, report.pools) << value;
  }
}

TEST(ReportContentTest, AValueThatQuotesAReportAddsNothing) {
  SampleReport quoted;
  quoted.pools = {"QUOTED"};
  for (const std::string& value :
       {std::string("<Data Pool=\"QUOTED\">"), std::string("\r\n    <Data Pool=\"QUOTED\">\r\n"),
        std::string("\n<CustomerID>Other</CustomerID>\n")}) {
    SampleReport report;
    report.value = value;
    const ReportIdentity identity = readIdentity(report.text());
    EXPECT_EQ(identity.pools, Pools{"EXECUTION"}) << value;
    EXPECT_EQ(identity.customerId, "Kelvane") << value;
  }
}

TEST(ReportContentTest, ATextThatIsNotAReportHasNoIdentity) {
  for (const char* text :
       {"", "\n", "<", "<ReportID>", "<Data Pool=\"", "<Datas>\n<Data Pool=\"A\n",
        "<Envelope><Body><postPoolDatas><reportData><ReportID>{R}</ReportID></reportData>"}) {
    const ReportIdentity identity = readIdentity(text);
    EXPECT_FALSE(identity.reportId || identity.machineId || identity.customerId) << text;
    EXPECT_EQ(identity.pools.size(), 0U) << text;
  }
}

TEST(ReportContentTest, KeepsWhatComesBeforeAnError) {
  const SampleReport report;
  std::string text = report.text();
  text.resize(text.find("<CustomerID"));
  EXPECT_EQ(readIdentity(text).machineId, report.machineId);
  EXPECT_EQ(readIdentity(text).customerId, std::nullopt);
}

/// The test's time limit detects a search that starts over and over again.
TEST(ReportContentTest, ReadsHostileReportsInLinearTime) {
  const std::string text = SampleReport().text();
  const std::string head = text.substr(0, text.find("           <Data "));
  for (const char* piece : {"<ReportID ", "<ReportID>\n", "<Data Pool=\"", "\n", "<", "</ReportID>",
                            "<CustomerID>\r\n<ReportID>\r\n"}) {
    EXPECT_EQ(readIdentity(repeated(piece, kLargestReport / 8)).reportId, std::nullopt) << piece;
    EXPECT_TRUE(readIdentity(head + repeated(piece, kLargestReport / 8)).reportId) << piece;
  }
  EXPECT_EQ(readIdentity(std::string(kLargestReport, '\0')).reportId, std::nullopt);
}

TEST(ReportContentTest, ListsALimitedNumberOfPools) {
  SampleReport report;
  report.pools.assign(zt::inbox::kMostPools + 5, "P");
  EXPECT_EQ(readIdentity(report.text()).pools.size(), zt::inbox::kMostPools);
}

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

TEST(ReportContentTest, TellsHowAnExecutionWent) {
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

TEST(ReportContentTest, AStepLastsUntilItIsLeft) {
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

TEST(ReportContentTest, WithoutTimesThereAreNoDurations) {
  const auto run = ZtPortalPoolExecution::initWithValues(ZtDate());
  run->addStep(ZtDate(), "Copy", ZtPortalStepEnter);
  run->addStep(after(5), "Copy", ZtPortalStepLeave);
  EXPECT_EQ(shown(*run), "succeeded -\nCopy ENTER   - -\nCopy LEAVE   - -\n");
}

TEST(ReportContentTest, OtherPoolsTellNothing) {
  EXPECT_EQ(shown(*ZtPortalPool::initWithValues("CUSTOM", after(0))), "no run");
  EXPECT_EQ(shown(*ZtPortalPool::initWithValues("execution", after(0))), "no run");
}

TEST(ReportContentTest, ReadsTheStepsOfADiagnosis) {
  const auto diagnose = ZtPortalPoolDiagnose::initWithValues(after(0));
  diagnose->addStep(after(5), "A", ZtPortalDiagnoseManual)->setSuccessfullRepair(1);
  const auto failed = diagnose->addStep(after(6), "B", ZtPortalDiagnoseManual);
  failed->setSuccessfullRepair(0);
  failed->setStepMessageString("m");
  failed->setStepMessageCode("c");
  EXPECT_EQ(shown(*diagnose), "- -\nA MANUAL   - -\nB MANUAL m c failed - -\n");
}

TEST(ReportContentTest, StepsAreARunsOwnList) {
  // A generic array may have the same name, and a pool of a run's type may be anything.
  const auto run = ZtPortalPool::initWithValues("EXECUTION", after(0));
  run->addArray("INSTALLATIONSTEPS")->addString("STEP_NAME", "Copy");
  EXPECT_EQ(shown(*run), "- -\n");
}

}  // namespace
