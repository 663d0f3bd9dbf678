// SPDX-License-Identifier: Apache-2.0
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/FailingFiles.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/portal/PortalTest.h"
#include "ztportal/platform/files/LinuxFiles.h"
#include "ztportal/platform/time/DateText.h"
#include "ztportal/pools/ZtPortalPoolField.h"
#include "ztportal/portal/Companion.h"

namespace zt::test {
namespace {

using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Pair;

constexpr const char* kGhost = "com.kelvane.ZtPortalGhost";
constexpr const char* kTestReport = "report http://report.test/soap-test";

std::string propertyList(const std::string& entries) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<plist version=\"1.0\"><dict>" +
         entries + "</dict></plist>\n";
}

std::string testModeIs(const std::string& value) {
  return propertyList("<key>other</key><string>1</string><key>ztTestMode</key>" + value);
}

const std::string kOn = testModeIs("<string>1</string>");

/// Bundles of the companion on a real disk; the store is on that disk, too.
class CompanionTest : public PortalTest {
 protected:
  CompanionTest() {
    platform.replacedFiles = &_files;
    platform.supportFolder_.folder = folder.path("share");
  }

  /// Runs an application from a separate bundle, with `ghost` as its property list if given.
  void run(const ZtString& identifier, const std::optional<std::string>& ghost) {
    const std::string name =
        "Bundle" + std::to_string(platform.runningApplications_.running.size());
    folder.write(name + "/Contents/Info.plist",
                 propertyList("<key>CFBundleName</key><string>Ghost</string>"));
    if (ghost) folder.write(name + "/Contents/Resources/ghost.plist", *ghost);
    platform.runningApplications_.running.push_back({identifier, folder.path(name)});
  }
  void runWithoutBundle(const std::string& path) {
    platform.runningApplications_.running.push_back({kGhost, path});
  }
  void switchTestModeOn() { run(kGhost, kOn); }
  void switchTestModeOff() { platform.runningApplications_.running.clear(); }

  TemporaryFolder folder;

