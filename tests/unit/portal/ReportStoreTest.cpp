// SPDX-License-Identifier: Apache-2.0
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/FailingFiles.h"
#include "tests/unit/portal/PortalTest.h"
#include "ztportal/portal/ReportStore.h"

namespace zt::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Operation = FailingFiles::Operation;

constexpr const char* kSupportFolder = "/home/user/.local/share";

class ReportStoreTest : public PortalTest {};

// The folders above the store.

TEST_F(ReportStoreTest, TheDomainIsTheLowSixteenBitsWithTheirSign) {
  EXPECT_EQ(ZtTestAccess::supportFolder(0x12348005, "One"), "/home/user/.local/share/One");
  for (const std::uint32_t domain : {5U, 0xFFFFFFFFU, 0xFFFF7FFFU}) {
    EXPECT_TRUE(ZtTestAccess::supportFolder(domain, "One").isNull()) << domain;
  }
  EXPECT_THAT(platform.supportFolder_.askedDomains, ElementsAre(-32763, 5, -1, 32767));
}

// The store.

TEST_F(ReportStoreTest, IsTheFolderReportsOfTheHost) {
  const auto store = ReportStore::open();
  ASSERT_TRUE(store);
  EXPECT_EQ(store->folder(), "/home/user/.local/share/Kelvane/Setup/reports");
  EXPECT_TRUE(platform.files_.isFolder(kReports));
  EXPECT_EQ(store->fileOf("{1}"), "/home/user/.local/share/Kelvane/Setup/reports/{1}.ztr");
  EXPECT_FALSE(platform.files_.exists(inStore("{1}.ztr")));
}

// A store that asked more than once could write elsewhere if the user's folder changed meanwhile.
TEST_F(ReportStoreTest, AsksForTheUsersFolderOnce) {
  const auto store = ReportStore::open();
  platform.supportFolder_.folder = "/elsewhere";
  store->save("{1}", "<one/>");
  EXPECT_THAT(platform.supportFolder_.askedDomains, ElementsAre(kUserDomain));
  EXPECT_EQ(platform.files_.read(inStore("{1}.ztr"), kReportFileLimit), "<one/>");
}

TEST_F(ReportStoreTest, ThereIsNoStoreWithoutAUsersFolderOrNameOrWhenAFolderCannotBeCreated) {
  const auto document = makeDocumentWithPool();
  const auto expectNoStore = [&document] {
    EXPECT_FALSE(ReportStore::open());
    EXPECT_TRUE(ZtPortalData::reportFolder().isNull());
    EXPECT_TRUE(document->reportFile().isNull());
    document->saveReport();
    EXPECT_FALSE(document->sendSavedReports());
  };
  observeFiles([](const std::string& operation) { FAIL() << operation; });
  platform.supportFolder_.folder = std::nullopt;
  expectNoStore();
  EXPECT_TRUE(ZtTestAccess::localSupportFolder().isNull());
  platform.supportFolder_.folder = kSupportFolder;
  ZtHost::setBundleInfo({{"CFBundleName", nullptr}});
  expectNoStore();
  EXPECT_TRUE(ZtTestAccess::localSupportFolder().isNull());

  platform.replacedFiles = nullptr;
  ZtHost::setBundleInfo({{"CFBundleName", "Setup"}});
  ASSERT_TRUE(platform.files_.createFolders("/home/user/.local/share/Kelvane/Setup"));
  ASSERT_TRUE(platform.files_.write(kReports, "a file in its place"));
  expectNoStore();
  EXPECT_EQ(platform.files_.read(kReports, kReportFileLimit), "a file in its place");
  EXPECT_THAT(steps, IsEmpty());
}

TEST_F(ReportStoreTest, SavingTwiceOverwritesTheSameFile) {
  const auto store = ReportStore::open();
  store->save("{1}", "<one/>");
  store->save("{1}", "<two/>");
  EXPECT_THAT(namesInStore(), ElementsAre("{1}.ztr"));
  EXPECT_EQ(platform.files_.read(inStore("{1}.ztr"), kReportFileLimit), "<two/>");
}

