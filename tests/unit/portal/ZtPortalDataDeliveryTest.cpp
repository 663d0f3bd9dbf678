// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/FailingFiles.h"
#include "tests/unit/portal/PortalTest.h"

// Sending, saving and resending of documents.

namespace zt::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ZtPortalDataDeliveryTest : public PortalTest {
 protected:
  std::string fileOf(const ZtPortalData& sent) {
    return inStore(std::string(sent.reportId().view()) + ".ztr");
  }
  /// The content of the report's file in the store; nullopt if there is none.
  std::optional<std::string> saved(const ZtPortalData& sent) {
    return platform.files_.read(fileOf(sent), kReportFileLimit);
  }
  /// Puts a file into the store and returns its path.
  std::string store(const std::string& name, const std::string& content) {
    platform.files_.createFolders(kReports);
    platform.files_.write(inStore(name), content);
    return inStore(name);
  }
  std::vector<std::string> postedBodies() {
    std::vector<std::string> bodies;
    for (const auto& asked : platform.http_.asked) bodies.push_back(asked.body.value_or("(none)"));
    return bodies;
  }
  /// A document that has a URL but is offline, because the version was missing at its creation.
  std::shared_ptr<ZtPortalData> makeOfflineDocument(bool cacheConfiguration = false) {
    const HttpResponse good = std::exchange(version, HttpResponse{});
    auto offline = makeDocumentWithPool("Kelvane", cacheConfiguration);
    version = good;
    return offline;
  }

  std::shared_ptr<ZtPortalData> document = makeDocumentWithPool();
};

// reportToServer.

TEST_F(ZtPortalDataDeliveryTest, AnAcceptedReportIsBroadcastThenPostedAndNotSaved) {
  EXPECT_TRUE(document->reportToServer());
  EXPECT_THAT(steps, ElementsAre(kBroadcast, kReport));
  EXPECT_THAT(postedBodies(), ElementsAre(requestOf(*document)));
  ASSERT_EQ(platform.broadcast_.posted.size(), 1U);
  EXPECT_EQ(platform.broadcast_.posted.front().userInfo.at("request"), requestOf(*document));
  EXPECT_THAT(namesInStore(), IsEmpty());
}

TEST_F(ZtPortalDataDeliveryTest, ARefusedReportIsThenTheOneFileInTheStore) {
  report = {200, kRefused};
  observeFiles([this](const std::string& step) {
    if (step.starts_with("write ")) steps.push_back(step);
  });
  EXPECT_FALSE(document->reportToServer());
  EXPECT_THAT(steps, ElementsAre(kBroadcast, kReport, "write " + fileOf(*document)));
  EXPECT_THAT(namesInStore(), ElementsAre(std::string(document->reportId().view()) + ".ztr"));
  EXPECT_EQ(saved(*document), document->getSoapString());
}

TEST_F(ZtPortalDataDeliveryTest, AReportWithoutAResponseIsSaved) {
  report = {200, ""};
  EXPECT_FALSE(document->reportToServer());
  EXPECT_EQ(saved(*document), requestOf(*document));
  document = makeDocumentWithPool();
  platform.http_.answer = [](const auto&) -> HttpResponse { throwZtException(); };
  EXPECT_FALSE(document->reportToServer());
  EXPECT_EQ(saved(*document), requestOf(*document));
}

// Receipts.

TEST_F(ZtPortalDataDeliveryTest, TheStatusOfTheLastResponseIsKept) {
  EXPECT_EQ(document->lastDelivery().httpStatus, 0);
  EXPECT_TRUE(document->reportToServer());
  EXPECT_EQ(document->lastDelivery().httpStatus, 200);
  report = {503, "later"};
  EXPECT_FALSE(document->reportToServer());
  EXPECT_EQ(document->lastDelivery().httpStatus, 503);
  report = {};
  EXPECT_FALSE(document->reportToServer());
  EXPECT_EQ(document->lastDelivery().httpStatus, 0);
  report = {200, kAccepted};
  EXPECT_TRUE(document->sendSavedReport(store("a.ztr", "<a/>")));
  EXPECT_EQ(document->lastDelivery().httpStatus, 200);
}

