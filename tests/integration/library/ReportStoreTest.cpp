// SPDX-License-Identifier: Apache-2.0
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/ScopedUmask.h"
#include "tests/support/Subprocess.h"
#include "ztportal/portal/ZtReportStore.h"

// ZtReportStore with real files, locks, processes and a real server.

namespace zt::test {
namespace {

namespace fs = std::filesystem;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class RealReportStoreTest : public RealPortalTest {
 protected:
  RealReportStoreTest() { options.configurationUrl = server.configurationUrl(); }

  void save(int count) const {
    for (int i = 0; i < count; ++i) makeReport("")->saveReport();
  }
  /// How often each report arrived.
  std::map<std::string, int> arrivals() const {
    std::map<std::string, int> counts;
    for (const std::string& request : server.requests()) {
      if (kindOf(request) != RequestKind::Report) continue;
      const std::size_t start = request.find('{', request.find("<ReportID"));
      ++counts[request.substr(start, request.find('}', start) - start)];
    }
    return counts;
  }

  const ReportingServer server;
  ZtSendOptions options;
};

TEST_F(RealReportStoreTest, TwoProcessesSendEachReportOnce) {
  constexpr int kReports = 100;
  save(kReports);
  // Sends one report each time that it gets the lock, until nothing is left.
  const auto sendAll = [this] {
    const ZtReportStore reports;
    options.progress = [](const auto&, const auto&) { return false; };
    while (!reports.list().empty()) {
      const ZtSendEnd end = reports.send(options).end;
      if (end == ZtSendEnd::Busy) std::this_thread::yield();
      if (end != ZtSendEnd::Busy && end != ZtSendEnd::Cancelled && end != ZtSendEnd::Done) return 1;
    }
    return 0;
  };
  const pid_t other = ::fork();
  const int status = sendAll();
  if (other == 0) ::_exit(status);
  EXPECT_EQ(status, 0);
  int otherStatus = -1;
  EXPECT_EQ(::waitpid(other, &otherStatus, 0), other);
  EXPECT_EQ(otherStatus, 0);
  EXPECT_THAT(stored(), IsEmpty());
  const auto counts = arrivals();
  EXPECT_THAT(counts, SizeIs(kReports));
  for (const auto& [id, count] : counts) EXPECT_EQ(count, 1) << id;
}

TEST_F(RealReportStoreTest, AKilledProcessLeavesNoLock) {
  save(3);
  const int status = inForkedProcess([this] {
    options.progress = [](const auto&, const auto&) -> bool {
      ::kill(::getpid(), SIGKILL);
      return true;
    };
    ZtReportStore().send(options);
    return 0;
  });
  EXPECT_EQ(status, 128 + SIGKILL);
  const ZtSendResult result = ZtReportStore().send(options);
  EXPECT_EQ(result.end, ZtSendEnd::Done);
  EXPECT_EQ(result.accepted, 2U);
  EXPECT_THAT(arrivals(), SizeIs(3));
}

// A child that the host starts while it sends does not keep the store locked.
TEST_F(RealReportStoreTest, AForkedChildKeepsNoLock) {
  save(1);
  pid_t child = -1;
  options.progress = [&child](const auto&, const auto&) {
    child = ::fork();
    if (child == 0) {
      for (;;) ::pause();
    }
    return true;
  };
  EXPECT_EQ(ZtReportStore().send(options).accepted, 1U);
  save(1);
  options.progress = nullptr;
  EXPECT_EQ(ZtReportStore().send(options).accepted, 1U);
  ASSERT_GT(child, 0);
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
}

TEST_F(RealReportStoreTest, SendsOldestFirstWhateverTheSystemLists) {
  save(5);
  std::vector<std::string> expected;
  const auto now = fs::file_time_type::clock::now();
  for (const std::string& name : stored()) {
    fs::last_write_time(store() + "/" + name, now - std::chrono::hours(expected.size()));
    expected.insert(expected.begin(), name.substr(0, name.find('.')));
  }
  std::vector<std::string> sent;
  options.progress = [&sent](const ZtSavedReport& saved, const ZtDelivery&) {
    sent.emplace_back(saved.reportId.view());
    return true;
  };
  EXPECT_EQ(ZtReportStore().send(options).accepted, 5U);
  EXPECT_EQ(sent, expected);
}

TEST_F(RealReportStoreTest, WhatIsNoRegularFileBlocksNothingAndIsSetAside) {
  save(1);
  const std::string fifo = store() + "/fifo.ztr";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  fs::create_symlink("/dev/zero", store() + "/device.ztr");
  fs::create_symlink("missing", store() + "/dangling.ztr");
  fs::create_directories(store() + "/folder.ztr/sub");
  for (const char* name : {"fifo.ztr", "folder.ztr"}) {
    fs::last_write_time(store() + "/" + name,
                        fs::file_time_type::clock::now() - std::chrono::minutes(1));
  }
  for (const ZtSavedReport& saved : ZtReportStore().list()) {
    EXPECT_EQ(saved.canBeSent(), saved.reportId.view().starts_with("{")) << saved.path;
  }
  options.attempts = 1;
  const ZtSendResult result = ZtReportStore().send(options);
  EXPECT_EQ(result.accepted, 1U);
  EXPECT_EQ(result.setAside, 4U);
  EXPECT_EQ(result.left, 0U);
  EXPECT_THAT(ZtReportStore().listUnsendable(), SizeIs(4));
}

TEST_F(RealReportStoreTest, TheStoreMayBeALinkToAnotherFileSystem) {
  const std::string elsewhere = "/dev/shm/ztportal-test-" + std::to_string(::getpid());
  std::error_code error;
  if (!fs::create_directories(elsewhere, error)) GTEST_SKIP() << "no other file system";
  fs::create_directories(data.path("Kelvane/Setup"));
  fs::create_symlink(elsewhere, store());
  save(2);
  const ZtReportStore reports;
  const ZtSavedReport first = reports.list().front();
  EXPECT_TRUE(reports.setAside(first));
  EXPECT_EQ(modeOf(data.path("Kelvane/Setup/unsendable")), 0700U);
  EXPECT_EQ(modeOf(reports.listUnsendable().front().path), 0600U);
  EXPECT_TRUE(reports.putBack(reports.listUnsendable().front()));
  EXPECT_EQ(reports.send(options).accepted, 2U);
  EXPECT_THAT(stored(), IsEmpty());
  fs::remove_all(elsewhere);
}

TEST_F(RealReportStoreTest, OnlyTheOwnerCanReadACopy) {
  save(1);
  const ZtReportStore reports;
  EXPECT_TRUE(reports.exportTo(reports.list().front(), data.path("copy.xml")));
  EXPECT_EQ(modeOf(data.path("copy.xml")), 0600U);
  EXPECT_EQ(content(data.path("copy.xml")), content(reports.list().front().path));
}

TEST_F(RealReportStoreTest, ListsTenThousandReportsWithoutReadingThem) {
  constexpr int kReports = 10'000;
  fs::create_directories(store());
  for (int i = 0; i < kReports; ++i) {
    data.write("Kelvane/Setup/reports/{" + std::to_string(i) + "}.ztr", "<a>");
  }
  const auto start = std::chrono::steady_clock::now();
  EXPECT_THAT(ZtReportStore().list(), SizeIs(kReports));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

}  // namespace
}  // namespace zt::test
