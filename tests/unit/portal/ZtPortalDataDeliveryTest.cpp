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

class ZtPortalDataDeliveryTest : public PortalTest {
 protected:
  /// The content of this report's file in the store; nothing when it is not there.
  std::optional<std::string> saved(const ZtPortalData& document) {
    return platform.files_.read(std::string(kReports) + "/" +
                                std::string(document.reportId().view()) + ".ztr");
  }
  std::vector<std::string> namesInStore() {
    return platform.files_.list(kReports).value_or(std::vector<std::string>());
  }
};

// What counts as accepted.

TEST_F(ZtPortalDataDeliveryTest, AcceptsByTheNameOfTheResponseAndTheWordTrue) {
  struct Row {
    HttpResponse answer;
    bool accepted;
  };
  const Row rows[] = {
      {{200, kAccepted}, true},
      {{299, kAccepted}, true},
      {{200, "<ns1:postPoolDatasResponse><return>TRUE</return></ns1:postPoolDatasResponse>"}, true},
      {{200, "<postPoolDatasResponse>true</postPoolDatasResponse>"}, true},
      {{200, "POSTPOOLDATASRESPONSE TRUE"}, true},
      {{200, "postpooldatasresponse true"}, true},
      {{200, "PoStPoOlDaTaSrEsPoNsE tRuE"}, true},
      {{200, "postpooldatasresponsetrue"}, true},
      {{200, "not XML: true, says <the postPoolDatasResponse"}, true},
      {{200, "<x construed='1'><postPoolDatasResponse>no</postPoolDatasResponse></x>"}, true},
      {{200, "\xC3\x84\xF0\x9F\x98\x80 postPoolDatasResponse True \xC3\x96"}, true},
      {{200, "<PostPoolDatasResponse><return>false</return></PostPoolDatasResponse>"}, false},
      {{200, kRefused}, false},
      {{200, "<return>true</return>"}, false},
      {{200, "postPoolDatasRespons true"}, false},
      {{200, "ostPoolDatasResponse true"}, false},
      {{200, "postPoolDatas Response true"}, false},
      {{200, "postPoolDatasResponse tru"}, false},
      {{200, "postPoolDatasResponse rue"}, false},
      {{200, "postPoolDatasResponse t rue"}, false},
      {{200, "postPoolDatasResponse 1"}, false},
      {{200, ""}, false},
      {{200, std::string(kAccepted) + "\xE4"}, false},
      {{199, kAccepted}, false},
      {{300, kAccepted}, false},
      {{404, kAccepted}, false},
      {{500, kAccepted}, false},
      {{0, ""}, false},
  };
  for (const Row& row : rows) {
    const auto document = makeDocumentWithPool();
    report = row.answer;
    EXPECT_EQ(document->reportToServer(), row.accepted) << row.answer.status << row.answer.body;
    EXPECT_EQ(saved(*document).has_value(), !row.accepted) << row.answer.status << row.answer.body;
  }
}

// reportToServer.

TEST_F(ZtPortalDataDeliveryTest, BroadcastsTheRequestThenPostsIt) {
  const auto document = makeDocumentWithPool();
  EXPECT_TRUE(document->reportToServer());
  EXPECT_THAT(steps, ElementsAre("broadcast", kReport));
  ASSERT_EQ(platform.http_.asked.size(), 1U);
  EXPECT_EQ(platform.http_.asked.front().method, "POST");
  EXPECT_EQ(platform.http_.asked.front().body, requestOf(*document));
  ASSERT_EQ(platform.broadcast_.posted.size(), 1U);
  EXPECT_EQ(platform.broadcast_.posted.front().userInfo.at("request"), requestOf(*document));
}

TEST_F(ZtPortalDataDeliveryTest, AnAcceptedReportIsNotSaved) {
  const auto document = makeDocumentWithPool();
  EXPECT_TRUE(document->reportToServer());
  EXPECT_THAT(namesInStore(), IsEmpty());
}

TEST_F(ZtPortalDataDeliveryTest, ARefusedReportIsTheOneFileInTheStore) {
  const auto document = makeDocumentWithPool();
  report = {200, kRefused};
  EXPECT_FALSE(document->reportToServer());
  EXPECT_THAT(namesInStore(), ElementsAre(std::string(document->reportId().view()) + ".ztr"));
  EXPECT_EQ(saved(*document), requestOf(*document));
  EXPECT_EQ(saved(*document), document->getSoapString());
}