TEST_F(ZtPortalDataDeliveryTest, TheReceiptSaysWhatBecameOfTheReport) {
  const auto failed = [](ZtDeliveryError error) {
    HttpResponse response;
    response.error = error;
    response.message = "of the platform";
    return response;
  };
  HttpResponse later{503, "later"};
  later.retryAfter = std::chrono::seconds(120);
  later.times.total = std::chrono::microseconds(7);
  const struct {
    HttpResponse response;
    ZtDeliveryOutcome outcome;
    ZtDeliveryError error;
    const char* message;
  } rows[] = {
      {{200, kAccepted},
       ZtDeliveryOutcome::Accepted,
       ZtDeliveryError::NoError,
       "The server has accepted the report."},
      {later, ZtDeliveryOutcome::Refused, ZtDeliveryError::HttpStatus,
       "The server responded with HTTP status 503."},
      {{200, kRefused},
       ZtDeliveryOutcome::InvalidResponse,
       ZtDeliveryError::Content,
       "The response is not the expected one."},
      {failed(ZtDeliveryError::Connection), ZtDeliveryOutcome::Unreachable,
       ZtDeliveryError::Connection, "of the platform"},
      {failed(ZtDeliveryError::Timeout), ZtDeliveryOutcome::TimedOut, ZtDeliveryError::Timeout,
       "of the platform"},
      {{},
       ZtDeliveryOutcome::Unreachable,
       ZtDeliveryError::Transfer,
       "No complete response arrived."},
  };
  for (const auto& row : rows) {
    document = makeDocumentWithPool();
    report = row.response;
    const bool isAccepted = document->reportToServer();
    const ZtDelivery delivery = document->lastDelivery();
    EXPECT_EQ(isAccepted, delivery.outcome == ZtDeliveryOutcome::Accepted);
    EXPECT_EQ(delivery.outcome, row.outcome) << row.message;
    EXPECT_EQ(delivery.error, row.error) << row.message;
    EXPECT_EQ(delivery.message, row.message);
    EXPECT_EQ(delivery.httpStatus, row.response.status) << row.message;
    EXPECT_EQ(delivery.url, "http://report.test/soap") << row.message;
    EXPECT_EQ(delivery.requestBytes, requestOf(*document).size()) << row.message;
    EXPECT_EQ(delivery.responseBytes, row.response.body.size()) << row.message;
    EXPECT_EQ(delivery.retryAfter, row.response.retryAfter) << row.message;
    EXPECT_EQ(delivery.totalTime, row.response.times.total) << row.message;
    EXPECT_EQ(delivery.savedTo, isAccepted ? "" : fileOf(*document)) << row.message;
    EXPECT_EQ(delivery.saveError, "") << row.message;
  }
}

TEST_F(ZtPortalDataDeliveryTest, TheUrlOfTheReceiptHasNoPassword) {
  const std::pair<const char*, const char*> rows[] = {
      {"http://user:p@ss@report.test/a@b?c=d@e", "http://report.test/a@b?c=d@e"},
      {"http://report.test?a=b@c", "http://report.test?a=b@c"},
      {"HTTPS://user@report.test", "HTTPS://report.test"},
      {"user:secret@report.test/x", "report.test/x"},
  };
  for (const auto& [url, shown] : rows) {
    configuration.body = std::string("<c><defSOAP>") + url + "</defSOAP></c>";
    document = makeDocumentWithPool();
    document->reportToServer();
    EXPECT_EQ(document->lastDelivery().url, shown);
  }
}

TEST_F(ZtPortalDataDeliveryTest, WithoutAServerTheReceiptSaysWhatIsMissing) {
  const HttpResponse good = configuration;
  const std::string path = store("one.ztr", "<one/>");
  configuration = {404, ""};
  report = {};
  document = makeDocumentWithPool();
  EXPECT_FALSE(document->reportToServer());
  ZtDelivery delivery = document->lastDelivery();
  EXPECT_EQ(delivery.outcome, ZtDeliveryOutcome::Offline);
  EXPECT_EQ(delivery.error, ZtDeliveryError::HttpStatus);
  EXPECT_EQ(delivery.message,
            "There is no configuration with a URL for reports: "
            "The server responded with HTTP status 404.");
  EXPECT_EQ(delivery.url, "");
  EXPECT_EQ(delivery.savedTo, fileOf(*document));

  configuration = good;
  version = {};
  EXPECT_FALSE(document->sendSavedReport(path));
  delivery = document->lastDelivery();
  EXPECT_EQ(delivery.outcome, ZtDeliveryOutcome::Offline);
  EXPECT_EQ(delivery.error, ZtDeliveryError::Transfer);
  EXPECT_EQ(delivery.message, "The server has not told its version: No complete response arrived.");
  EXPECT_EQ(delivery.savedTo, path);
}

