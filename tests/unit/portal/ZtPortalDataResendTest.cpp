#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/unit/portal/ObservedFiles.h"
#include "tests/unit/portal/PortalTest.h"
#include "ztportal/platform/files/FailingFiles.h"
#include "ztportal/platform/time/DateText.h"

namespace zt::test {
namespace {

using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

constexpr const char* kReports = "/home/user/.local/share/Kelvane/Setup/reports";
constexpr const char* kGet = "GET http://config.test/reporting/kelvane.xml";
constexpr const char* kVersion = "version http://report.test/soap";
constexpr const char* kReport = "report http://report.test/soap";

class ZtPortalDataResendTest : public PortalTest {
 protected:
  /// Puts a file into the store and gives its path.
  std::string store(const std::string& name, const std::string& content) {
    const std::string path = std::string(kReports) + "/" + name;
    if (!platform.files_.createFolders(kReports) || !platform.files_.write(path, content)) {
      throw std::runtime_error("cannot write " + path);
    }
    return path;
  }
  std::vector<std::string> namesInStore() {
    return platform.files_.list(kReports).value_or(std::vector<std::string>());
  }
  std::vector<std::string> postedBodies() {
    std::vector<std::string> bodies;
    for (const auto& asked : platform.http_.asked) bodies.push_back(asked.body.value_or("(none)"));
    return bodies;
  }
  void refuse(const std::string& refusedBody) {
    reportAnswer = [refusedBody](const std::string& body) {
      return HttpResponse{200, body == refusedBody ? kRefused : kAccepted};
    };
  }

