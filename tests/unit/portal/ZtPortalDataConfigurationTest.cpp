#include <optional>
#include <string>
#include <vector>

#include "tests/unit/portal/ObservedFiles.h"
#include "tests/unit/portal/PortalTest.h"

namespace zt::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kLocalCopy = "(null)configuration.xml";
constexpr const char* kGet = "GET http://config.test/reporting/kelvane.xml";

/// Reads configurations into a document that was made while no server answered.
class ZtPortalDataConfigurationTest : public PortalTest {
 protected:
  ZtPortalDataConfigurationTest() {
    const HttpResponse before = configuration;
    configuration = HttpResponse{};
    document = makeDocument();
    configuration = before;
  }

  bool getConfiguration(bool cacheConfiguration = false) {
    return ZtTestAccess::getConfiguration(*document, kConfigurationUrl, cacheConfiguration);
  }
  void initHttp(bool cacheConfiguration = false) {
    ZtTestAccess::initHttp(*document, kConfigurationUrl, cacheConfiguration);
  }
  bool getConfigurationFrom(const std::string& text) {
    configuration = {200, text};
    return getConfiguration();
  }

  std::shared_ptr<ZtPortalData> document;
};

// Reading the document.

TEST_F(ZtPortalDataConfigurationTest, ReadsBothUrls) {
  EXPECT_TRUE(getConfiguration());
  EXPECT_EQ(document->reportUrl(), "http://report.test/soap");
  EXPECT_EQ(document->reportTestUrl(), "http://report.test/soap-test");
  EXPECT_TRUE(document->gotConfiguration());
  EXPECT_FALSE(document->online());
  EXPECT_THAT(steps, ElementsAre(kGet));
}

TEST_F(ZtPortalDataConfigurationTest, AsksTheUrlThatTheDocumentWasMadeWith) {
  EXPECT_TRUE(ZtTestAccess::getConfiguration(*document, "http://other.test/", false));
  ZtTestAccess::initHttp(*document, nullptr, false);
  EXPECT_THAT(steps, ElementsAre(kGet, kGet, "version http://report.test/soap"));
}

TEST_F(ZtPortalDataConfigurationTest, TrimsBothUrls) {
  EXPECT_TRUE(
      getConfigurationFrom("<c>\n<defSOAP>\r\n\t http://a.test/x y \n\xC2\xA0</defSOAP>\n"
                           "<defTestSOAP>\xE2\x80\xA8 http://b.test/\r\n</defTestSOAP>\n</c>"));
  EXPECT_EQ(document->reportUrl(), "http://a.test/x y");
  EXPECT_EQ(document->reportTestUrl(), "http://b.test/");
}

TEST_F(ZtPortalDataConfigurationTest, TakesTheTextAsXmlMeansIt) {
  EXPECT_TRUE(
      getConfigurationFrom("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"
                           "<c><defSOAP>http://<b>a</b>.test/?x=1&amp;y=\xC3\xA4</defSOAP>"
                           "<defTestSOAP><![CDATA[http://b.test/]]></defTestSOAP></c>"));
  EXPECT_EQ(document->reportUrl(), "http://a.test/?x=1&y=\xC3\xA4");
  EXPECT_EQ(document->reportTestUrl(), "http://b.test/");
}

TEST_F(ZtPortalDataConfigurationTest, ElementsAreFoundByTheirExactNameAmongTheRootsChildren) {
  for (const char* text :
       {"<c><DefSOAP>http://a.test/</DefSOAP><deftestsoap>http://b.test/</deftestsoap></c>",
        "<c><d><defSOAP>http://a.test/</defSOAP><defTestSOAP>http://b.test/</defTestSOAP></d></c>",
        "<c xmlns:n='urn:n'><n:defSOAP>http://a.test/</n:defSOAP></c>",
        "<defSOAP>http://a.test/</defSOAP>", "<c><!--defSOAP--></c>", "<c/>"}) {
    EXPECT_FALSE(getConfigurationFrom(text)) << text;
    EXPECT_EQ(document->reportUrl(), "") << text;
    EXPECT_EQ(document->reportTestUrl(), "") << text;
    EXPECT_FALSE(document->gotConfiguration()) << text;
  }
}