TEST_F(ZtPortalDataDeliveryTest, SavingHasAReceipt) {
  document->saveReport();
  EXPECT_EQ(document->lastDelivery().outcome, ZtDeliveryOutcome::NotSent);
  EXPECT_EQ(document->lastDelivery().savedTo, fileOf(*document));
  EXPECT_EQ(document->lastDelivery().message, "The report was saved without sending it.");

  for (const auto failing :
       {FailingFiles::Operation::Write, FailingFiles::Operation::WriteMidway}) {
    document = makeDocumentWithPool();
    FailingFiles files(platform.files_);
    files.failAlways(failing);
    platform.replacedFiles = &files;
    document->saveReport();
    const ZtDelivery delivery = document->lastDelivery();
    EXPECT_EQ(delivery.outcome, ZtDeliveryOutcome::NotSent);
    EXPECT_EQ(delivery.savedTo, "");
    EXPECT_EQ(delivery.saveErrorNumber, ENOSPC);
    EXPECT_EQ(delivery.saveError, "No space left on device");
    EXPECT_EQ(delivery.message, "The report could not be saved.");
    platform.replacedFiles = nullptr;
  }
}

TEST_F(ZtPortalDataDeliveryTest, ARefusedReportThatCannotBeSavedHasBothReasons) {
  report = {503, ""};
  platform.supportFolder_.folder = std::nullopt;
  EXPECT_FALSE(document->reportToServer());
  EXPECT_EQ(document->lastDelivery().outcome, ZtDeliveryOutcome::Refused);
  EXPECT_EQ(document->lastDelivery().saveErrorNumber, ENOENT);
}

TEST_F(ZtPortalDataDeliveryTest, ASavedReportHasAReceipt) {
  const std::string path = store("a.ztr", "<a/>");
  EXPECT_TRUE(document->sendSavedReport(path));
  EXPECT_EQ(document->lastDelivery().outcome, ZtDeliveryOutcome::Accepted);
  EXPECT_EQ(document->lastDelivery().savedTo, path);
  document->sendSavedReports();
  EXPECT_EQ(document->lastDelivery().outcome, ZtDeliveryOutcome::Accepted);
  EXPECT_EQ(document->lastDelivery().savedTo, "");
  for (const char* bad : {"/no/such.ztr", ""}) {
    EXPECT_FALSE(document->sendSavedReport(bad));
    EXPECT_EQ(document->lastDelivery().outcome, ZtDeliveryOutcome::Unreadable);
    EXPECT_EQ(document->lastDelivery().error, ZtDeliveryError::File);
  }
}

TEST_F(ZtPortalDataDeliveryTest, AReceiptOfAnExceptionHasItsReason) {
  platform.broadcast_.onPost = &throwZtException;
  EXPECT_FALSE(document->reportToServer());
  EXPECT_EQ(document->lastDelivery().outcome, ZtDeliveryOutcome::NotSent);
  EXPECT_EQ(document->lastDelivery().error, ZtDeliveryError::Host);
  EXPECT_EQ(document->lastDelivery().message, "of a test");
}

TEST_F(ZtPortalDataDeliveryTest, AReportIsNeitherPostedNorSavedWhenTheBroadcastThrows) {
  platform.broadcast_.onPost = &throwZtException;
  EXPECT_FALSE(document->reportToServer());
  EXPECT_THAT(steps, IsEmpty());
  EXPECT_EQ(saved(*document), std::nullopt);
}