 private:
  LinuxFiles _files;
};

// The switch.

TEST_F(CompanionTest, TestModeIsOffWithoutACompanionAndOnWhenItsListSaysTheStringOne) {
  EXPECT_FALSE(testModeIsOn());
  switchTestModeOn();
  EXPECT_TRUE(testModeIsOn());
  switchTestModeOff();
  EXPECT_FALSE(testModeIsOn()) << "it is asked at every call";
  EXPECT_EQ(platform.runningApplications_.walks, 3);
}

TEST_F(CompanionTest, AnyValueButTheStringOneLeavesTestModeOff) {
  for (const char* value :
       {"<string>0</string>", "<string></string>", "<string>11</string>", "<string> 1</string>",
        "<string>true</string>", "<integer>1</integer>", "<real>1</real>", "<true/>", "<false/>",
        "<array><string>1</string></array>", "<dict/>"}) {
    switchTestModeOff();
    run(kGhost, testModeIs(value));
    EXPECT_FALSE(testModeIsOn()) << value;
  }
}

TEST_F(CompanionTest, ACompanionWithoutAnEntryIsSkipped) {
  const std::optional<std::string> rows[] = {
      std::nullopt,
      propertyList(""),
      propertyList("<key>ZTTESTMODE</key><string>1</string>"),
      "garbage",
      "",
      "<plist version=\"1.0\"><array><string>ztTestMode</string></array></plist>",
      testModeIs("<string>0</string>")};
  for (const auto& ghost : rows) {
    switchTestModeOff();
    run(kGhost, ghost);
    EXPECT_FALSE(testModeIsOn()) << ghost.value_or("no list");
    switchTestModeOn();
    EXPECT_TRUE(testModeIsOn()) << ghost.value_or("no list");
  }
  switchTestModeOff();
  runWithoutBundle(folder.path("Gone"));
  runWithoutBundle("");
  EXPECT_FALSE(testModeIsOn());
  switchTestModeOn();
  EXPECT_TRUE(testModeIsOn());
}

TEST_F(CompanionTest, ACompanionWhoseListCannotBeReadIsSkipped) {
  switchTestModeOn();
  LinuxFiles disk;
  FailingFiles files(disk);
  platform.replacedFiles = &files;
  files.failOnce(FailingFiles::Operation::Read, 1);
  EXPECT_FALSE(testModeIsOn());
  switchTestModeOn();
  files.failOnce(FailingFiles::Operation::Read, 1);
  EXPECT_TRUE(testModeIsOn());
}

TEST_F(CompanionTest, TheFirstStringOneOrOtherTypeEndsTheSearch) {
  run(kGhost, testModeIs("<integer>1</integer>"));
  switchTestModeOn();
  EXPECT_FALSE(testModeIsOn());
  switchTestModeOff();
  switchTestModeOn();
  run(kGhost, testModeIs("<integer>0</integer>"));
  EXPECT_TRUE(testModeIsOn());
}

TEST_F(CompanionTest, TheCompanionHasExactlyItsIdentifier) {
  for (const ZtString& identifier :
       {ZtString(), ZtString(""), ZtString("com.kelvane.ztportalghost"),
        ZtString("com.kelvane.ZtPortalGhost2"), ZtString("com.kelvane.ZtPortalGhos"),
        ZtString("com.kelvane.Setup")}) {
    run(identifier, kOn);
  }
  EXPECT_FALSE(testModeIsOn());
  switchTestModeOn();
  EXPECT_TRUE(testModeIsOn());
}

TEST_F(CompanionTest, AnExceptionOfThePlatformLeavesTestModeOffAndOthersPass) {
  switchTestModeOn();
  platform.runningApplications_.onList = &throwZtException;
  EXPECT_FALSE(testModeIsOn());
  platform.runningApplications_.onList = &throwForeign;
  EXPECT_THROW(testModeIsOn(), ForeignError);
}

// The broadcast.

TEST_F(CompanionTest, TheBroadcastHasHostVersionDateAndRequest) {
  const std::string before = shortDateAndTime(ZtDate::now());
  broadcastRequest("<one/>");
  const std::string after = shortDateAndTime(ZtDate::now());
  ASSERT_EQ(platform.broadcast_.posted.size(), 1U);
  const auto& message = platform.broadcast_.posted.front();
  EXPECT_EQ(message.name, "ZtPortalGhostNotification");
  EXPECT_EQ(message.object, "Setup");
  EXPECT_THAT(message.userInfo,
              ElementsAre(Pair("date", AnyOf(ZtString(before), ZtString(after))),
                          Pair("request", ZtString("<one/>")), Pair("version", ZtString("2.1"))));
}

TEST_F(CompanionTest, TheBroadcastLeavesMissingWhatTheHostDoesNotName) {
  ZtHost::setBundleInfo({{"CFBundleName", nullptr}});
  broadcastRequest("<one/>");
  EXPECT_TRUE(platform.broadcast_.posted.at(0).object.isNull());
  EXPECT_TRUE(platform.broadcast_.posted.at(0).userInfo.at("version").isNull());
}

// Documents in test mode.

TEST_F(CompanionTest, TheRequestHasTheSuffixAndTheDocumentDoesNot) {
  const auto document = makeDocumentWithPool("Brisalink");
  switchTestModeOn();
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(document->getSoapString(), requestOf(*document, "Brisalink_Test"));
    EXPECT_EQ(document->customerId(), "Brisalink");
  }
  EXPECT_THAT(document->generateXml(nullptr, true), HasSubstr(">Brisalink</CustomerID>"));
}

TEST_F(CompanionTest, AnEmptyCustomerKeepsTheSuffixAndAMissingOneStaysMissing) {
  const auto document = makeDocumentWithPool("");
  const auto missing = makeDocumentWithPool(nullptr);
  EXPECT_EQ(document->getSoapString(), requestOf(*document, ""));
  switchTestModeOn();
  EXPECT_EQ(document->getSoapString(), requestOf(*document, "_Test"));
  EXPECT_EQ(document->customerId(), "_Test");
  EXPECT_EQ(document->getSoapString(), requestOf(*document, "_Test_Test"));
  EXPECT_EQ(document->customerId(), "_Test");
  EXPECT_EQ(missing->getSoapString(), requestOf(*missing, "(null)"));
  EXPECT_TRUE(missing->customerId().isNull());
}

/// A field of a host, whose writer throws what the library does not know.
struct ForeignField final : ZtPortalPoolField {
  ForeignField() : ZtPortalPoolField(Creation{}, "FOREIGN") {}
  void addToXml(const ZtString&, std::string&, bool) const override { throwForeign(); }
};

