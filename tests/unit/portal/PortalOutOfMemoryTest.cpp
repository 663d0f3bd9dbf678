// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>

#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/base/CountedMemory.h"
#include "tests/unit/portal/PortalTest.h"
#include "ztportal/platform/files/LinuxFiles.h"
#include "ztportal/pools/ZtPortalPoolExecution.h"
#include "ztportal/report/ZtReport.h"

// Regression: std::bad_alloc left operations that report every failure by false, null, an empty
// text or not at all, or even ended the process.

namespace zt::test {
namespace {

/// Calls `call` with ever more memory until it needs no more, and `check` after each call. No
/// exception may leave `call`. Returns the number of its allocations.
long withEverMoreMemory(const std::function<void()>& call, const std::function<void()>& check) {
  for (long allocations = 0;; ++allocations) {
    bool isThrown = false;
    allocationsLeft = allocations;
    try {
      call();
    } catch (const std::bad_alloc&) {
      isThrown = true;
    }
    const bool isEnough = allocationsLeft > 0;
    allocationsLeft = -1;
    EXPECT_FALSE(isThrown) << "allocation " << allocations;
    check();
    if (isEnough) return allocations;
  }
}

/// The store is on a real disk.
class PortalOutOfMemoryTest : public PortalTest {
 protected:
  PortalOutOfMemoryTest() {
    platform.replacedFiles = &_files;
    platform.supportFolder_.folder = folder.path();
    platform.http_.asked.reserve(10'000);
    steps.reserve(10'000);
  }

  std::string fileOf(const ZtPortalData& document) const {
    return folder.path("Kelvane/Setup/reports/") + std::string(document.reportId().view()) + ".ztr";
  }
  static std::optional<std::string> content(const std::string& file) {
    return regularFile(file, kReportFileLimit);
  }

  std::shared_ptr<ZtPortalData> makeLargeDocument() {
    auto document = makeDocumentWithPool();
    document->addPoolExecution(ZtDate())->addString("LOG", std::string(100'000, 'x'));
    return document;
  }

  TemporaryFolder folder;

 private:
  LinuxFiles _files;
};

TEST_F(PortalOutOfMemoryTest, AReportIsMadeOrNot) {
  std::shared_ptr<ZtReport> run;
  const long allocations = withEverMoreMemory(
      [&] { run = ZtReport::initWithCustomerAndGuid(REP_CUSTOMERID_ZT, nullptr); },
      [&] { EXPECT_TRUE(run == nullptr || run->data()->reportId().view().size() == 38); });
  EXPECT_GT(allocations, 50);
  EXPECT_TRUE(run->data()->online());

  const ZtString url = kConfigurationUrl;
  std::shared_ptr<ZtPortalData> document;
  withEverMoreMemory(
      [&] { document = ZtPortalData::initWithValues(url, true, nullptr, nullptr, nullptr); },
      [&] { EXPECT_TRUE(document == nullptr || document->reportId().view().size() == 38); });
  EXPECT_TRUE(document->online());
}

TEST_F(PortalOutOfMemoryTest, ARunIsStartedOrNot) {
  const auto run = ZtReport::initWithCustomerAndGuid(REP_CUSTOMERID_ZT, nullptr);
  const ZtString point = "point";
  withEverMoreMemory(
      [&] {
        run->startReport(point);
        run->stopReport(point);
      },
      [&] { EXPECT_LE(run->data()->pools().size(), 2U); });
  EXPECT_EQ(run->poolExecution()->endPoint(), point);
}

TEST_F(PortalOutOfMemoryTest, ATextIsWholeOrEmpty) {
  const auto document = makeLargeDocument();
  const std::string whole = requestOf(*document);
  std::string text;
  withEverMoreMemory([&] { text = document->getSoapString(); },
                     [&] { EXPECT_TRUE(text.empty() || text == whole); });
  EXPECT_EQ(text, whole);
  withEverMoreMemory([&] { text = document->generateXml(nullptr, false); }, [] {});
  EXPECT_FALSE(text.empty());
}

TEST_F(PortalOutOfMemoryTest, AReportIsAcceptedOrSavedWholeOrNotAtAll) {
  const auto document = makeLargeDocument();
  const std::string whole = requestOf(*document);
  report = {200, kRefused};
  bool isAccepted = false;
  const auto send = [&] { isAccepted = document->reportToServer(); };
  withEverMoreMemory(send, [&] {
    EXPECT_FALSE(isAccepted);
    EXPECT_TRUE(content(fileOf(*document)).value_or(whole) == whole);
    std::filesystem::remove(fileOf(*document));
    EXPECT_TRUE(requestOf(*document) == whole);
  });
  report = {200, kAccepted};
  withEverMoreMemory(send, [] {});
  EXPECT_TRUE(isAccepted);
}

TEST_F(PortalOutOfMemoryTest, ASavedReportStaysWhole) {
  const auto document = makeLargeDocument();
  document->saveReport();
  const std::string whole = requestOf(*document);
  const auto check = [&] { EXPECT_TRUE(content(fileOf(*document)) == whole); };
  withEverMoreMemory([&] { document->saveReport(); }, check);

  const std::string other = folder.path("report.xml");
  const ZtString path = other;
  withEverMoreMemory([&] { EXPECT_FALSE(document->reportToFile(path)); },
                     [&] { EXPECT_TRUE(content(other).value_or(whole) == whole); });
  EXPECT_TRUE(content(other) == whole);
}

TEST_F(PortalOutOfMemoryTest, SavedReportsStayUntilTheyAreAccepted) {
  const auto first = makeLargeDocument();
  const auto second = makeLargeDocument();
  const auto sender = makeDocument();
  long sent = 0;
  platform.http_.answer = [&](const FakeHttpTransport::Asked& asked) {
    sent += asked.url == "http://report.test/soap" ? 1 : 0;
    return HttpResponse{200, kAccepted};
  };
  const auto save = [&] {
    first->saveReport();
    second->saveReport();
    sent = 0;
  };
  save();
  withEverMoreMemory([&] { EXPECT_FALSE(sender->sendSavedReports()); },
                     [&] {
                       const long left = content(fileOf(*first)).has_value() +
                                         content(fileOf(*second)).has_value();
                       EXPECT_GE(left + sent, 2);
                       save();
                     });
}

TEST_F(PortalOutOfMemoryTest, AReportOfARunIsSentOrNot) {
  const auto run = ZtReport::initWithCustomerAndGuid(REP_CUSTOMERID_ZT, nullptr);
  run->startReport("start");
  bool isAccepted = false;
  withEverMoreMemory([&] { isAccepted = run->sendReport(true); }, [] {});
  EXPECT_TRUE(isAccepted);
  EXPECT_TRUE(run->sendReport(false));
}

// On this machine itself, without fakes.
TEST(PortalOutOfMemoryOnThisMachineTest, ADocumentIsMadeOrNotAndSendsNothing) {
  const TemporaryFolder folder;
  const ScopedEnvironment data("XDG_DATA_HOME", folder.path().c_str());
  std::shared_ptr<ZtPortalData> document;
  withEverMoreMemory(
      [&] { document = ZtPortalData::initWithValues(nullptr, false, nullptr, nullptr, nullptr); },
      [] {});
  document->addPool("CUSTOM", ZtDate());
  document->saveReport();
  const std::string saved(document->reportFile().view());
  const std::string whole = document->getSoapString();
  withEverMoreMemory(
      [&] {
        EXPECT_FALSE(document->sendSavedReports());
        EXPECT_FALSE(document->reportToServer());
      },
      [&] { EXPECT_TRUE(regularFile(saved, kReportFileLimit) == whole); });
}

}  // namespace
}  // namespace zt::test