TEST_F(ZtPortalDataDeliveryTest, AReportWithoutPoolsIsPostedAndSavedAsAnEmptyText) {
  document = makeDocument();
  report = {200, kRefused};
  EXPECT_FALSE(document->reportToServer());
  EXPECT_THAT(postedBodies(), ElementsAre(""));
  EXPECT_EQ(platform.http_.asked.front().method, "POST");
  EXPECT_EQ(platform.broadcast_.posted.front().userInfo.at("request"), "");
  EXPECT_EQ(saved(*document), "");
}

TEST_F(ZtPortalDataDeliveryTest, WithoutAUrlItDoesNotTryAgainToGetOnline) {
  const HttpResponse good = std::exchange(configuration, HttpResponse{});
  document = makeDocumentWithPool();
  configuration = good;
  report = HttpResponse{};
  EXPECT_FALSE(document->reportToServer());
  EXPECT_THAT(steps, ElementsAre(kBroadcast, "report "));
  EXPECT_EQ(saved(*document), requestOf(*document));
}

TEST_F(ZtPortalDataDeliveryTest, WithAUrlButOfflineItTriesAgainAndUsesTheNewUrl) {
  document = makeOfflineDocument();
  configuration = {200, "<c><defSOAP>http://new.test/</defSOAP></c>"};
  EXPECT_TRUE(document->reportToServer());
  EXPECT_THAT(steps,
              ElementsAre(kBroadcast, kGet, "version http://new.test/", "report http://new.test/"));
  EXPECT_TRUE(document->online());
}

TEST_F(ZtPortalDataDeliveryTest, AReportThatStaysOfflineIsStillPosted) {
  version = HttpResponse{};
  document = makeDocumentWithPool();
  EXPECT_TRUE(document->reportToServer());
  EXPECT_THAT(steps, ElementsAre(kBroadcast, kGet, kVersion, kReport));
  EXPECT_FALSE(document->online());
}

TEST_F(ZtPortalDataDeliveryTest, TryingAgainUsesTheLocalCopyWithTheCacheFlag) {
  document = makeOfflineDocument(true);
  const auto resending = makeOfflineDocument(true);
  platform.files_.write(kLocalCopy, "<c><defSOAP>http://local.test/</defSOAP></c>");
  document->reportToServer();
  EXPECT_THAT(steps,
              ElementsAre(kBroadcast, "version http://local.test/", "report http://local.test/"));
  forget();
  EXPECT_TRUE(resending->sendSavedReport(store("one.ztr", "<one/>")));
  EXPECT_THAT(steps,
              ElementsAre("version http://local.test/", kBroadcast, "report http://local.test/"));
}

TEST_F(ZtPortalDataDeliveryTest, ForeignExceptionsPass) {
  const std::string path = store("one.ztr", "<one/>");
  platform.http_.answer = [](const auto&) -> HttpResponse { throwForeign(); };
  EXPECT_THROW(document->reportToServer(), ForeignError);
  platform.broadcast_.onPost = &throwForeign;
  EXPECT_THROW(document->reportToServer(), ForeignError);
  EXPECT_THROW(document->sendSavedReport(path), ForeignError);
  EXPECT_THROW(document->sendSavedReports(), ForeignError);
  platform.runningApplications_.onList = &throwForeign;
  EXPECT_THROW(document->getSoapString(), ForeignError);
  observeFiles([](const std::string&) { throwForeign(); });
  EXPECT_THROW(document->saveReport(), ForeignError);
  EXPECT_THROW(document->reportToFile("/report.xml"), ForeignError);
}

// saveReport and reportToFile.

TEST_F(ZtPortalDataDeliveryTest, SavingOverwritesTheFileOfTheReportAndSendsNothing) {
  document->saveReport();
  EXPECT_EQ(saved(*document), requestOf(*document));
  document->pools().front()->setPoolType("OTHER");
  document->saveReport();
  EXPECT_EQ(namesInStore().size(), 1U);
  EXPECT_EQ(saved(*document), document->getSoapString());
  EXPECT_THAT(steps, IsEmpty());
}

TEST_F(ZtPortalDataDeliveryTest, SavingIsSilentWhenTheFilesThrow) {
  observeFiles([](const std::string&) { throwZtException(); });
  EXPECT_NO_THROW(document->saveReport());
  report = {200, kRefused};
  EXPECT_FALSE(document->reportToServer());
}