TEST_F(ZtPortalDataDeliveryTest, AReportIsSavedWhenTheTransportRaises) {
  const auto document = makeDocumentWithPool();
  platform.http_.answer = [](const auto&) -> HttpResponse { raise(); };
  EXPECT_FALSE(document->reportToServer());
  EXPECT_EQ(saved(*document), requestOf(*document));
}

TEST_F(ZtPortalDataDeliveryTest, AReportIsSavedAfterItWasPosted) {
  const auto document = makeDocumentWithPool();
  report = {200, kRefused};
  ObservedFiles files(platform.files_, [this](const std::string& step) {
    if (step.starts_with("write ")) steps.push_back(step);
  });
  platform.replacedFiles = &files;
  document->reportToServer();
  EXPECT_THAT(steps, ElementsAre("broadcast", kReport,
                                 "write " + std::string(kReports) + "/" +
                                     std::string(document->reportId().view()) + ".ztr"));
}

TEST_F(ZtPortalDataDeliveryTest, AReportIsNeitherPostedNorSavedWhenTheBroadcastRaises) {
  const auto document = makeDocumentWithPool();
  platform.broadcast_.onPost = &raise;
  EXPECT_FALSE(document->reportToServer());
  EXPECT_THAT(steps, IsEmpty());
  EXPECT_EQ(saved(*document), std::nullopt);
}

TEST_F(ZtPortalDataDeliveryTest, LetsForeignExceptionsOutOfReporting) {
  const auto document = makeDocumentWithPool();
  platform.http_.answer = [](const auto&) -> HttpResponse { raiseForeign(); };
  EXPECT_THROW(document->reportToServer(), ForeignError);
  platform.broadcast_.onPost = &raiseForeign;
  EXPECT_THROW(document->reportToServer(), ForeignError);
}

TEST_F(ZtPortalDataDeliveryTest, AReportWithoutPoolsIsPostedAndSavedAsAnEmptyText) {
  const auto document = makeDocument();
  report = {200, kRefused};
  EXPECT_FALSE(document->reportToServer());
  ASSERT_EQ(platform.http_.asked.size(), 1U);
  EXPECT_EQ(platform.http_.asked.front().method, "POST");
  EXPECT_EQ(platform.http_.asked.front().body, "");
  EXPECT_EQ(platform.broadcast_.posted.front().userInfo.at("request"), "");
  EXPECT_EQ(saved(*document), "");
}

TEST_F(ZtPortalDataDeliveryTest, ADocumentWithoutUrlDoesNotTryAgainToGetOnline) {
  const HttpResponse before = configuration;
  configuration = HttpResponse{};
  const auto document = makeDocumentWithPool();
  configuration = before;
  report = HttpResponse{};
  EXPECT_FALSE(document->reportToServer());
  EXPECT_THAT(steps, ElementsAre("broadcast", "report "));
  EXPECT_EQ(saved(*document), requestOf(*document));
}

TEST_F(ZtPortalDataDeliveryTest, ADocumentWithUrlThatIsOfflineTriesAgainAndUsesTheNewUrl) {
  version = HttpResponse{};
  const auto document = makeDocumentWithPool();
  ASSERT_TRUE(document->gotConfiguration());
  ASSERT_FALSE(document->online());
  configuration = {200, "<c><defSOAP>http://new.test/</defSOAP></c>"};
  version = {200, "<versioninfo>7.2</versioninfo>"};
  EXPECT_TRUE(document->reportToServer());
  EXPECT_THAT(
      steps, ElementsAre("broadcast", kGet, "version http://new.test/", "report http://new.test/"));
  EXPECT_TRUE(document->online());
}

TEST_F(ZtPortalDataDeliveryTest, ADocumentThatStaysOfflineIsPostedAllTheSame) {
  version = HttpResponse{};
  const auto document = makeDocumentWithPool();
  EXPECT_TRUE(document->reportToServer());
  EXPECT_THAT(steps, ElementsAre("broadcast", kGet, kVersion, kReport));
  EXPECT_FALSE(document->online());
}

