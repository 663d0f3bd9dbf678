// SPDX-License-Identifier: Apache-2.0
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/ScopedUmask.h"
#include "tests/support/Subprocess.h"

// The offline store on real file systems: on full and read-only ones, among other users, and with
// links in its way. What needs other rights or limits runs in a forked process, whose exit status
// is the number of the expectation that failed.

namespace zt::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kNoServer = "";

class PortalStoreTest : public RealPortalTest {
 protected:
  std::shared_ptr<ZtPortalData> makeLargeReport() const {
    auto document = makeReport(kNoServer);
    document->addPool("CUSTOM", ZtDate::now())->addString("LOG", std::string(300'000, 'x'));
    return document;
  }

  bool mountDataFolder(const char* options) const {
    return ::unshare(CLONE_NEWNS) == 0 &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("none", data.path().c_str(), "tmpfs", 0, options) == 0;
  }

  /// 0 when a report too large for the file system leaves no file and the others unchanged.
  int saveLargeAmongOthers() const {
    const auto first = makeReport(kNoServer);
    first->saveReport();
    const auto large = makeLargeReport();
    large->saveReport();
    if (content(fileOf(*large)).has_value()) return 1;
    if (large->reportToServer() || content(fileOf(*large)).has_value()) return 2;
    if (large->reportToFile(data.path("large.xml"))) return 3;
    if (content(data.path("large.xml")).has_value()) return 4;
    const auto last = makeReport(kNoServer);
    last->saveReport();
    if (content(fileOf(*first)) != first->getSoapString()) return 5;
    if (content(fileOf(*last)) != last->getSoapString()) return 6;
    return stored().size() == 2 ? 0 : 7;
  }
};

TEST_F(PortalStoreTest, AFullFileSystemHasNoPartialReport) {
  const int failed = inForkedProcess([this] {
    if (!mountDataFolder("size=64k")) return kNotPermitted;
    return saveLargeAmongOthers();
  });
  if (failed == kNotPermitted) GTEST_SKIP() << "mounting is not permitted";
  EXPECT_EQ(failed, 0);
}

TEST_F(PortalStoreTest, ALimitOnTheSizeOfFilesLeavesNoPartialReport) {
  const int failed = inForkedProcess([this] {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{64 * 1024, 64 * 1024};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return kNotPermitted;
    return saveLargeAmongOthers();
  });
  EXPECT_EQ(failed, 0);
  EXPECT_EQ(stored().size(), 2U);
}

TEST_F(PortalStoreTest, AReadOnlyStoreIsSilent) {
  const int failed = inForkedProcess([this] {
    if (!mountDataFolder("")) return kNotPermitted;
    const auto first = makeReport(kNoServer);
    first->saveReport();
    const std::string before = first->getSoapString();
    if (content(fileOf(*first)) != before) return 1;
    if (::mount("none", data.path().c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, "") != 0) {
      return kNotPermitted;
    }
    first->addPool("CUSTOM", ZtDate::now());
    first->saveReport();
    if (content(fileOf(*first)) != before) return 2;
    const auto second = makeReport(kNoServer);
    second->saveReport();
    if (second->reportToServer()) return 3;
    if (second->reportToFile(data.path("report.xml"))) return 4;
    if (second->sendSavedReports()) return 5;
    return stored().size() == 1 && !content(data.path("report.xml")) ? 0 : 6;
  });
  if (failed == kNotPermitted) GTEST_SKIP() << "mounting is not permitted";
  EXPECT_EQ(failed, 0);
}

TEST_F(PortalStoreTest, OnlyTheOwnerMayReadASavedReportWhateverTheUmask) {
  for (const mode_t mask : {0U, 022U, 077U, 0777U}) {
    const ScopedUmask umask(mask);
    const auto report = makeReport(kNoServer);
    report->saveReport();
    EXPECT_EQ(content(fileOf(*report)), report->getSoapString()) << mask;
    EXPECT_EQ(modeOf(fileOf(*report)), 0600U) << mask;
    EXPECT_EQ(modeOf(store()), 0700U) << mask;
    fs::remove_all(data.path("Kelvane"));
  }
}

TEST_F(PortalStoreTest, AnotherUserSeesNothingOfSavedReports) {
  const ScopedUmask umask(0);
  const auto report = makeReport(kNoServer);
  report->saveReport();
  const std::string file = fileOf(*report);
  ASSERT_TRUE(content(file));
  ASSERT_EQ(::chmod(data.path().c_str(), 0755), 0);
  const int failed = inForkedProcess([&] {
    constexpr uid_t kNobody = 65534;
    if (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) return kNotPermitted;
    // The folder of the host can be seen, what is in the store cannot.
    if (::access(data.path("Kelvane/Setup").c_str(), R_OK) != 0) return 1;
    if (LinuxFiles().list(store())) return 2;
    if (LinuxFiles().read(file, kReportFileLimit)) return 3;
    struct stat status {};
    if (::stat(file.c_str(), &status) == 0 || errno != EACCES) return 4;
    if (LinuxFiles().write(file, "x") || LinuxFiles().remove(file)) return 5;
    if (LinuxFiles().write(store() + "/planted.ztr", "x")) return 6;
    return ::symlink("/etc", (store() + "/planted").c_str()) == 0 ? 7 : 0;
  });
  if (failed == kNotPermitted) GTEST_SKIP() << "changing the user is not permitted";
  EXPECT_EQ(failed, 0);
  EXPECT_EQ(content(file), report->getSoapString());
}

TEST_F(PortalStoreTest, OnlyTheOwnerMayReadAReportInAFolderOpenToOthers) {
  // A folder that another program created.
  fs::create_directories(store());
  ASSERT_EQ(::chmod(store().c_str(), 0755), 0);
  const auto report = makeReport(kNoServer);
  report->saveReport();
  EXPECT_EQ(modeOf(store()), 0755U);
  EXPECT_EQ(modeOf(fileOf(*report)), 0600U);
}

// Regression: with a link in place of one of its folders there was no store, and every report that
// the server refused was lost.
TEST_F(PortalStoreTest, AFolderOfTheStoreMayBeALink) {
  for (const std::string link : {"Kelvane", "Kelvane/Setup", "Kelvane/Setup/reports"}) {
    const TemporaryFolder elsewhere;
    fs::create_directories(fs::path(data.path(link)).parent_path());
    fs::create_symlink(elsewhere.path(), data.path(link));
    const auto report = makeReport(kNoServer);
    EXPECT_FALSE(report->reportToServer()) << link;
    EXPECT_EQ(content(fileOf(*report)), report->getSoapString()) << link;
    EXPECT_EQ(std::string(report->reportFile().view()), fileOf(*report)) << link;

    const ReportingServer server;
    makeReport(server.configurationUrl())->sendSavedReports();
    EXPECT_FALSE(fs::exists(fileOf(*report))) << link;
    fs::remove_all(data.path("Kelvane"));
  }
}

TEST_F(PortalStoreTest, ALinkToNoFolderIsNoStore) {
  data.write("file", "kept");
  for (const char* target : {"missing", "file"}) {
    fs::create_directories(data.path("Kelvane/Setup"));
    fs::create_symlink(data.path(target), store());
    const auto report = makeReport(kNoServer);
    report->saveReport();
    EXPECT_TRUE(report->reportFile().isNull()) << target;
    EXPECT_FALSE(report->sendSavedReports()) << target;
    fs::remove_all(data.path("Kelvane"));
  }
  EXPECT_EQ(content(data.path("file")), "kept");
}

TEST_F(PortalStoreTest, ALinkInPlaceOfAReportIsNotFollowed) {
  const auto report = makeReport(kNoServer);
  fs::create_directories(store());
  const std::string target = data.write("target", "kept");
  fs::create_symlink(target, fileOf(*report));
  report->saveReport();
  EXPECT_EQ(content(target), "kept");
  EXPECT_TRUE(fs::is_symlink(fileOf(*report)));
}

// Regression: a FIFO in a file's place was waited for without end, and a device or an enormous file
// was read until the memory was exhausted.
TEST_F(PortalStoreTest, WhatIsNoRegularFileOfALimitedSizeIsUnreadable) {
  const ReportingServer server;
  const auto report = makeReport(server.configurationUrl());
  fs::create_directories(store());
  const std::string file = store() + "/x.ztr";
  const std::function<void()> rows[] = {
      [&] { ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0); },
      [&] { fs::create_symlink("/dev/zero", file); },
      [&] {
        data.write("Kelvane/Setup/reports/x.ztr", "<report/>");
        fs::resize_file(file, std::uintmax_t{3} << 30U);
      },
  };
  for (const auto& make : rows) {
    make();
    EXPECT_FALSE(report->sendSavedReport(file));
    EXPECT_FALSE(report->sendSavedReports());
    EXPECT_TRUE(fs::remove(file));
  }

  ASSERT_EQ(::mkfifo(fileOf(*report).c_str(), 0600), 0);
  report->saveReport();
  EXPECT_TRUE(fs::is_fifo(fileOf(*report)));

  ASSERT_EQ(::mkfifo(data.path("(null)configuration.xml").c_str(), 0600), 0);
  const fs::path before = fs::current_path();
  fs::current_path(data.path());
  EXPECT_TRUE(
      ZtPortalData::initWithValues(server.configurationUrl(), true, "Kelvane", nullptr, nullptr)
          ->gotConfiguration());
  fs::current_path(before);
}

TEST_F(PortalStoreTest, AReportInAFileHasTheModeThatTheUmaskLeaves) {
  const ScopedUmask umask(022);
  const auto report = makeReport(kNoServer);
  fs::create_symlink("report.xml", data.path("link"));
  EXPECT_FALSE(report->reportToFile(data.path("link")));
  EXPECT_EQ(content(data.path("report.xml")), report->getSoapString());
  EXPECT_EQ(modeOf(data.path("report.xml")), 0644U);
}

TEST_F(PortalStoreTest, TheUsersDataFolderMayBeALink) {
  const TemporaryFolder disk;
  fs::create_symlink(disk.path(), data.path("linked"));
  const ScopedEnvironment environment("XDG_DATA_HOME", data.path("linked").c_str());
  const auto report = makeReport(kNoServer);
  report->saveReport();
  EXPECT_EQ(content(std::string(report->reportFile().view())), report->getSoapString());
  EXPECT_TRUE(fs::exists(disk.path("Kelvane/Setup/reports")));
}

}  // namespace
}  // namespace zt::test