// Regression: the customer ID kept its suffix after such an exception, and got another one with
// each further request.
TEST_F(CompanionTest, TheSuffixIsTakenOffWhenAnotherExceptionPasses) {
  switchTestModeOn();
  const auto document = makeDocumentWithPool("Brisalink");
  document->pools().front()->fields()->mutableFields()->push_back(std::make_shared<ForeignField>());
  EXPECT_THROW(document->getSoapString(), ForeignError);
  EXPECT_EQ(document->customerId(), "Brisalink");
}

TEST_F(CompanionTest, AnEmptyDocumentStaysEmptyInTestMode) {
  const auto document = makeDocument();
  switchTestModeOn();
  EXPECT_EQ(document->getSoapString(), "");
  EXPECT_EQ(document->customerId(), "Kelvane");
}

TEST_F(CompanionTest, RequestsGoToTheTestServiceWithTheSuffix) {
  const auto document = makeDocumentWithPool();
  switchTestModeOn();
  EXPECT_EQ(ZtTestAccess::getReportUrl(*document), "http://report.test/soap-test");
  EXPECT_TRUE(document->reportToServer());
  EXPECT_THAT(steps, ElementsAre(kBroadcast, kTestReport));
  EXPECT_EQ(platform.http_.asked.front().body, requestOf(*document, "Kelvane_Test"));
  EXPECT_EQ(platform.broadcast_.posted.front().userInfo.at("request"),
            requestOf(*document, "Kelvane_Test"));
  forget();
  ZtTestAccess::initHttp(*document, kConfigurationUrl, false);
  EXPECT_THAT(steps, ElementsAre(kGet, "version http://report.test/soap-test"));
}

TEST_F(CompanionTest, AMissingTestUrlIsStillUsed) {
  configuration.body = "<c><defSOAP>http://report.test/soap</defSOAP></c>";
  const auto document = makeDocumentWithPool();
  switchTestModeOn();
  document->reportToServer();
  EXPECT_THAT(steps, ElementsAre(kBroadcast, "report "));
}

TEST_F(CompanionTest, TheReceiptSaysThatThereIsNoTestUrl) {
  configuration.body = "<c><defSOAP>http://report.test/soap</defSOAP></c>";
  const auto document = makeDocumentWithPool();
  switchTestModeOn();
  report = HttpResponse{};
  EXPECT_FALSE(document->reportToServer());
  EXPECT_EQ(document->lastDelivery().outcome, ZtDeliveryOutcome::NoTestUrl);
  EXPECT_EQ(document->lastDelivery().message,
            "Test mode is on, and the configuration has no URL for it.");
}

TEST_F(CompanionTest, ATestUrlWithoutAConfigurationTriesAgainToGetOnline) {
  const auto document = makeDocumentWithPool();
  configuration.body = "<c><defSOAP/><defTestSOAP>http://report.test/soap-test</defTestSOAP></c>";
  ZtTestAccess::getConfiguration(*document, kConfigurationUrl, false);
  ASSERT_TRUE(document->online());
  ASSERT_FALSE(document->gotConfiguration());
  forget();
  switchTestModeOn();
  EXPECT_TRUE(document->reportToServer());
  EXPECT_THAT(steps, ElementsAre(kBroadcast, kGet, kTestReport));
}

TEST_F(CompanionTest, ARefusedTestIsSavedWithTheSuffix) {
  const auto document = makeDocumentWithPool();
  switchTestModeOn();
  report = {200, kRefused};
  EXPECT_FALSE(document->reportToServer());
  EXPECT_EQ(LinuxFiles().read(folder.path("share/Kelvane/Setup/reports/" +
                                          std::string(document->reportId().view()) + ".ztr"),
                              kReportFileLimit),
            requestOf(*document, "Kelvane_Test"));
}

TEST_F(CompanionTest, SavedReportsGoToTheTestServiceAsTheyAre) {
  const auto document = makeDocumentWithPool();
  document->saveReport();
  switchTestModeOn();
  EXPECT_FALSE(document->sendSavedReports());
  EXPECT_THAT(steps, ElementsAre(kBroadcast, kTestReport));
  EXPECT_THAT(*platform.http_.asked.front().body, HasSubstr(">Kelvane</CustomerID>"));
  EXPECT_EQ(LinuxFiles().list(folder.path("share/Kelvane/Setup/reports")),
            std::vector<std::string>());
}

}  // namespace
}  // namespace zt::test