TEST_F(ZtPortalDataDeliveryTest, ReportToFileReturnsFalseAlsoAfterWriting) {
  EXPECT_FALSE(document->reportToFile("/report.xml"));
  EXPECT_EQ(platform.files_.read("/report.xml", kReportFileLimit), requestOf(*document));
  EXPECT_FALSE(platform.files_.exists(kReports));
  EXPECT_FALSE(document->reportToFile("/no/such/folder/report.xml"));
  observeFiles([this](const std::string& operation) {
    steps.push_back(operation);
    throwZtException();
  });
  EXPECT_FALSE(document->reportToFile("/report.xml"));
  EXPECT_FALSE(document->reportToFile(nullptr));
  EXPECT_THAT(steps, ElementsAre("write /report.xml")) << "nothing is broadcast";
}

// sendSavedReport.

TEST_F(ZtPortalDataDeliveryTest, ASavedReportIsBroadcastThenPostedAndStays) {
  const std::string path = store("one.ztr", "<one/>");
  EXPECT_TRUE(document->sendSavedReport(path));
  EXPECT_THAT(steps, ElementsAre(kBroadcast, kReport));
  EXPECT_THAT(postedBodies(), ElementsAre("<one/>"));
  EXPECT_EQ(platform.http_.asked.front().method, "POST");
  EXPECT_EQ(platform.broadcast_.posted.front().userInfo.at("request"), "<one/>");
  report = {200, kRefused};
  EXPECT_FALSE(document->sendSavedReport(path));
  EXPECT_EQ(platform.files_.read(path, kReportFileLimit), "<one/>");
}

TEST_F(ZtPortalDataDeliveryTest, AReportOfAnotherDocumentIsSentWithOnlyLineFeeds) {
  const auto other = makeDocumentWithPool("Brisalink");
  other->saveReport();
  EXPECT_TRUE(document->sendSavedReport(other->reportFile()));
  std::string expected = requestOf(*other);
  std::erase(expected, '\r');
  EXPECT_THAT(postedBodies(), ElementsAre(expected));
}

TEST_F(ZtPortalDataDeliveryTest, AFileThatCannotBeReadOrParsedIsNeverSent) {
  for (const char* path : {"/no/such.ztr", "/", "", static_cast<const char*>(nullptr)}) {
    EXPECT_FALSE(document->sendSavedReport(path));
  }
  EXPECT_FALSE(document->sendSavedReport(store("one.ztr", "<br><p>needs a repair</p>")));
  EXPECT_THAT(steps, IsEmpty());
}

TEST_F(ZtPortalDataDeliveryTest, AnOfflineDocumentTriesAgainWhateverItsUrlAndPath) {
  const std::string path = store("one.ztr", "<one/>");
  const HttpResponse good = configuration;
  configuration = HttpResponse{};
  document = makeDocument();
  configuration = good;
  EXPECT_TRUE(document->sendSavedReport(path));
  EXPECT_THAT(steps, ElementsAre(kGet, kVersion, kBroadcast, kReport));

  document = makeOfflineDocument();
  EXPECT_FALSE(document->sendSavedReport(nullptr));
  EXPECT_THAT(steps, ElementsAre(kGet, kVersion));
  EXPECT_TRUE(document->online());

  configuration = {200, "<c><defSOAP/></c>"};  // takes the configuration back
  ZtTestAccess::getConfiguration(*document, kConfigurationUrl, false);
  configuration = good;
  forget();
  EXPECT_TRUE(document->sendSavedReport(path));
  EXPECT_THAT(steps, ElementsAre(kGet, kVersion, kBroadcast, kReport));
}

TEST_F(ZtPortalDataDeliveryTest, ADocumentThatStaysOfflineSendsAndRemovesNothing) {
  store("1.ztr", "<one/>");
  store("2.ztr", "<two/>");
  version = HttpResponse{};
  document = makeDocument();
  EXPECT_FALSE(document->sendSavedReport(inStore("1.ztr")));
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_THAT(steps, ElementsAre(kGet, kVersion, kGet, kVersion));
  EXPECT_THAT(namesInStore(), ElementsAre("1.ztr", "2.ztr"));
}