  std::shared_ptr<ZtPortalData> document = makeDocument();
};

// One saved report.

TEST_F(ZtPortalDataResendTest, BroadcastsASavedReportThenPostsIt) {
  const std::string path = store("one.ztr", "<one/>");
  EXPECT_TRUE(document->sendSavedReport(path));
  EXPECT_THAT(steps, ElementsAre("broadcast", kReport));
  EXPECT_THAT(postedBodies(), ElementsAre("<one/>"));
  EXPECT_EQ(platform.http_.asked.front().method, "POST");
  EXPECT_EQ(platform.files_.read(path), "<one/>");
}

TEST_F(ZtPortalDataResendTest, TheNotificationOfASavedReportIsThatOfAFreshOne) {
  const std::string path = store("one.ztr", "<one/>");
  const std::string before = shortDateAndTime(ZtDate::now());
  document->sendSavedReport(path);
  const std::string after = shortDateAndTime(ZtDate::now());
  ASSERT_EQ(platform.broadcast_.posted.size(), 1U);
  const auto& message = platform.broadcast_.posted.front();
  EXPECT_EQ(message.name, "ZtPortalGhostNotification");
  EXPECT_EQ(message.object, "Setup");
  EXPECT_THAT(message.userInfo,
              ElementsAre(Pair("date", AnyOf(ZtString(before), ZtString(after))),
                          Pair("request", ZtString("<one/>")), Pair("version", ZtString("2.1"))));
}

TEST_F(ZtPortalDataResendTest, ARefusedSavedReportStays) {
  const std::string path = store("one.ztr", "<one/>");
  report = {200, kRefused};
  EXPECT_FALSE(document->sendSavedReport(path));
  EXPECT_EQ(platform.files_.read(path), "<one/>");
}

TEST_F(ZtPortalDataResendTest, WhatOneDocumentSavedAnotherSendsWithLineFeedsAlone) {
  const auto saver = makeDocumentWithPool("Brisalink");
  saver->saveReport();
  EXPECT_TRUE(document->sendSavedReport(saver->reportFile()));
  std::string expected = requestOf(*saver, "Brisalink");
  std::erase(expected, '\r');
  EXPECT_THAT(postedBodies(), ElementsAre(expected));
}

TEST_F(ZtPortalDataResendTest, SendsTheParsedDocumentWrittenBack) {
  const std::pair<const char*, const char*> rows[] = {
      {"<a/>", "<a/>"},
      {"<a>\r\n  <b> x </b>\r\n\t<c/>\r\n</a>", "<a>\n  <b> x </b>\n\t<c/>\n</a>"},
      {"<a><![CDATA[<&>]]> <![CDATA[b]]></a>", "<a><![CDATA[<&>]]> <![CDATA[b]]></a>"},
      {"<a b=\"1\">&lt;&amp;&gt;</a>", "<a b=\"1\">&lt;&amp;&gt;</a>"},
      {"<a>\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80</a>",
       "<a>\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80</a>"},
      {"<a><!-- note --><?pi data?></a>", "<a><!-- note --><?pi data?></a>"},
  };
  for (const auto& [content, expected] : rows) {
    forget();
    EXPECT_TRUE(document->sendSavedReport(store("one.ztr", content))) << content;
    EXPECT_THAT(postedBodies(), ElementsAre(expected)) << content;
    EXPECT_EQ(platform.broadcast_.posted.at(0).userInfo.at("request"), expected) << content;
  }
}

TEST_F(ZtPortalDataResendTest, ReadsASavedReportInItsOwnEncoding) {
  const std::string path =
      store("one.ztr", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<a>\xE4</a>");
  EXPECT_TRUE(document->sendSavedReport(path));
  EXPECT_THAT(postedBodies(),
              ElementsAre("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>\xC3\xA4</a>"));
}

TEST_F(ZtPortalDataResendTest, NeverSendsAFileThatIsNotWellFormed) {
  for (const char* content : {"", " ", "text", "<a>", "<a></b>", "<a/><b/>", "<a b=1/>",
                              "<a>&nbsp;</a>", "<a>\xE4</a>", "<br><p>tidy</p>"}) {
    forget();
    EXPECT_FALSE(document->sendSavedReport(store("one.ztr", content))) << content;
    EXPECT_THAT(steps, IsEmpty()) << content;
  }
}

TEST_F(ZtPortalDataResendTest, SendsNothingForAFileThatCannotBeRead) {
  EXPECT_FALSE(document->sendSavedReport("/no/such.ztr"));
  EXPECT_FALSE(document->sendSavedReport("/"));
  EXPECT_THAT(steps, IsEmpty());
}

TEST_F(ZtPortalDataResendTest, AnOnlineDocumentAsksNothingFirst) {
  EXPECT_FALSE(document->sendSavedReport(""));
  EXPECT_FALSE(document->sendSavedReport(nullptr));
  EXPECT_THAT(steps, IsEmpty());
}

TEST_F(ZtPortalDataResendTest, ADocumentWithoutUrlTriesAgainToGetOnline) {
  const std::string path = store("one.ztr", "<one/>");
  const HttpResponse before = configuration;
  configuration = HttpResponse{};
  document = makeDocument();
  configuration = before;
  EXPECT_TRUE(document->sendSavedReport(path));
  EXPECT_THAT(steps, ElementsAre(kGet, kVersion, "broadcast", kReport));
}

TEST_F(ZtPortalDataResendTest, AnOfflineDocumentTriesAgainAlsoForAMissingPath) {
  version = HttpResponse{};
  document = makeDocument();
  version = {200, "<versioninfo>7.1</versioninfo>"};
  EXPECT_FALSE(document->sendSavedReport(nullptr));
  EXPECT_THAT(steps, ElementsAre(kGet, kVersion));
  EXPECT_TRUE(document->online());
}

TEST_F(ZtPortalDataResendTest, ADocumentWhoseConfigurationWasTakenBackTriesAgain) {
  const std::string path = store("one.ztr", "<one/>");
  const HttpResponse before = configuration;
  configuration = {200, "<c><defSOAP/></c>"};
  ZtTestAccess::getConfiguration(*document, kConfigurationUrl, false);
  ASSERT_TRUE(document->online());
  ASSERT_FALSE(document->gotConfiguration());
  configuration = before;
  forget();
  EXPECT_TRUE(document->sendSavedReport(path));
  EXPECT_THAT(steps, ElementsAre(kGet, kVersion, "broadcast", kReport));
}

TEST_F(ZtPortalDataResendTest, ADocumentThatStaysOfflineSendsNothing) {
  const std::string path = store("one.ztr", "<one/>");
  version = HttpResponse{};
  document = makeDocument();
  EXPECT_FALSE(document->sendSavedReport(path));
  EXPECT_THAT(steps, ElementsAre(kGet, kVersion));
}

TEST_F(ZtPortalDataResendTest, TryingAgainUsesTheLocalCopyIfTheDocumentWasMadeForIt) {
  const std::string path = store("one.ztr", "<one/>");
  version = HttpResponse{};
  document =
      ZtPortalData::initWithValues(kConfigurationUrl, true, "Kelvane", kApplicationId, "2.1.77");
  forget();
  version = {200, "<versioninfo>7.1</versioninfo>"};
  ASSERT_TRUE(platform.files_.write("(null)configuration.xml",
                                    "<c><defSOAP>http://local.test/</defSOAP></c>"));
  EXPECT_TRUE(document->sendSavedReport(path));
  EXPECT_THAT(steps,
              ElementsAre("version http://local.test/", "broadcast", "report http://local.test/"));
}

TEST_F(ZtPortalDataResendTest, ASavedReportIsNotPostedWhenTheBroadcastRaises) {
  const std::string path = store("one.ztr", "<one/>");
  platform.broadcast_.onPost = &raise;
  EXPECT_FALSE(document->sendSavedReport(path));
  EXPECT_THAT(steps, IsEmpty());
}

TEST_F(ZtPortalDataResendTest, ASavedReportIsNotAcceptedWhenThePlatformRaises) {
  const std::string path = store("one.ztr", "<one/>");
  platform.http_.answer = [](const auto&) -> HttpResponse { raise(); };
  EXPECT_FALSE(document->sendSavedReport(path));
  ObservedFiles files(platform.files_, [](const std::string&) { raise(); });
  platform.replacedFiles = &files;
  EXPECT_FALSE(document->sendSavedReport(path));
}

TEST_F(ZtPortalDataResendTest, LetsForeignExceptionsOutOfResending) {
  const std::string path = store("one.ztr", "<one/>");
  platform.broadcast_.onPost = &raiseForeign;
  EXPECT_THROW(document->sendSavedReport(path), ForeignError);
  EXPECT_THROW(document->sendSavedReports(), ForeignError);
}

// All that the store holds.

TEST_F(ZtPortalDataResendTest, SendsAndRemovesInTheOrderOfTheListingAndSaysFalse) {
  store("b.ztr", "<b/>");
  store("c.ztr", "<c/>");
  store("a.ztr", "<a/>");
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_THAT(postedBodies(), ElementsAre("<b/>", "<c/>", "<a/>"));
  EXPECT_THAT(namesInStore(), IsEmpty());
}

TEST_F(ZtPortalDataResendTest, StopsAtTheSecondOfThreeWhenItIsRefused) {
  store("1.ztr", "<one/>");
  store("2.ztr", "<two/>");
  store("3.ztr", "<three/>");
  refuse("<two/>");
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_THAT(postedBodies(), ElementsAre("<one/>", "<two/>"));
  EXPECT_THAT(namesInStore(), ElementsAre("2.ztr", "3.ztr"));
}

TEST_F(ZtPortalDataResendTest, AMalformedFileStopsIt) {
  store("1.ztr", "<one/>");
  store("2.ztr", "<two>");
  store("3.ztr", "<three/>");
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_THAT(postedBodies(), ElementsAre("<one/>"));
  EXPECT_THAT(namesInStore(), ElementsAre("2.ztr", "3.ztr"));
}

TEST_F(ZtPortalDataResendTest, LeavesFilesOfOtherEndingsAlone) {
  for (const char* name : {"a.xml", "b.ztr.bak", "cztr", "d.ZTR", "ztr", "e.ztr~", "f.tr"}) {
    store(name, "<other/>");
  }
  store(".ztr", "<bare/>");
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_THAT(postedBodies(), ElementsAre("<bare/>"));
  EXPECT_THAT(namesInStore(),
              ElementsAre("a.xml", "b.ztr.bak", "cztr", "d.ZTR", "ztr", "e.ztr~", "f.tr"));
}

TEST_F(ZtPortalDataResendTest, TouchesOnlyTheStore) {
  const std::string folder = kReports;
  store("1.ztr", "<one/>");
  std::vector<std::string> operations;
  ObservedFiles files(platform.files_, [&](const std::string& operation) {
    if (!operation.starts_with("exists ") && !operation.starts_with("isFolder ") &&
        !operation.starts_with("createFolders ")) {
      operations.push_back(operation);
    }
  });
  platform.replacedFiles = &files;
  document->sendSavedReports();
  EXPECT_THAT(operations, ElementsAre("list " + folder, "read " + folder + "/1.ztr",
                                      "remove " + folder + "/1.ztr"));
}

TEST_F(ZtPortalDataResendTest, AnEmptyStoreSendsNothing) {
  cutOff();
  document = makeDocument();
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_THAT(steps, IsEmpty());
}

TEST_F(ZtPortalDataResendTest, NoStoreIsNeitherListedNorSent) {
  platform.supportFolder_.folder = std::nullopt;
  std::vector<std::string> operations;
  ObservedFiles files(platform.files_,
                      [&](const std::string& operation) { operations.push_back(operation); });
  platform.replacedFiles = &files;
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_THAT(operations, IsEmpty());
  EXPECT_THAT(steps, IsEmpty());
}

TEST_F(ZtPortalDataResendTest, AStoreThatIsNoFolderIsNotListed) {
  const std::string folder = kReports;
  std::vector<std::string> lists;
  ObservedFiles files(platform.files_, [&](const std::string& operation) {
    // Between its creation and the question the folder is replaced by a file.
    if (operation == "isFolder " + folder && platform.files_.remove(folder)) {
      platform.files_.write(folder, "a file in its place");
    }
    if (operation.starts_with("list ")) lists.push_back(operation);
  });
  platform.replacedFiles = &files;
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_TRUE(platform.files_.exists(folder));
  EXPECT_FALSE(platform.files_.isFolder(folder));
  EXPECT_THAT(lists, IsEmpty());
}

TEST_F(ZtPortalDataResendTest, AStoreThatCannotBeListedSendsNothing) {
  store("1.ztr", "<one/>");
  FailingFiles files(platform.files_);
  files.failAlways(FailingFiles::Operation::List);
  platform.replacedFiles = &files;
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_THAT(steps, IsEmpty());
}

TEST_F(ZtPortalDataResendTest, GoesOnWhenAnAcceptedFileCannotBeRemoved) {
  store("1.ztr", "<one/>");
  store("2.ztr", "<two/>");
  FailingFiles files(platform.files_);
  files.failOnce(FailingFiles::Operation::Remove, 1);
  platform.replacedFiles = &files;
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_THAT(postedBodies(), ElementsAre("<one/>", "<two/>"));
  EXPECT_THAT(namesInStore(), ElementsAre("1.ztr"));
}

TEST_F(ZtPortalDataResendTest, EndsWhenThePlatformRaises) {
  store("1.ztr", "<one/>");
  store("2.ztr", "<two/>");
  for (const char* raising : {"list ", "remove "}) {
    ObservedFiles files(platform.files_, [&](const std::string& operation) {
      if (operation.starts_with(raising)) raise();
    });
    platform.replacedFiles = &files;
    EXPECT_FALSE(document->sendSavedReports()) << raising;
  }
  EXPECT_THAT(postedBodies(), ElementsAre("<one/>"));
  EXPECT_THAT(namesInStore(), ElementsAre("1.ztr", "2.ztr"));
}

TEST_F(ZtPortalDataResendTest, AnOfflineDocumentSendsAndRemovesNothing) {
  store("1.ztr", "<one/>");
  store("2.ztr", "<two/>");
  cutOff();
  document = makeDocument();
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_THAT(steps, ElementsAre(kGet));
  EXPECT_THAT(namesInStore(), ElementsAre("1.ztr", "2.ztr"));
}

}  // namespace
}  // namespace zt::test