TEST_F(ZtPortalDataDeliveryTest, TryingAgainUsesTheLocalCopyIfTheDocumentWasMadeForIt) {
  version = HttpResponse{};
  const auto document =
      ZtPortalData::initWithValues(kConfigurationUrl, true, "Kelvane", kApplicationId, "2.1.77");
  document->addPool("CUSTOM", ZtDate());
  forget();
  ASSERT_TRUE(platform.files_.write("(null)configuration.xml",
                                    "<c><defSOAP>http://local.test/</defSOAP></c>"));
  document->reportToServer();
  EXPECT_THAT(steps,
              ElementsAre("broadcast", "version http://local.test/", "report http://local.test/"));
}

// The notification.

TEST_F(ZtPortalDataDeliveryTest, TheNotificationTellsHostVersionDateAndRequest) {
  const auto document = makeDocumentWithPool();
  const std::string before = shortDateAndTime(ZtDate::now());
  document->reportToServer();
  const std::string after = shortDateAndTime(ZtDate::now());
  ASSERT_EQ(platform.broadcast_.posted.size(), 1U);
  const auto& message = platform.broadcast_.posted.front();
  EXPECT_EQ(message.name, "ZtPortalGhostNotification");
  EXPECT_EQ(message.object, "Setup");
  EXPECT_THAT(message.userInfo, ElementsAre(Pair("date", AnyOf(ZtString(before), ZtString(after))),
                                            Pair("request", ZtString(requestOf(*document))),
                                            Pair("version", ZtString("2.1"))));
}

TEST_F(ZtPortalDataDeliveryTest, TheNotificationLeavesMissingWhatTheHostDoesNotSay) {
  ZtHost::setBundleInfo({{"CFBundleName", nullptr}});
  makeDocumentWithPool()->reportToServer();
  ASSERT_EQ(platform.broadcast_.posted.size(), 1U);
  EXPECT_TRUE(platform.broadcast_.posted.front().object.isNull());
  EXPECT_TRUE(platform.broadcast_.posted.front().userInfo.at("version").isNull());
}

TEST_F(ZtPortalDataDeliveryTest, NothingIsBroadcastBeforeAReportGoesOut) {
  const auto document = makeDocumentWithPool();
  document->saveReport();
  document->reportToFile("/report.xml");
  document->getSoapString();
  EXPECT_THAT(platform.broadcast_.posted, IsEmpty());
}

// Saving.

TEST_F(ZtPortalDataDeliveryTest, SavesTheRequestUnderTheReportId) {
  const auto document = makeDocumentWithPool();
  document->saveReport();
  EXPECT_EQ(saved(*document), requestOf(*document));
  EXPECT_THAT(steps, IsEmpty());
}

TEST_F(ZtPortalDataDeliveryTest, SavingTwiceLeavesOneFileWithTheLaterText) {
  const auto document = makeDocumentWithPool();
  document->saveReport();
  document->pools().front()->setPoolType("OTHER");
  document->saveReport();
  EXPECT_EQ(namesInStore().size(), 1U);
  EXPECT_EQ(saved(*document), document->getSoapString());
}

// A report that was saved whole was lost when the host saved it once more, as sending a saved one
// does, and the disk was full or the host killed by then: the file was emptied first.
TEST_F(ZtPortalDataDeliveryTest, AReportThatIsSavedWholeIsNotWrittenAgain) {
  const auto document = makeDocumentWithPool();
  document->saveReport();
  FailingFiles files(platform.files_);
  files.failAlways(FailingFiles::Operation::WriteMidway);
  platform.replacedFiles = &files;
  document->saveReport();
  EXPECT_EQ(saved(*document), document->getSoapString());
}

TEST_F(ZtPortalDataDeliveryTest, SavingIsSilentWhenItFails) {
  const auto document = makeDocumentWithPool();
  FailingFiles files(platform.files_);
  files.failAlways(FailingFiles::Operation::Write);
  platform.replacedFiles = &files;
  document->saveReport();
  EXPECT_THAT(namesInStore(), IsEmpty());
}

TEST_F(ZtPortalDataDeliveryTest, SavingIsSilentWhenTheFilesRaise) {
  const auto document = makeDocumentWithPool();
  ObservedFiles files(platform.files_, [](const std::string&) { raise(); });
  platform.replacedFiles = &files;
  EXPECT_NO_THROW(document->saveReport());
  report = {200, kRefused};
  EXPECT_FALSE(document->reportToServer());
}

