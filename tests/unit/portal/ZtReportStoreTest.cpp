// SPDX-License-Identifier: Apache-2.0
#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "tests/support/FailingFiles.h"
#include "tests/unit/portal/PortalTest.h"
#include "ztportal/portal/ZtReportStore.h"

namespace zt::test {
namespace {

using std::chrono::hours;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using SystemClock = std::chrono::system_clock;

constexpr const char* kUnsendable = "/home/user/.local/share/Kelvane/Setup/unsendable";

class ZtReportStoreTest : public PortalTest {
 protected:
  ~ZtReportStoreTest() override { ZtReportStore::setLimits({}); }

  /// A saved report that was written `age` ago.
  void save(const std::string& name, hours age, const std::string& content = "<a/>") {
    ASSERT_TRUE(platform.files_.createFolders(kReports));
    ASSERT_TRUE(platform.files_.write(inStore(name), content));
    platform.files_.setTime(inStore(name), _now - age);
  }
  static std::vector<std::string> idsOf(const std::vector<ZtSavedReport>& reports) {
    std::vector<std::string> ids;
    for (const ZtSavedReport& report : reports) ids.emplace_back(report.reportId.view());
    return ids;
  }
  std::vector<std::string> namesUnsendable() {
    return platform.files_.list(kUnsendable).value_or(std::vector<std::string>());
  }