TEST_F(ZtPortalDataConfigurationTest, TheFirstOfSeveralElementsCounts) {
  EXPECT_TRUE(getConfigurationFrom(
      "<c><other/><defTestSOAP>http://t1.test/</defTestSOAP><defSOAP>http://a.test/</defSOAP>"
      "<defSOAP>http://b.test/</defSOAP><defTestSOAP>http://t2.test/</defTestSOAP></c>"));
  EXPECT_EQ(document->reportUrl(), "http://a.test/");
  EXPECT_EQ(document->reportTestUrl(), "http://t1.test/");
}

TEST_F(ZtPortalDataConfigurationTest, ATestUrlAloneIsKeptButIsNoConfiguration) {
  configuration.body = "<c><defTestSOAP>http://b.test/</defTestSOAP></c>";
  initHttp();
  EXPECT_EQ(document->reportUrl(), "");
  EXPECT_EQ(document->reportTestUrl(), "http://b.test/");
  EXPECT_FALSE(document->gotConfiguration());
  EXPECT_FALSE(document->online());
  EXPECT_THAT(steps, ElementsAre(kGet));
}

TEST_F(ZtPortalDataConfigurationTest, AnEmptyUrlIsNoConfiguration) {
  for (const char* text : {"<c><defSOAP/></c>", "<c><defSOAP> \r\n</defSOAP></c>"}) {
    EXPECT_FALSE(getConfigurationFrom(text)) << text;
    EXPECT_FALSE(document->gotConfiguration()) << text;
  }
}

TEST_F(ZtPortalDataConfigurationTest, AnEmptyUrlTakesBackAnEarlierConfiguration) {
  ASSERT_TRUE(getConfiguration());
  EXPECT_FALSE(getConfigurationFrom("<c><defSOAP/><defTestSOAP/></c>"));
  EXPECT_EQ(document->reportUrl(), "");
  EXPECT_EQ(document->reportTestUrl(), "");
  EXPECT_FALSE(document->gotConfiguration());
}

TEST_F(ZtPortalDataConfigurationTest, ADocumentWithoutUrlsTakesNothingBack) {
  ASSERT_TRUE(getConfiguration());
  EXPECT_FALSE(getConfigurationFrom("<c/>"));
  EXPECT_EQ(document->reportUrl(), "http://report.test/soap");
  EXPECT_EQ(document->reportTestUrl(), "http://report.test/soap-test");
  EXPECT_TRUE(document->gotConfiguration());
}

TEST_F(ZtPortalDataConfigurationTest, ANewConfigurationReplacesAnEarlierOne) {
  ASSERT_TRUE(getConfiguration());
  EXPECT_TRUE(getConfigurationFrom("<c><defSOAP>http://new.test/</defSOAP></c>"));
  EXPECT_EQ(document->reportUrl(), "http://new.test/");
  EXPECT_EQ(document->reportTestUrl(), "http://report.test/soap-test");
  EXPECT_TRUE(document->gotConfiguration());
}

TEST_F(ZtPortalDataConfigurationTest, AnAnswerThatCannotBeReadChangesNothing) {
  const std::string good = configuration.body;
  for (const HttpResponse& answer :
       {HttpResponse{404, good}, HttpResponse{500, good}, HttpResponse{0, ""},
        HttpResponse{200, ""}, HttpResponse{200, "<c><defSOAP>http://a.test/</defSOAP>"},
        HttpResponse{200, "defSOAP"},
        HttpResponse{200, "<c><defSOAP>http://\xE4.test/</defSOAP></c>"}}) {
    configuration = answer;
    EXPECT_FALSE(getConfiguration()) << answer.status << answer.body;
    EXPECT_EQ(document->reportUrl(), "") << answer.status << answer.body;
    EXPECT_FALSE(document->gotConfiguration()) << answer.status << answer.body;
  }
  configuration = {200, good};
  ASSERT_TRUE(getConfiguration());
  configuration = HttpResponse{};
  EXPECT_FALSE(getConfiguration());
  EXPECT_EQ(document->reportUrl(), "http://report.test/soap");
  EXPECT_TRUE(document->gotConfiguration());
}

