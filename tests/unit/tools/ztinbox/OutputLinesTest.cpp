// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <string>
#include <utility>

#include "tests/support/ScopedEnvironment.h"
#include "tools/ztinbox/OutputLines.h"
#include "ztportal/base/FileDescriptor.h"

namespace {

using zt::FileDescriptor;
using zt::inbox::LineOutput;
using zt::test::ScopedEnvironment;

class Pipe {
 public:
  Pipe() {
    std::array<int, 2> ends{};
    EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK), 0);
    _readEnd = FileDescriptor(ends[0]);
    _writeEnd = FileDescriptor(ends[1]);
  }

  int writeEnd() const { return _writeEnd.number(); }
  std::string readAll() const {
    std::string text;
    std::array<char, 4096> part{};
    for (;;) {
      const ssize_t count = ::read(_readEnd.number(), part.data(), part.size());
      if (count <= 0) return text;
      text.append(part.data(), static_cast<std::size_t>(count));
    }
  }

 private:
  FileDescriptor _readEnd;
  FileDescriptor _writeEnd;
};

TEST(LineOutputTest, WritesALineAtOnce) {
  const Pipe pipe;
  LineOutput output(pipe.writeEnd());
  output.write("one");
  EXPECT_EQ(pipe.readAll(), "one\n");
  output.write("two");
  EXPECT_EQ(pipe.readAll(), "two\n");
}

TEST(LineOutputTest, WritesManyLinesTogether) {
  const Pipe pipe;
  LineOutput output(pipe.writeEnd());
  std::string lines;
  for (int i = 1'000; i < 3'000; ++i) lines += "line " + std::to_string(i) + "\n";
  output.write(std::string_view(lines).substr(0, lines.size() - 1));
  EXPECT_EQ(pipe.readAll(), lines);
  const std::string longOne(5'000, 'x');
  output.write(longOne + "\nshort");
  EXPECT_EQ(pipe.readAll(), longOne + "\nshort\n");
}

TEST(LineOutputTest, LeavesLinesOutWhenNobodyReadsAndSaysHowMany) {
  const Pipe pipe;
  LineOutput output(pipe.writeEnd());
  const std::string filling(4096, 'x');
  while (::write(pipe.writeEnd(), filling.data(), filling.size()) > 0) {
  }
  output.write("lost");
  output.write("lost too\nand lost");
  EXPECT_EQ(pipe.readAll().find("lost"), std::string::npos);
  output.write("back");
  EXPECT_EQ(pipe.readAll(), "(3 lines dropped)\nback\n");
  output.write("again");
  EXPECT_EQ(pipe.readAll(), "again\n");
}

using zt::inbox::AnswerKind;
using zt::inbox::StoredReport;

/// Everything after the time, which is local time.
std::string withoutTime(const std::string& line) {
  constexpr std::size_t kTimeLength = std::string_view("2026-11-21 12:00:00").size();
  return line.size() < kTimeLength ? line : line.substr(kTimeLength);
}

TEST(ReportLineTest, SaysWhatCame) {
  StoredReport report;
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

// The lines kept the time zone of the first one.
TEST(ReportLineTest, BeginsWithTheTimeInTheZoneOfTheMoment) {
  StoredReport report;
  report.received = std::chrono::system_clock::from_time_t(1'800'000'000);
  for (const auto& [zone, time] :
       {std::pair("UTC0", "2027-01-15 08:00:00"), std::pair("EST5", "2027-01-15 03:00:00")}) {
    const ScopedEnvironment environment("TZ", zone);
    EXPECT_EQ(zt::inbox::reportLine(report).substr(0, 19), time) << zone;
  }
}

TEST(ReportLineTest, ADashStandsForWhatIsMissing) {
  StoredReport report;
  report.number = 1;
  report.identity.customerId = "";
  EXPECT_EQ(withoutTime(zt::inbox::reportLine(report)), "  #1  accepted  -  - -  -  0 bytes");
}

TEST(ReportLineTest, IsCleanAndOfLimitedLength) {
  StoredReport report;
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