 private:
  const SystemClock::time_point _now = SystemClock::now();
};

TEST_F(ZtReportStoreTest, ListsTheReportsOldestFirst) {
  save("{2}.ztr", hours(2), "<two/>");
  save("{1}.ztr", hours(1));
  save("{3}.ztr", hours(3));
  save("notes.txt", hours(4));
  const ZtReportStore store;
  EXPECT_EQ(store.folder(), kReports);
  const std::vector<ZtSavedReport> reports = store.list();
  ASSERT_THAT(idsOf(reports), ElementsAre("{3}", "{2}", "{1}"));
  EXPECT_EQ(reports[1].path, inStore("{2}.ztr"));
  EXPECT_EQ(reports[1].bytes, 6U);
  EXPECT_NEAR(std::chrono::duration<double>(SystemClock::now() - reports[1].time).count(), 7200,
              60);
}

TEST_F(ZtReportStoreTest, TellsTheCustomerAndWhetherAReportCanBeSent) {
  const auto document = makeDocumentWithPool("Norvantel");
  save("{1}.ztr", hours(1), document->getSoapString());
  save("{2}.ztr", hours(2), "<a>\n<CustomerID xsi='s'>Brisalink</CustomerID>\n</b>");
  save("{3}.ztr", hours(3), "<CustomerID>cut");
  save("{4}.ztr", hours(4), std::string("\0", 1));
  const std::vector<ZtSavedReport> reports = ZtReportStore().list();
  ASSERT_EQ(reports.size(), 4U);
  const std::pair<const char*, const char*> rows[] = {
      {nullptr, "a NUL byte"},
      {nullptr, "line 1, column 16: "},
      {"Brisalink", "line 3, column 1: "},
      {"Norvantel", ""},
  };
  for (std::size_t i = 0; i < reports.size(); ++i) {
    EXPECT_EQ(reports[i].customerId(), ZtString(rows[i].first)) << i;
    EXPECT_THAT(reports[i].problem(), ::testing::HasSubstr(rows[i].second)) << i;
    EXPECT_EQ(reports[i].canBeSent(), i == 3) << reports[i].problem();
  }
  platform.files_.remove(inStore("{1}.ztr"));
  EXPECT_TRUE(reports[3].customerId().isNull());
  EXPECT_EQ(reports[3].problem(), "cannot be read, or is no regular file of at most 64 MiB");
}

TEST_F(ZtReportStoreTest, RemovesAReport) {
  save("{1}.ztr", hours(1));
  save("{2}.ztr", hours(2));
  const ZtReportStore store;
  const ZtSavedReport oldest = store.list().front();
  EXPECT_TRUE(store.remove(oldest));
  EXPECT_FALSE(store.remove(oldest));
  EXPECT_THAT(namesInStore(), ElementsAre("{1}.ztr"));
}

TEST_F(ZtReportStoreTest, SetsAReportAsideAndPutsItBack) {
  save("{1}.ztr", hours(1), "<one/>");
  const ZtReportStore store;
  EXPECT_TRUE(store.setAside(store.list().front()));
  EXPECT_THAT(namesInStore(), IsEmpty());
  EXPECT_THAT(namesUnsendable(), ElementsAre("{1}.ztr"));
  save("{1}.ztr", hours(0), "<again/>");
  EXPECT_TRUE(store.setAside(store.list().front()));
  EXPECT_EQ(platform.files_.read(std::string(kUnsendable) + "/{1}-2.ztr", 99), "<again/>");

  const std::vector<ZtSavedReport> unsendable = store.listUnsendable();
  ASSERT_THAT(idsOf(unsendable), ElementsAre("{1}", "{1}-2"));
  EXPECT_TRUE(store.putBack(unsendable[0]));
  EXPECT_FALSE(store.putBack(unsendable[0]));
  EXPECT_EQ(platform.files_.read(inStore("{1}.ztr"), 99), "<one/>");
  EXPECT_TRUE(store.remove(unsendable[1]));
  EXPECT_THAT(namesUnsendable(), IsEmpty());
}

TEST_F(ZtReportStoreTest, SetsAReportAsideToAnotherFileSystem) {
  save("{1}.ztr", hours(1), "<one/>");
  FailingFiles files(platform.files_);
  files.failAlways(FailingFiles::Operation::Move);
  platform.replacedFiles = &files;
  const ZtReportStore store;
  EXPECT_TRUE(store.setAside(store.list().front()));
  EXPECT_THAT(namesInStore(), IsEmpty());
  EXPECT_EQ(platform.files_.read(std::string(kUnsendable) + "/{1}.ztr", 99), "<one/>");

  save("{2}.ztr", hours(1), "<two/>");
  files.failAlways(FailingFiles::Operation::Write);
  EXPECT_FALSE(store.setAside(store.list().front()));
  EXPECT_THAT(namesInStore(), ElementsAre("{2}.ztr"));
}

TEST_F(ZtReportStoreTest, CopiesAReportToAFolderOrANewFile) {
  save("{1}.ztr", hours(1), "<one/>");
  const ZtReportStore store;
  const ZtSavedReport saved = store.list().front();
  ASSERT_TRUE(platform.files_.createFolders("/out"));
  EXPECT_TRUE(store.exportTo(saved, "/out"));
  EXPECT_TRUE(store.exportTo(saved, "/out/one.xml"));
  EXPECT_FALSE(store.exportTo(saved, "/out")) << "replaces nothing";
  EXPECT_FALSE(store.exportTo(saved, inStore("{1}.ztr")));
  EXPECT_FALSE(store.exportTo(saved, "/missing/one.xml"));
  for (const std::string& path :
       {std::string("/out/{1}.ztr"), std::string("/out/one.xml"), inStore("{1}.ztr")}) {
    EXPECT_EQ(platform.files_.read(path, 99), "<one/>") << path;
  }
}

TEST_F(ZtReportStoreTest, RemovesEverythingThatIsStored) {
  save("{1}.ztr", hours(1));
  save("{2}.ztr", hours(2));
  save("{3}.ztr", hours(3));
  save("notes.txt", hours(1));
  const ZtReportStore store;
  EXPECT_TRUE(store.setAside(store.list().front()));
  EXPECT_EQ(store.removeAll(), 3U);
  EXPECT_THAT(namesInStore(), ElementsAre("notes.txt"));
  EXPECT_THAT(namesUnsendable(), IsEmpty());
}

TEST_F(ZtReportStoreTest, ThereIsNothingWithoutAFolder) {
  platform.supportFolder_.folder = std::nullopt;
  const ZtReportStore store;
  EXPECT_TRUE(store.folder().isNull());
  EXPECT_THAT(store.list(), IsEmpty());
  EXPECT_THAT(store.listUnsendable(), IsEmpty());
  EXPECT_EQ(store.removeAll(), 0U);
  EXPECT_EQ(store.enforceLimits(), 0U);
  EXPECT_FALSE(store.setAside({}));
  EXPECT_FALSE(store.putBack({}));
  EXPECT_FALSE(store.remove({}));
}

// Limits.

TEST_F(ZtReportStoreTest, TheOldestReportsBeyondALimitAreRemoved) {
  struct Row {
    ZtStoreLimits limits;
    std::vector<std::string> left;
  };
  const Row rows[] = {
      {{}, {"{1}", "{2}", "{3}", "{4}"}},
      {{4, 40, hours(5)}, {"{1}", "{2}", "{3}", "{4}"}},
      {{3, 0, hours(0)}, {"{1}", "{2}", "{3}"}},
      {{0, 39, hours(0)}, {"{1}", "{2}", "{3}"}},
      {{0, 19, hours(0)}, {"{1}"}},
      {{0, 1, hours(0)}, {}},
      {{0, 0, std::chrono::minutes(150)}, {"{1}", "{2}"}},
      {{3, 25, std::chrono::minutes(210)}, {"{1}", "{2}"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    const ZtReportStore store;
    ZtReportStore::setLimits({});
    for (int i = 1; i <= 4; ++i) {
      save("{" + std::to_string(i) + "}.ztr", hours(i), "<ten-byte>");
    }
    ZtReportStore::setLimits(row.limits);
    EXPECT_EQ(store.enforceLimits(), 4 - row.left.size());
    EXPECT_THAT(idsOf(store.list()), ::testing::UnorderedElementsAreArray(row.left));
  }
}

TEST_F(ZtReportStoreTest, LimitsHoldAfterEachSaveAndAreLogged) {
  std::vector<std::string> messages;
  ZtHost::setLogHandler(
      [&messages](ZtLogLevel level, std::string_view module, std::string_view message) {
        if (level == ZtLogLevel::Error)
          messages.push_back(std::string(module) + ": " + std::string(message));
      });
  for (int i = 1; i <= 3; ++i) save("{" + std::to_string(i) + "}.ztr", hours(i));
  ZtReportStore::setLimits({2, 0, hours(0)});
  EXPECT_EQ(ZtReportStore::limits().reports, 2U);
  const auto document = makeDocumentWithPool();
  document->saveReport();
  ZtHost::setLogHandler(nullptr);
  EXPECT_THAT(namesInStore(),
              UnorderedElementsAre("{1}.ztr", std::string(document->reportId().view()) + ".ztr"));
  EXPECT_THAT(messages, ElementsAre("store: 2 of the oldest reports removed for the limits from " +
                                    std::string(kReports)));
}

TEST_F(ZtReportStoreTest, LimitsHoldForUnsendableReportsToo) {
  for (int i = 1; i <= 3; ++i) save("{" + std::to_string(i) + "}.ztr", hours(i));
  const ZtReportStore store;
  for (const ZtSavedReport& saved : store.list()) ASSERT_TRUE(store.setAside(saved));
  ZtReportStore::setLimits({1, 0, hours(0)});
  EXPECT_EQ(store.enforceLimits(), 2U);
  EXPECT_THAT(namesUnsendable(), ElementsAre("{1}.ztr"));
}

}  // namespace
}  // namespace zt::test
