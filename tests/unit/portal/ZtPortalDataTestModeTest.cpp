#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/TemporaryFolder.h"
#include "tests/unit/portal/PortalTest.h"
#include "ztportal/platform/files/FailingFiles.h"
#include "ztportal/platform/files/LinuxFiles.h"

namespace zt::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr const char* kGhost = "com.kelvane.ZtPortalGhost";

std::string propertyList(const std::string& entries) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<plist version=\"1.0\"><dict>" +
         entries + "</dict></plist>\n";
}

std::string testModeIs(const std::string& value) {
  return propertyList("<key>other</key><string>1</string><key>ztTestMode</key>" + value);
}

/// Bundles of the companion on a real disk, on which the store then is, too.
class ZtPortalDataTestModeTest : public PortalTest {
 protected:
  ZtPortalDataTestModeTest() {
    platform.replacedFiles = &_files;
    platform.supportFolder_.folder = folder.path("share");
    document = makeDocumentWithPool();
  }

  /// Runs an application of `identifier` from a bundle of its own, with `ghost` as its property
  /// list, if there is one.
  void run(const ZtString& identifier, const std::optional<std::string>& ghost) {
    const std::string name =
        "Bundle" + std::to_string(platform.runningApplications_.running.size());
    folder.write(name + "/Contents/Info.plist",
                 propertyList("<key>CFBundleName</key><string>Ghost</string>"));
    if (ghost) folder.write(name + "/Contents/Resources/ghost.plist", *ghost);
    platform.runningApplications_.running.push_back({identifier, folder.path(name)});
  }
  void switchTestModeOn() { run(kGhost, testModeIs("<string>1</string>")); }
  void switchTestModeOff() { platform.runningApplications_.running.clear(); }
  bool testMode() { return ZtTestAccess::mutexEnabled(*document); }

  TemporaryFolder folder;
  std::shared_ptr<ZtPortalData> document;

 private:
  LinuxFiles _files;
};

// The switch.

TEST_F(ZtPortalDataTestModeTest, IsOffWhenNothingRuns) { EXPECT_FALSE(testMode()); }

TEST_F(ZtPortalDataTestModeTest, IsOnWhenTheCompanionsListSaysTheTextOne) {
  switchTestModeOn();
  EXPECT_TRUE(testMode());
}

TEST_F(ZtPortalDataTestModeTest, IsAskedAnewEachTime) {
  switchTestModeOn();
  EXPECT_TRUE(testMode());
  switchTestModeOff();
  EXPECT_FALSE(testMode());
  const int before = platform.runningApplications_.walks;
  document->getSoapString();
  EXPECT_EQ(platform.runningApplications_.walks, before + 1);
}

TEST_F(ZtPortalDataTestModeTest, IsOffForAnyOtherValue) {
  for (const char* value :
       {"<string>0</string>", "<string></string>", "<string>11</string>", "<string> 1</string>",
        "<string>true</string>", "<integer>1</integer>", "<real>1</real>", "<true/>", "<false/>",
        "<array><string>1</string></array>", "<dict/>"}) {
    switchTestModeOff();
    run(kGhost, testModeIs(value));
    EXPECT_FALSE(testMode()) << value;
  }
}

TEST_F(ZtPortalDataTestModeTest, IsOffWithoutAListOrEntry) {
  run(kGhost, std::nullopt);
  EXPECT_FALSE(testMode());
  run(kGhost, propertyList("<key>ZTTESTMODE</key><string>1</string>"));
  EXPECT_FALSE(testMode());
  run(kGhost, "garbage");
  EXPECT_FALSE(testMode());
  run(kGhost, "");
  EXPECT_FALSE(testMode());
  run(kGhost, "<plist version=\"1.0\"><array><string>ztTestMode</string></array></plist>");
  EXPECT_FALSE(testMode());
}

TEST_F(ZtPortalDataTestModeTest, IsOffWhenTheCompanionsBundleIsGone) {
  platform.runningApplications_.running.push_back({kGhost, folder.path("Gone")});
  EXPECT_FALSE(testMode());
  platform.runningApplications_.running.push_back({kGhost, ""});
  EXPECT_FALSE(testMode());
}

