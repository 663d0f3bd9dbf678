#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include <string>
#include <vector>

#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/Subprocess.h"

// The offline store on file systems that take no more. Each is made in a forked child, whose exit
// status says which expectation failed.

namespace zt::test {
namespace {

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

  /// 0 when a report that finds no room leaves no file, and the others as they are.
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

TEST_F(PortalStoreTest, AFullFileSystemIsLeftWithoutHalfAReport) {
  const int failed = inForkedProcess([this] {
    if (!mountDataFolder("size=64k")) return kNotPermitted;
    return saveLargeAmongOthers();
  });
  if (failed == kNotPermitted) GTEST_SKIP() << "mounting is not permitted";
  EXPECT_EQ(failed, 0);
}

TEST_F(PortalStoreTest, ALimitOnFilesLeavesNoHalfReport) {
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

TEST_F(PortalStoreTest, AFileInPlaceOfTheStoreLosesTheReportSilently) {
  data.write("Kelvane/Setup/reports", "in the way");
  const auto document = makeReport(kNoServer);
  document->saveReport();
  EXPECT_FALSE(document->reportToServer());
  EXPECT_TRUE(document->reportFile().isNull());
  EXPECT_EQ(content(store()), "in the way");
}

TEST_F(PortalStoreTest, WritingAFileSaysFalseWithTheFileThere) {
  const auto document = makeReport(kNoServer);
  const std::string path = data.path("report.xml");
  EXPECT_FALSE(document->reportToFile(path));
  EXPECT_EQ(content(path), document->getSoapString());
  document->addPool("CUSTOM", ZtDate::now());
  EXPECT_FALSE(document->reportToFile(path));
  EXPECT_EQ(content(path), document->getSoapString());
}

TEST_F(PortalStoreTest, SavingAgainReplacesTheFile) {
  const auto document = makeLargeReport();
  document->saveReport();
  EXPECT_EQ(content(fileOf(*document)), document->getSoapString());
  document->addPoolExecution(ZtDate::now());
  document->saveReport();
  EXPECT_EQ(content(fileOf(*document)), document->getSoapString());
  EXPECT_EQ(stored().size(), 1U);
}

}  // namespace
}  // namespace zt::test
