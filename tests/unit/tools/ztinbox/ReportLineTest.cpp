#include <gtest/gtest.h>

#include <string>

#include "tools/ztinbox/ReportLine.h"

namespace {

using zt::inbox::AnswerKind;
using zt::inbox::Report;

/// Everything behind the time, which is the local one.
std::string withoutTime(const std::string& line) {
  constexpr std::size_t kTimeLength = std::string_view("2026-11-21 12:00:00").size();
  return line.size() < kTimeLength ? line : line.substr(kTimeLength);
}

TEST(ReportLineTest, SaysWhatCame) {
  Report report;
  report.number = 12;
  report.test = true;
  report.answer = {AnswerKind::kError, 503};
  report.identity.customerId = "Kelvane_Test";
  report.identity.applicationId = "{A}";
  report.identity.applicationVersion = "2.1.77";
  report.identity.pools = {"EXECUTION", "CUSTOM"};
  report.duplicateOf = 3;
  report.size = 2345;
  EXPECT_EQ(withoutTime(zt::inbox::reportLine(report)),
            "  #12  error 503  Kelvane_Test  {A} 2.1.77  EXECUTION, CUSTOM  2345 bytes  test  "
            "duplicate of #3");
}

TEST(ReportLineTest, BeginsWithTheLocalTime) {
  Report report;
  report.received = std::chrono::system_clock::from_time_t(1'800'000'000);
  const std::time_t time = 1'800'000'000;
  std::tm local{};
  localtime_r(&time, &local);
  char expected[32] = {};
  std::strftime(expected, sizeof(expected), "%F %T  #0", &local);
  EXPECT_EQ(zt::inbox::reportLine(report).substr(0, 23), expected);
}

TEST(ReportLineTest, ADashStandsForWhatIsMissing) {
  Report report;
  report.number = 1;
  report.identity.customerId = "";
  EXPECT_EQ(withoutTime(zt::inbox::reportLine(report)), "  #1  accepted  -  - -  -  0 bytes");
}

TEST(ReportLineTest, IsCleanAndOfLimitedLength) {
  Report report;
  report.identity.customerId = "a\x1b[31m\nb";
  report.identity.applicationId = std::string(100'000, 'i');
  report.identity.applicationVersion = std::string(100'000, '\xff');
  report.identity.pools = std::vector<std::string>(50'000, "P\r");
  const std::string line = zt::inbox::reportLine(report);
  EXPECT_NE(line.find("  a\\x1b[31m\\x0ab  iii"), std::string::npos) << line;
  EXPECT_NE(line.find("  P\\x0d, P\\x0d, "), std::string::npos) << line;
  EXPECT_LT(line.size(), 500U);
}

}  // namespace