TEST_F(ZtPortalDataDeliveryTest, NothingIsWrittenWithoutAStore) {
  const auto document = makeDocumentWithPool();
  platform.supportFolder_.folder = std::nullopt;
  std::vector<std::string> operations;
  ObservedFiles files(platform.files_,
                      [&](const std::string& operation) { operations.push_back(operation); });
  platform.replacedFiles = &files;
  document->saveReport();
  EXPECT_THAT(operations, IsEmpty());
}

// A store that asked more than once could write elsewhere if the user's folder changed meanwhile.
TEST_F(ZtPortalDataDeliveryTest, SavingAsksForTheUsersFolderOnce) {
  const auto document = makeDocumentWithPool();
  document->saveReport();
  EXPECT_THAT(platform.supportFolder_.askedDomains, ElementsAre(-32763));
}

TEST_F(ZtPortalDataDeliveryTest, LetsForeignExceptionsOutOfSaving) {
  const auto document = makeDocumentWithPool();
  ObservedFiles files(platform.files_, [](const std::string&) { raiseForeign(); });
  platform.replacedFiles = &files;
  EXPECT_THROW(document->saveReport(), ForeignError);
  EXPECT_THROW(document->reportToFile("/report.xml"), ForeignError);
}

TEST_F(ZtPortalDataDeliveryTest, WritesTheRequestToAFileAndSaysFalse) {
  const auto document = makeDocumentWithPool();
  EXPECT_FALSE(document->reportToFile("/report.xml"));
  EXPECT_EQ(platform.files_.read("/report.xml"), requestOf(*document));
  EXPECT_FALSE(platform.files_.exists(kReports));
}

TEST_F(ZtPortalDataDeliveryTest, SaysFalseWhenTheFileCannotBeWritten) {
  const auto document = makeDocumentWithPool();
  EXPECT_FALSE(document->reportToFile("/no/such/folder/report.xml"));
  std::vector<std::string> operations;
  ObservedFiles files(platform.files_, [&](const std::string& operation) {
    operations.push_back(operation);
    raise();
  });
  platform.replacedFiles = &files;
  EXPECT_FALSE(document->reportToFile("/report.xml"));
  EXPECT_FALSE(document->reportToFile(nullptr));
  EXPECT_THAT(operations, ElementsAre("write /report.xml"));
}

// The store.

TEST_F(ZtPortalDataDeliveryTest, TheStoreIsTheFolderReportsOfTheHost) {
  EXPECT_EQ(ZtTestAccess::getReportFolder(), "/home/user/.local/share/Kelvane/Setup/reports");
  EXPECT_TRUE(platform.files_.isFolder(kReports));
  EXPECT_EQ(ZtPortalData::reportFolder(), "/home/user/.local/share/Kelvane/Setup/reports");
}

TEST_F(ZtPortalDataDeliveryTest, TheFileOfAReportNeedNotBeThere) {
  const auto document = makeDocument();
  const std::string expected = "/home/user/.local/share/Kelvane/Setup/reports/" +
                               std::string(document->reportId().view()) + ".ztr";
  EXPECT_EQ(document->reportFile(), expected);
  EXPECT_EQ(ZtTestAccess::getReportFile(*document), expected);
  EXPECT_TRUE(platform.files_.isFolder(kReports));
  EXPECT_FALSE(platform.files_.exists(expected));
}

TEST_F(ZtPortalDataDeliveryTest, ThereIsNoStoreWithoutASupportFolder) {
  const auto document = makeDocument();
  platform.supportFolder_.folder = std::nullopt;
  EXPECT_TRUE(ZtPortalData::reportFolder().isNull());
  EXPECT_TRUE(document->reportFile().isNull());
}

TEST_F(ZtPortalDataDeliveryTest, ThereIsNoStoreWhenItsFolderCannotBeMade) {
  const auto document = makeDocument();
  ASSERT_TRUE(platform.files_.createFolders("/home/user/.local/share/Kelvane/Setup"));
  ASSERT_TRUE(platform.files_.write(kReports, "a file in its place"));
  EXPECT_TRUE(ZtPortalData::reportFolder().isNull());
  EXPECT_TRUE(document->reportFile().isNull());
}

}  // namespace
}  // namespace zt::test