TEST_F(ZtPortalDataConfigurationTest, IsNotReadWhenTheTransportRaises) {
  platform.http_.answer = [](const auto&) -> HttpResponse { raise(); };
  EXPECT_FALSE(getConfiguration());
}

TEST_F(ZtPortalDataConfigurationTest, LetsForeignExceptionsOut) {
  platform.http_.answer = [](const auto&) -> HttpResponse { raiseForeign(); };
  EXPECT_THROW(getConfiguration(), ForeignError);
  EXPECT_THROW(initHttp(), ForeignError);
}

// The local copy.

TEST_F(ZtPortalDataConfigurationTest, TheLocalCopyInTheWorkingDirectoryGoesFirst) {
  ASSERT_TRUE(platform.files_.write(kLocalCopy, "<c><defSOAP>http://local.test/</defSOAP></c>"));
  ObservedFiles files(platform.files_, [this](const std::string& step) { steps.push_back(step); });
  platform.replacedFiles = &files;
  EXPECT_TRUE(getConfiguration(true));
  EXPECT_EQ(document->reportUrl(), "http://local.test/");
  EXPECT_THAT(steps, ElementsAre("read (null)configuration.xml"));
}

TEST_F(ZtPortalDataConfigurationTest, TheLocalCopyIsReadInItsOwnEncoding) {
  ASSERT_TRUE(platform.files_.write(kLocalCopy,
                                    "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"
                                    "<c><defSOAP>http://\xE4.test/</defSOAP></c>"));
  EXPECT_TRUE(getConfiguration(true));
  EXPECT_EQ(document->reportUrl(), "http://\xC3\xA4.test/");
}

TEST_F(ZtPortalDataConfigurationTest, TheLocalCopyIsLeftAloneUnlessItIsWanted) {
  ASSERT_TRUE(platform.files_.write(kLocalCopy, "<c><defSOAP>http://local.test/</defSOAP></c>"));
  EXPECT_TRUE(getConfiguration(false));
  EXPECT_EQ(document->reportUrl(), "http://report.test/soap");
}

TEST_F(ZtPortalDataConfigurationTest, AsksTheServerWithoutALocalCopy) {
  EXPECT_TRUE(getConfiguration(true));
  EXPECT_EQ(document->reportUrl(), "http://report.test/soap");
  EXPECT_THAT(steps, ElementsAre(kGet));
  EXPECT_FALSE(platform.files_.exists(kLocalCopy));
}

TEST_F(ZtPortalDataConfigurationTest, AsksTheServerWhenTheLocalCopyIsMalformed) {
  ASSERT_TRUE(platform.files_.write(kLocalCopy, "<c><defSOAP>http://local.test/</defSOAP>"));
  EXPECT_TRUE(getConfiguration(true));
  EXPECT_EQ(document->reportUrl(), "http://report.test/soap");
  EXPECT_THAT(steps, ElementsAre(kGet));
}

TEST_F(ZtPortalDataConfigurationTest, AWellFormedLocalCopyIsTheLastWordAlsoWithoutUrl) {
  ASSERT_TRUE(platform.files_.write(kLocalCopy, "<c/>"));
  EXPECT_FALSE(getConfiguration(true));
  EXPECT_THAT(steps, IsEmpty());
}

TEST_F(ZtPortalDataConfigurationTest, IsNotReadWhenTheFilesRaise) {
  ObservedFiles files(platform.files_, [](const std::string&) { raise(); });
  platform.replacedFiles = &files;
  EXPECT_FALSE(getConfiguration(true));
  EXPECT_THAT(steps, IsEmpty());
}