// A saved report was lost when the host saved it again, as resending does, and the disk was full or
// the host was killed: writing had already truncated the file.
TEST_F(ReportStoreTest, AnIdenticalFileIsNotWrittenAgain) {
  const auto store = ReportStore::open();
  store->save("{1}", "<one/>");
  FailingFiles files(platform.files_);
  files.failAlways(Operation::WriteMidway);
  platform.replacedFiles = &files;
  store->save("{1}", "<one/>");
  EXPECT_EQ(platform.files_.read(inStore("{1}.ztr"), kReportFileLimit), "<one/>");
}

TEST_F(ReportStoreTest, SavingIsSilentWhenItFails) {
  const auto store = ReportStore::open();
  FailingFiles files(platform.files_);
  files.failAlways(Operation::Write);
  platform.replacedFiles = &files;
  store->save("{1}", "<one/>");
  EXPECT_THAT(namesInStore(), IsEmpty());
}

TEST_F(ReportStoreTest, ListsOnlyFilesWithItsEndingInTheOrderOfTheSystem) {
  const auto store = ReportStore::open();
  for (const char* name :
       {"b.ztr", "a.xml", "b.ztr.bak", "cztr", "d.ZTR", "ztr", "e.ztr~", "f.tr", ".ztr", "a.ztr"}) {
    platform.files_.write(inStore(name), "");
  }
  EXPECT_THAT(store->files(), ElementsAre(inStore("b.ztr"), inStore(".ztr"), inStore("a.ztr")));
}

TEST_F(ReportStoreTest, AStoreThatIsNotAFolderOrCannotBeListedIsEmpty) {
  const auto store = ReportStore::open();
  platform.files_.write(inStore("a.ztr"), "<a/>");
  FailingFiles files(platform.files_);
  files.failAlways(Operation::List);
  platform.replacedFiles = &files;
  EXPECT_THAT(store->files(), IsEmpty());

  platform.files_.remove(inStore("a.ztr"));
  platform.files_.remove(kReports);
  platform.files_.write(kReports, "a file in its place");
  observeFiles([](const std::string& operation) { EXPECT_FALSE(operation.starts_with("list ")); });
  EXPECT_THAT(store->files(), IsEmpty());
}

// The request in a file.

TEST_F(ReportStoreTest, TheRequestIsTheParsedDocumentWrittenBack) {
  const std::pair<const char*, const char*> rows[] = {
      {"<a/>", "<a/>"},
      {"<a>\r\n  <b> x </b>\r\n\t<c/>\r\n</a>", "<a>\n  <b> x </b>\n\t<c/>\n</a>"},
      {"<a><![CDATA[<&>]]> <![CDATA[b]]></a>", "<a><![CDATA[<&>]]> <![CDATA[b]]></a>"},
      {"<a b=\"1\">&lt;&amp;&gt;</a>", "<a b=\"1\">&lt;&amp;&gt;</a>"},
      {"<a>\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80</a>",
       "<a>\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80</a>"},
      {"<a><!-- note --><?pi data?></a>", "<a><!-- note --><?pi data?></a>"},
      {"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<a>\xE4</a>",
       "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>\xC3\xA4</a>"},
  };
  for (const auto& [content, expected] : rows) {
    platform.files_.write("/one.ztr", content);
    EXPECT_EQ(ReportStore::request("/one.ztr"), expected) << content;
  }
}

TEST_F(ReportStoreTest, AFileThatIsMissingOrNotWellFormedHasNoRequest) {
  for (const char* content : {"", " ", "text", "<a>", "<a></b>", "<a/><b/>", "<a b=1/>",
                              "<a>&nbsp;</a>", "<a>\xE4</a>", "<br><p>tidy</p>"}) {
    platform.files_.write("/one.ztr", content);
    EXPECT_EQ(ReportStore::request("/one.ztr"), std::nullopt) << content;
  }
  EXPECT_EQ(ReportStore::request("/no/such.ztr"), std::nullopt);
  EXPECT_EQ(ReportStore::request("/"), std::nullopt);
}

}  // namespace
}  // namespace zt::test