TEST_F(ZtPortalDataDeliveryTest, ASavedReportIsNotAcceptedWhenThePlatformThrows) {
  const std::string path = store("one.ztr", "<one/>");
  platform.broadcast_.onPost = &throwZtException;
  EXPECT_FALSE(document->sendSavedReport(path));
  EXPECT_THAT(steps, IsEmpty()) << "posted without the broadcast";
  platform.broadcast_.onPost = nullptr;
  platform.http_.answer = [](const auto&) -> HttpResponse { throwZtException(); };
  EXPECT_FALSE(document->sendSavedReport(path));
  observeFiles([](const std::string&) { throwZtException(); });
  EXPECT_FALSE(document->sendSavedReport(path));
}

// sendSavedReports.

TEST_F(ZtPortalDataDeliveryTest, AllAcceptedReportsAreRemovedInTheOrderOfTheListing) {
  store("b.ztr", "<b/>");
  store("c.ztr", "<c/>");
  store("a.ztr", "<a/>");
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_THAT(postedBodies(), ElementsAre("<b/>", "<c/>", "<a/>"));
  EXPECT_THAT(namesInStore(), IsEmpty());
}

TEST_F(ZtPortalDataDeliveryTest, TheSecondOfThreeStopsItWhenRefusedOrMalformed) {
  const std::pair<const char*, std::vector<std::string>> rows[] = {{"<two/>", {"<one/>", "<two/>"}},
                                                                   {"<two>malformed", {"<one/>"}}};
  refusedBody = "<two/>";
  for (const auto& [second, posted] : rows) {
    forget();
    store("1.ztr", "<one/>");
    store("2.ztr", second);
    store("3.ztr", "<three/>");
    EXPECT_FALSE(document->sendSavedReports());
    EXPECT_EQ(postedBodies(), posted);
    EXPECT_THAT(namesInStore(), ElementsAre("2.ztr", "3.ztr")) << second;
    for (const char* name : {"2.ztr", "3.ztr"}) platform.files_.remove(inStore(name));
  }
}

TEST_F(ZtPortalDataDeliveryTest, AFileWithoutTheEndingIsNeitherSentNorRemoved) {
  store("a.xml", "<other/>");
  store("1.ztr", "<one/>");
  std::vector<std::string> operations;
  observeFiles([&](const std::string& operation) {
    if (!operation.starts_with("exists ") && !operation.starts_with("isFolder ") &&
        !operation.starts_with("createFolders ")) {
      operations.push_back(operation);
    }
  });
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_THAT(operations, ElementsAre("list " + std::string(kReports), "read " + inStore("1.ztr"),
                                      "remove " + inStore("1.ztr")));
  EXPECT_THAT(namesInStore(), ElementsAre("a.xml"));
}

TEST_F(ZtPortalDataDeliveryTest, AnEmptyStoreMakesNoRequest) {
  cutOff();
  document = makeDocument();
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_THAT(steps, IsEmpty());
}

TEST_F(ZtPortalDataDeliveryTest, ContinuesWhenAnAcceptedFileCannotBeRemoved) {
  store("1.ztr", "<one/>");
  store("2.ztr", "<two/>");
  FailingFiles files(platform.files_);
  files.failOnce(FailingFiles::Operation::Remove, 1);
  platform.replacedFiles = &files;
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_THAT(postedBodies(), ElementsAre("<one/>", "<two/>"));
  EXPECT_THAT(namesInStore(), ElementsAre("1.ztr"));
}

TEST_F(ZtPortalDataDeliveryTest, EndsWhenThePlatformThrows) {
  store("1.ztr", "<one/>");
  store("2.ztr", "<two/>");
  for (const char* throwing : {"list ", "remove "}) {
    observeFiles([&](const std::string& operation) {
      if (operation.starts_with(throwing)) throwZtException();
    });
    EXPECT_FALSE(document->sendSavedReports()) << throwing;
  }
  EXPECT_THAT(postedBodies(), ElementsAre("<one/>"));
  EXPECT_THAT(namesInStore(), ElementsAre("1.ztr", "2.ztr"));
}

}  // namespace
}  // namespace zt::test