TEST_F(ZtPortalDataConfigurationTest, ADocumentMadeForTheLocalCopyReadsIt) {
  ASSERT_TRUE(platform.files_.write(kLocalCopy, "<c><defSOAP>http://local.test/</defSOAP></c>"));
  const auto local =
      ZtPortalData::initWithValues(kConfigurationUrl, true, "Kelvane", kApplicationId, "2.1.77");
  EXPECT_THAT(steps, ElementsAre("version http://local.test/"));
  EXPECT_TRUE(local->online());
}

// Going online.

TEST_F(ZtPortalDataConfigurationTest, GoesOnlineWhenTheServerTellsItsVersion) {
  initHttp();
  EXPECT_THAT(steps, ElementsAre(kGet, "version http://report.test/soap"));
  EXPECT_TRUE(document->gotConfiguration());
  EXPECT_TRUE(document->online());
  EXPECT_EQ(document->serverVersion(), "7.1");
}

TEST_F(ZtPortalDataConfigurationTest, PassesOnWhetherTheLocalCopyIsWanted) {
  ASSERT_TRUE(platform.files_.write(kLocalCopy, "<c><defSOAP>http://local.test/</defSOAP></c>"));
  initHttp(true);
  EXPECT_THAT(steps, ElementsAre("version http://local.test/"));
  forget();
  initHttp(false);
  EXPECT_THAT(steps, ElementsAre(kGet, "version http://report.test/soap"));
}

TEST_F(ZtPortalDataConfigurationTest, AsksForNoVersionWithoutConfiguration) {
  configuration = HttpResponse{};
  initHttp();
  EXPECT_THAT(steps, ElementsAre(kGet));
  EXPECT_FALSE(document->online());
}

TEST_F(ZtPortalDataConfigurationTest, StaysOfflineWithoutAVersion) {
  for (const HttpResponse& answer :
       {HttpResponse{}, HttpResponse{404, "<versioninfo>7.1</versioninfo>"},
        HttpResponse{200, "<versioninfo> </versioninfo>"},
        HttpResponse{200, "<e><b><versioninfo>7.1</versioninfo></b></e>"},
        HttpResponse{200, "<versioninfo>\xE4</versioninfo>"}}) {
    version = answer;
    initHttp();
    EXPECT_TRUE(document->gotConfiguration()) << answer.body;
    EXPECT_FALSE(document->online()) << answer.body;
  }
}

TEST_F(ZtPortalDataConfigurationTest, GoesOfflineWhenTheServerTellsItsVersionNoMore) {
  initHttp();
  ASSERT_TRUE(document->online());
  version = HttpResponse{};
  initHttp();
  EXPECT_FALSE(document->online());
  EXPECT_EQ(document->serverVersion(), "7.1");
}

TEST_F(ZtPortalDataConfigurationTest, StaysOnlineWhenTheConfigurationIsNotReadAgain) {
  initHttp();
  ASSERT_TRUE(document->online());
  cutOff();
  initHttp();
  EXPECT_TRUE(document->online());
  EXPECT_TRUE(document->gotConfiguration());
}

TEST_F(ZtPortalDataConfigurationTest, SwallowsWhatThePlatformRaises) {
  ObservedFiles files(platform.files_, [](const std::string&) { raise(); });
  platform.replacedFiles = &files;
  initHttp(true);
  EXPECT_FALSE(document->gotConfiguration());
  EXPECT_FALSE(document->online());
}

// Which URL is used.

TEST_F(ZtPortalDataConfigurationTest, ReportsGoToTheReportUrlOutsideTheTestMode) {
  EXPECT_EQ(ZtTestAccess::getReportUrl(*document), "");
  initHttp();
  EXPECT_EQ(ZtTestAccess::getReportUrl(*document), "http://report.test/soap");
}

}  // namespace
}  // namespace zt::test
