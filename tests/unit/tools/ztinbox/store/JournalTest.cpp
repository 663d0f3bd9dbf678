// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/TemporaryFolder.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"
#include "tools/ztinbox/store/Database.h"
#include "tools/ztinbox/store/Journal.h"
#include "tools/ztinbox/store/StoredReport.h"

namespace {

using std::chrono::milliseconds;
using zt::inbox::IncomingReport;
using zt::inbox::Journal;
using zt::inbox::takeRecord;

using Numbers = std::vector<std::uint64_t>;

IncomingReport numbered(std::uint64_t number, std::string value = "Home") {
  zt::test::SampleReport sample;
  sample.value = std::move(value);
  IncomingReport report;
  report.read(sample.text());
  report.packedBody = zt::inbox::packed(sample.text());
  report.report.number = number;
  return report;
}

std::string recordOf(const IncomingReport& report) {
  std::string bytes;
  appendRecord(bytes, report);
  return bytes;
}

class JournalTest : public ::testing::Test {
 protected:
  /// The reports that a program finds if it starts now.
  Numbers left(std::uint64_t after = 0) const {
    Numbers numbers;
    for (const IncomingReport& report : Journal(folder()).after(after)) {
      numbers.push_back(report.report.number);
    }
    return numbers;
  }
  const std::string& folder() const { return _folder.path(); }
  std::uintmax_t bytesOnDisk() const {
    return std::filesystem::file_size(_folder.path("journal.0")) +
           std::filesystem::file_size(_folder.path("journal.1"));
  }

 private:
  zt::test::TemporaryFolder _folder;
};

TEST_F(JournalTest, ARecordGivesTheReportBack) {
  IncomingReport report = numbered(7, std::string("a\0\xff<&>\r\nb", 9));
  report.report.received = zt::inbox::Timestamp(milliseconds(1'795'262'400'123));
  report.report.test = true;
  report.report.answer = {zt::inbox::AnswerKind::kError, 503};
  report.report.sender = "[::1]:7";
  report.head = std::string("POST /soap HTTP/1.1\r\n\0", 22);
  const std::string bytes = recordOf(report) + "rest";
  std::string_view rest = bytes;
  const auto taken = takeRecord(rest);
  ASSERT_TRUE(taken);
  EXPECT_EQ(rest, "rest");
  EXPECT_EQ(taken->report.number, 7U);
  EXPECT_EQ(taken->report.received, report.report.received);
  EXPECT_TRUE(taken->report.test);
  EXPECT_EQ(taken->report.answer, report.report.answer);
  EXPECT_EQ(taken->report.sender, "[::1]:7");
  EXPECT_EQ(taken->report.size, report.report.size);
  EXPECT_EQ(taken->report.identity.customerId, "Kelvane") << "read out of the text again";
  EXPECT_EQ(taken->report.identity.pools, std::vector<std::string>{"EXECUTION"});
  EXPECT_EQ(taken->head, report.head);
  EXPECT_EQ(taken->packedBody, report.packedBody);
}

TEST_F(JournalTest, APartOfARecordIsNone) {
  const std::string whole = recordOf(numbered(1));
  for (std::size_t length = 0; length < whole.size(); ++length) {
    std::string_view part = std::string_view(whole).substr(0, length);
    EXPECT_FALSE(takeRecord(part)) << length;
    EXPECT_EQ(part.size(), length);
  }
}

TEST_F(JournalTest, AByteThatDidNotReachTheDiskIsNoticed) {
  const std::string whole = recordOf(numbered(1));
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string damaged = whole;
    damaged[at] = static_cast<char>(damaged[at] ^ 0x10);
    std::string_view rest = damaged;
    EXPECT_FALSE(takeRecord(rest)) << at;
  }
}

TEST_F(JournalTest, WhatWasAppendedIsThereWhenTheProgramEnds) {
  Journal journal(folder());
  for (const std::uint64_t number : {4U, 5U}) journal.append(numbered(number));
  journal.turn();
  journal.append(numbered(6));
  EXPECT_EQ(left(), (Numbers{4, 5, 6}));
  EXPECT_EQ(left(4), (Numbers{5, 6})) << "the database has the others";
  EXPECT_EQ(left(6), Numbers{});
}

TEST_F(JournalTest, AFileThatStartsOverIsWrittenOver) {
  Journal journal(folder());
  std::uint64_t number = 0;
  for (int turn = 0; turn < 6; ++turn) {
    // Longer and shorter ones, so that they do not end where the overwritten ones did.
    for (int i = 0; i < 3; ++i) {
      ++number;
      journal.append(numbered(number, std::string(number * 37 % 100, 'x')));
    }
    EXPECT_EQ(left(number - 3), (Numbers{number - 2, number - 1, number}));
    journal.turn();
    journal.forget();
  }
  EXPECT_LE(bytesOnDisk(), 2U * 1024 * 1024) << "it does not grow";
}

TEST_F(JournalTest, ItHoldsALot) {
  Journal journal(folder());
  IncomingReport report = numbered(0);
  report.head = std::string(1'000'000, 'x');
  Numbers expected;
  for (std::uint64_t number = 1; number <= 60; ++number) {
    report.report.number = number;
    journal.append(report);
    expected.push_back(number);
  }
  EXPECT_EQ(left(), expected);
  report.head.resize(10'000'000);
  try {
    journal.append(report);
    FAIL();
  } catch (const zt::inbox::DatabaseFault& fault) {
    EXPECT_EQ(std::string(fault.what()), folder() + "/journal.0: File too large");
  }
  EXPECT_EQ(left(), expected);
}

TEST_F(JournalTest, ClearedItTakesNoRoom) {
  Journal journal(folder());
  journal.append(numbered(1));
  journal.turn();
  journal.append(numbered(2));
  journal.clear();
  EXPECT_EQ(bytesOnDisk(), 0U);
  EXPECT_EQ(left(), Numbers{});
  journal.append(numbered(3));
  EXPECT_EQ(left(), Numbers{3});
}

TEST_F(JournalTest, AFolderThatIsNotThereIsToldByItsFile) {
  try {
    const Journal journal(folder() + "/none");
    FAIL();
  } catch (const zt::inbox::DatabaseFault& fault) {
    EXPECT_EQ(std::string(fault.what()), folder() + "/none/journal.0: No such file or directory");
  }
}

}  // namespace
