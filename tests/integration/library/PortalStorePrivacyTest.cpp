#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/ScopedUmask.h"
#include "tests/support/Subprocess.h"

// Saved reports are their owner's alone, and stay where they belong.

namespace zt::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kNoServer = "";

class PortalStorePrivacyTest : public RealPortalTest {};

TEST_F(PortalStorePrivacyTest, ASavedReportIsItsOwnersAloneWhateverTheUmask) {
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

TEST_F(PortalStorePrivacyTest, AnotherUserSeesNothingOfSavedReports) {
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
    if (LinuxFiles().read(file)) return 3;
    struct stat status {};
    if (::stat(file.c_str(), &status) == 0 || errno != EACCES) return 4;
    if (LinuxFiles().write(file, "x") || LinuxFiles().remove(file)) return 5;
    if (LinuxFiles().write(store() + "/planted.ztr", "x")) return 6;
    return ::symlink("/etc", (store() + "/planted").c_str()) == 0 ? 7 : 0;
  });
  if (failed == kNotPermitted) GTEST_SKIP() << "another user cannot be taken";
  EXPECT_EQ(failed, 0);
  EXPECT_EQ(content(file), report->getSoapString());
}

TEST_F(PortalStorePrivacyTest, AReportOfAnOpenFolderIsStillItsOwnersAlone) {
  // A store that was made by something else.
  fs::create_directories(store());
  ASSERT_EQ(::chmod(store().c_str(), 0755), 0);
  const auto report = makeReport(kNoServer);
  report->saveReport();
  EXPECT_EQ(modeOf(store()), 0755U);
  EXPECT_EQ(modeOf(fileOf(*report)), 0600U);
}

TEST_F(PortalStorePrivacyTest, ALinkInTheStoresPlaceLeadsNothingOut) {
  for (const char* planted : {"Kelvane", "Kelvane/Setup", "Kelvane/Setup/reports"}) {
    const TemporaryFolder outside;
    fs::create_directories(outside.path("Setup/reports"));
    outside.write("old.ztr", "<kept/>");
    outside.write("reports/old.ztr", "<kept/>");
    outside.write("Setup/reports/old.ztr", "<kept/>");
    fs::create_directories(fs::path(data.path(planted)).parent_path());
    fs::create_symlink(outside.path(), data.path(planted));

    const ReportingServer server;
    const auto report = makeReport(server.configurationUrl());
    report->saveReport();
    EXPECT_TRUE(report->reportFile().isNull()) << planted;
    EXPECT_FALSE(report->sendSavedReports()) << planted;

    std::size_t files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(outside.path())) {
      if (!entry.is_regular_file()) continue;
      EXPECT_EQ(entry.path().filename(), "old.ztr") << planted;
      EXPECT_EQ(content(entry.path()), "<kept/>") << planted;
      ++files;
    }
    EXPECT_EQ(files, 3U) << planted;
    for (const std::string& request : server.requests()) {
      EXPECT_EQ(request.find("kept"), std::string::npos) << planted;
    }
    fs::remove_all(data.path("Kelvane"));
  }
}

TEST_F(PortalStorePrivacyTest, ALinkInAReportsPlaceIsNotWrittenThrough) {
  const auto report = makeReport(kNoServer);
  fs::create_directories(store());
  const std::string target = data.write("target", "kept");
  fs::create_symlink(target, fileOf(*report));
  report->saveReport();
  EXPECT_EQ(content(target), "kept");
  EXPECT_TRUE(fs::is_symlink(fileOf(*report)));
}

TEST_F(PortalStorePrivacyTest, TheUsersDataFolderMayBeALink) {
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