TEST_F(ZtPortalDataTestModeTest, KnowsTheCompanionByItsExactIdentifier) {
  const std::string on = testModeIs("<string>1</string>");
  run(nullptr, on);
  run("", on);
  run("com.kelvane.ztportalghost", on);
  run("com.kelvane.ZtPortalGhost2", on);
  run("com.kelvane.ZtPortalGhos", on);
  run("com.kelvane.Setup", on);
  EXPECT_FALSE(testMode());
  run(kGhost, on);
  EXPECT_TRUE(testMode());
}

TEST_F(ZtPortalDataTestModeTest, ASecondCompanionIsAskedWhenTheFirstDoesNotSwitchItOn) {
  const std::optional<std::string> firsts[] = {std::nullopt, testModeIs("<string>0</string>"),
                                               propertyList(""), "garbage"};
  for (const auto& first : firsts) {
    switchTestModeOff();
    run(kGhost, first);
    switchTestModeOn();
    EXPECT_TRUE(testMode()) << first.value_or("no list");
  }
  switchTestModeOff();
  platform.runningApplications_.running.push_back({kGhost, folder.path("Gone")});
  switchTestModeOn();
  EXPECT_TRUE(testMode());
}

TEST_F(ZtPortalDataTestModeTest, ASecondCompanionIsAskedWhenTheListOfTheFirstCannotBeRead) {
  switchTestModeOn();
  LinuxFiles disk;
  FailingFiles files(disk);
  platform.replacedFiles = &files;
  files.failOnce(FailingFiles::Operation::Read, 1);
  EXPECT_FALSE(testMode());
  switchTestModeOn();
  files.failOnce(FailingFiles::Operation::Read, 1);
  EXPECT_TRUE(testMode());
}

TEST_F(ZtPortalDataTestModeTest, AValueThatIsNoTextEndsTheSearch) {
  run(kGhost, testModeIs("<integer>1</integer>"));
  switchTestModeOn();
  EXPECT_FALSE(testMode());
}

TEST_F(ZtPortalDataTestModeTest, TheFirstCompanionThatSaysOneEndsTheSearch) {
  switchTestModeOn();
  run(kGhost, testModeIs("<integer>0</integer>"));
  EXPECT_TRUE(testMode());
}

TEST_F(ZtPortalDataTestModeTest, IsOffWhenThePlatformRaises) {
  switchTestModeOn();
  platform.runningApplications_.onList = &raise;
  EXPECT_FALSE(testMode());
  EXPECT_EQ(document->getSoapString(), requestOf(*document));
}

TEST_F(ZtPortalDataTestModeTest, LetsForeignExceptionsOut) {
  platform.runningApplications_.onList = &raiseForeign;
  EXPECT_THROW(testMode(), ForeignError);
  EXPECT_THROW(document->getSoapString(), ForeignError);
}

// The customer ID.

TEST_F(ZtPortalDataTestModeTest, TheRequestCarriesTheSuffixAndTheDocumentDoesNot) {
  document = makeDocumentWithPool("Brisalink");
  switchTestModeOn();
  EXPECT_EQ(document->getSoapString(), requestOf(*document, "Brisalink_Test"));
  EXPECT_EQ(document->customerId(), "Brisalink");
  EXPECT_EQ(document->getSoapString(), requestOf(*document, "Brisalink_Test"));
}

TEST_F(ZtPortalDataTestModeTest, AnEmptyCustomerKeepsTheSuffix) {
  document = makeDocumentWithPool("");
  switchTestModeOn();
  EXPECT_EQ(document->getSoapString(), requestOf(*document, "_Test"));
  EXPECT_EQ(document->customerId(), "_Test");
  EXPECT_EQ(document->getSoapString(), requestOf(*document, "_Test_Test"));
  EXPECT_EQ(document->customerId(), "_Test");
}

TEST_F(ZtPortalDataTestModeTest, AMissingCustomerStaysMissing) {
  document = makeDocumentWithPool(nullptr);
  switchTestModeOn();
  EXPECT_EQ(document->getSoapString(), requestOf(*document, "(null)"));
  EXPECT_TRUE(document->customerId().isNull());
}

TEST_F(ZtPortalDataTestModeTest, TheCustomerIsAsGivenOutsideTheTestMode) {
  run(kGhost, testModeIs("<string>0</string>"));
  EXPECT_EQ(document->getSoapString(), requestOf(*document));
  document = makeDocumentWithPool("");
  EXPECT_EQ(document->getSoapString(), requestOf(*document, ""));
  EXPECT_EQ(document->customerId(), "");
}

TEST_F(ZtPortalDataTestModeTest, OnlyTheRequestCarriesTheSuffix) {
  switchTestModeOn();
  EXPECT_EQ(document->generateXml(nullptr, true), requestOf(*document));
}

TEST_F(ZtPortalDataTestModeTest, AnEmptyDocumentStaysEmpty) {
  document = makeDocument();
  switchTestModeOn();
  EXPECT_EQ(document->getSoapString(), "");
  EXPECT_EQ(document->customerId(), "Kelvane");
}

// The test service.

TEST_F(ZtPortalDataTestModeTest, ReportsGoToTheTestUrl) {
  switchTestModeOn();
  EXPECT_EQ(ZtTestAccess::getReportUrl(*document), "http://report.test/soap-test");
  EXPECT_TRUE(document->reportToServer());
  EXPECT_THAT(steps, ElementsAre("broadcast", "report http://report.test/soap-test"));
  EXPECT_EQ(platform.http_.asked.front().body, requestOf(*document, "Kelvane_Test"));
  EXPECT_EQ(platform.broadcast_.posted.front().userInfo.at("request"),
            requestOf(*document, "Kelvane_Test"));
}

TEST_F(ZtPortalDataTestModeTest, TheTestServiceIsAskedForItsVersion) {
  switchTestModeOn();
  makeDocument();
  ZtTestAccess::initHttp(*document, kConfigurationUrl, false);
  EXPECT_THAT(steps, ElementsAre("GET http://config.test/reporting/kelvane.xml",
                                 "version http://report.test/soap-test"));
}

TEST_F(ZtPortalDataTestModeTest, AMissingTestUrlIsUsedAllTheSame) {
  configuration.body = "<c><defSOAP>http://report.test/soap</defSOAP></c>";
  document = makeDocumentWithPool();
  switchTestModeOn();
  EXPECT_EQ(ZtTestAccess::getReportUrl(*document), "");
  document->reportToServer();
  EXPECT_THAT(steps, ElementsAre("broadcast", "report "));
}

TEST_F(ZtPortalDataTestModeTest, ATestUrlWithoutConfigurationTriesAgainToGetOnline) {
  ASSERT_TRUE(document->online());
  configuration.body = "<c><defSOAP/><defTestSOAP>http://report.test/soap-test</defTestSOAP></c>";
  ZtTestAccess::getConfiguration(*document, kConfigurationUrl, false);
  ASSERT_TRUE(document->online());
  ASSERT_FALSE(document->gotConfiguration());
  forget();
  switchTestModeOn();
  EXPECT_TRUE(document->reportToServer());
  EXPECT_THAT(steps, ElementsAre("broadcast", "GET http://config.test/reporting/kelvane.xml",
                                 "report http://report.test/soap-test"));
}

// On a real disk.

TEST_F(ZtPortalDataTestModeTest, ARefusedReportIsARealFileWithTheSuffix) {
  switchTestModeOn();
  report = {200, kRefused};
  EXPECT_FALSE(document->reportToServer());
  LinuxFiles files;
  const std::string path = folder.path("share/Kelvane/Setup/reports/" +
                                       std::string(document->reportId().view()) + ".ztr");
  EXPECT_EQ(files.read(path), requestOf(*document, "Kelvane_Test"));
}

TEST_F(ZtPortalDataTestModeTest, SavedReportsGoToTheTestUrl) {
  document->saveReport();
  switchTestModeOn();
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_THAT(steps, ElementsAre("broadcast", "report http://report.test/soap-test"));
  EXPECT_THAT(*platform.http_.asked.front().body, HasSubstr(">Kelvane</CustomerID>"));
  EXPECT_EQ(LinuxFiles().list(folder.path("share/Kelvane/Setup/reports")),
            std::vector<std::string>());
}

}  // namespace
}  // namespace zt::test
