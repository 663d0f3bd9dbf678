// SPDX-License-Identifier: Apache-2.0
#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/unit/portal/PortalTest.h"
#include "ztportal/portal/ReportingServer.h"
#include "ztportal/portal/RequestText.h"

namespace zt::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

constexpr const char* kUrl = "http://any.test/where?a=b";
constexpr const char* kLocalConfiguration = "<c><defSOAP>http://local.test/</defSOAP></c>";

class ReportingServerTest : public PortalTest {
 protected:
  void respond(const HttpResponse& response) {
    platform.http_.answer = [response](const auto&) { return response; };
  }
  bool readConfiguration(const std::string& text) {
    configuration = {200, text};
    return server.readConfiguration(false);
  }
  static ZtString exchange(const ZtString& url, const ZtString& body) {
    ZtDelivery ignored;
    return zt::ReportingServer::exchange(url, body, {}, ignored);
  }

  zt::ReportingServer server{kConfigurationUrl};
};

void expectCommonParts(const FakeHttpTransport::Asked& asked) {
  EXPECT_THAT(asked.headers, ElementsAre(Pair("Content-Type", "application/xml"),
                                         Pair("User-Agent", "Kelvane portal service (osx)")))
      << asked.url;
  EXPECT_EQ(asked.timeout, std::chrono::milliseconds(2000)) << asked.url;
}

// One exchange.

TEST_F(ReportingServerTest, AnExchangeIsAGetWithoutABodyAndAPostWithOne) {
  const std::string bytes("<a>\xC3\xA4\r\n\0</a>", 13);
  const std::pair<ZtString, const char*> rows[] = {{nullptr, "GET"}, {"", "POST"}, {bytes, "POST"}};
  for (const auto& [body, method] : rows) {
    forget();
    respond({200, "response"});
    EXPECT_EQ(exchange(kUrl, body), "response");
    ASSERT_EQ(platform.http_.asked.size(), 1U);
    const auto& asked = platform.http_.asked.front();
    EXPECT_EQ(asked.url, "http://any.test/where?a=b");
    EXPECT_EQ(asked.method, method);
    EXPECT_EQ(asked.body, body.isNull() ? std::nullopt : std::optional(std::string(body.view())));
    expectCommonParts(asked);
  }
}

TEST_F(ReportingServerTest, EveryRequestHasTheSameTwoHeadersAlsoAGet) {
  server.connect(false);
  server.send("<report/>");
  ASSERT_EQ(platform.http_.asked.size(), 3U);
  EXPECT_EQ(platform.http_.asked[0].method, "GET");
  EXPECT_EQ(platform.http_.asked[1].body, versionRequest());
  EXPECT_EQ(platform.http_.asked[2].body, "<report/>");
  for (const auto& asked : platform.http_.asked) expectCommonParts(asked);
}

TEST_F(ReportingServerTest, AnyStatusOutside200To299HasAnEmptyResponse) {
  const std::pair<int, const char*> rows[] = {
      {-1, ""},      {0, ""},   {100, ""}, {199, ""}, {200, "body"}, {204, "body"},
      {299, "body"}, {300, ""}, {301, ""}, {404, ""}, {500, ""},     {599, ""}};
  for (const auto& [status, expected] : rows) {
    respond({status, "body"});
    EXPECT_EQ(exchange(kUrl, nullptr), expected) << status;
    EXPECT_EQ(exchange(kUrl, "<a/>"), expected) << status;
  }
  respond({200, ""});
  EXPECT_EQ(exchange(kUrl, nullptr), "");
}

TEST_F(ReportingServerTest, AResponseThatIsNotUtf8IsMissing) {
  for (const char* body : {"\xE4", "ok\xFF", "\xC0\x80", "\xED\xA0\x80", "\xC3"}) {
    respond({200, body});
    EXPECT_TRUE(exchange(kUrl, nullptr).isNull()) << body;
  }
  respond({200, "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"});
  EXPECT_EQ(exchange(kUrl, nullptr), "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
  respond({404, "\xE4"});
  EXPECT_EQ(exchange(kUrl, nullptr), "");
}

TEST_F(ReportingServerTest, ExceptionsOfThePlatformAreFailuresAndOthersPass) {
  server.connect(false);
  platform.http_.answer = [](const auto&) -> HttpResponse { throwZtException(); };
  EXPECT_EQ(exchange(kUrl, nullptr), "");
  EXPECT_FALSE(server.readConfiguration(false));
  EXPECT_TRUE(server.readVersion().isNull());
  EXPECT_EQ(server.send("<a/>").outcome, ZtDeliveryOutcome::Unreachable);
  EXPECT_EQ(server.version(), "7.1");

  platform.http_.answer = [](const auto&) -> HttpResponse { throwForeign(); };
  EXPECT_THROW(exchange(kUrl, nullptr), ForeignError);
  EXPECT_THROW(server.connect(false), ForeignError);
  EXPECT_THROW(server.readConfiguration(false), ForeignError);
  EXPECT_THROW(server.readVersion(), ForeignError);
  EXPECT_THROW(server.send("<a/>"), ForeignError);
}

// The configuration document.

TEST_F(ReportingServerTest, ReadsBothUrlsWithoutSurroundingBlanksAndLineEnds) {
  const struct {
    const char* text;
    const char* reportUrl;
    const char* testUrl;
  } rows[] = {
      {"<c>\n<defSOAP>\r\n\t http://a.test/x y \n\xC2\xA0</defSOAP>\n"
       "<defTestSOAP>\xE2\x80\xA8 http://b.test/\r\n</defTestSOAP>\n</c>",
       "http://a.test/x y", "http://b.test/"},
      {"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"
       "<c><defSOAP>http://<b>a</b>.test/?x=1&amp;y=\xC3\xA4</defSOAP>"
       "<defTestSOAP><![CDATA[http://b.test/]]></defTestSOAP></c>",
       "http://a.test/?x=1&y=\xC3\xA4", "http://b.test/"},
      {"<c><other/><defTestSOAP>http://t1.test/</defTestSOAP><defSOAP>http://a.test/</defSOAP>"
       "<defSOAP>http://b.test/</defSOAP><defTestSOAP>http://t2.test/</defTestSOAP></c>",
       "http://a.test/", "http://t1.test/"},
  };
  for (const auto& row : rows) {
    server = zt::ReportingServer(kConfigurationUrl);
    EXPECT_TRUE(readConfiguration(row.text)) << row.text;
    EXPECT_EQ(server.reportUrl(), row.reportUrl) << row.text;
    EXPECT_EQ(server.testUrl(), row.testUrl) << row.text;
    EXPECT_TRUE(server.gotConfiguration()) << row.text;
    EXPECT_FALSE(server.online()) << row.text;
  }
}

TEST_F(ReportingServerTest, ElementsAreFoundByTheirExactNameAmongTheRootsChildren) {
  for (const char* text :
       {"<c><DefSOAP>http://a.test/</DefSOAP><deftestsoap>http://b.test/</deftestsoap></c>",
        "<c><d><defSOAP>http://a.test/</defSOAP><defTestSOAP>http://b.test/</defTestSOAP></d></c>",
        "<c xmlns:n='urn:n'><n:defSOAP>http://a.test/</n:defSOAP></c>",
        "<defSOAP>http://a.test/</defSOAP>", "<c><!--defSOAP--></c>", "<c/>"}) {
    EXPECT_FALSE(readConfiguration(text)) << text;
    EXPECT_EQ(server.reportUrl(), "") << text;
    EXPECT_EQ(server.testUrl(), "") << text;
    EXPECT_FALSE(server.gotConfiguration()) << text;
  }
}

TEST_F(ReportingServerTest, ATestUrlAloneIsStoredButNoVersionIsRequested) {
  configuration.body = "<c><defTestSOAP>http://b.test/</defTestSOAP></c>";
  server.connect(false);
  EXPECT_EQ(server.reportUrl(), "");
  EXPECT_EQ(server.testUrl(), "http://b.test/");
  EXPECT_FALSE(server.gotConfiguration());
  EXPECT_FALSE(server.online());
  EXPECT_THAT(steps, ElementsAre(kGet));
}

TEST_F(ReportingServerTest, AConfigurationThatCannotBeReadChangesNothing) {
  const std::string good = configuration.body;
  const HttpResponse rows[] = {{404, good},
                               {500, good},
                               {0, ""},
                               {200, ""},
                               {200, "<c><defSOAP>http://a.test/</defSOAP>"},
                               {200, "defSOAP"},
                               {200, "<c><defSOAP>http://\xE4.test/</defSOAP></c>"}};
  for (const bool isConfigured : {false, true}) {
    configuration = {200, good};
    if (isConfigured) server.connect(false);
    for (const HttpResponse& row : rows) {
      configuration = row;
      server.connect(false);
      EXPECT_EQ(server.reportUrl(), isConfigured ? "http://report.test/soap" : "") << row.body;
      EXPECT_EQ(server.gotConfiguration(), isConfigured) << row.body;
      EXPECT_EQ(server.online(), isConfigured) << row.body;
    }
  }
}

TEST_F(ReportingServerTest, ALaterConfigurationReplacesOnlyTheUrlsThatItHas) {
  const struct {
    const char* text;
    const char* reportUrl;
    const char* testUrl;
    bool isRead;
    bool gotConfiguration;
  } rows[] = {
      {"<c><defSOAP>http://new.test/</defSOAP></c>", "http://new.test/",
       "http://report.test/soap-test", true, true},
      {"<c/>", "http://report.test/soap", "http://report.test/soap-test", false, true},
      {"<c><defSOAP/><defTestSOAP/></c>", "", "", false, false},
      {"<c><defSOAP> \r\n</defSOAP></c>", "", "http://report.test/soap-test", false, false},
  };
  const std::string good = configuration.body;
  for (const auto& row : rows) {
    ASSERT_TRUE(readConfiguration(good));
    EXPECT_EQ(readConfiguration(row.text), row.isRead) << row.text;
    EXPECT_EQ(server.reportUrl(), row.reportUrl) << row.text;
    EXPECT_EQ(server.testUrl(), row.testUrl) << row.text;
    EXPECT_EQ(server.gotConfiguration(), row.gotConfiguration) << row.text;
  }
}

// The local copy.

TEST_F(ReportingServerTest, TheLocalCopyInTheWorkingDirectoryHasPrecedence) {
  ASSERT_TRUE(platform.files_.write(kLocalCopy, kLocalConfiguration));
  observeFiles([this](const std::string& step) { steps.push_back(step); });
  EXPECT_TRUE(server.readConfiguration(true));
  EXPECT_EQ(server.reportUrl(), "http://local.test/");
  EXPECT_THAT(steps, ElementsAre("read (null)configuration.xml"));
  EXPECT_TRUE(server.readConfiguration(false));
  EXPECT_EQ(server.reportUrl(), "http://report.test/soap");
}

TEST_F(ReportingServerTest, TheLocalCopyIsReadInItsOwnEncoding) {
  ASSERT_TRUE(platform.files_.write(kLocalCopy,
                                    "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"
                                    "<c><defSOAP>http://\xE4.test/</defSOAP></c>"));
  EXPECT_TRUE(server.readConfiguration(true));
  EXPECT_EQ(server.reportUrl(), "http://\xC3\xA4.test/");
}

TEST_F(ReportingServerTest, WithoutALocalCopyTheConfigurationIsFetched) {
  EXPECT_TRUE(server.readConfiguration(true));
  EXPECT_FALSE(platform.files_.exists(kLocalCopy));
  ASSERT_TRUE(platform.files_.write(kLocalCopy, "<c><defSOAP>malformed"));
  EXPECT_TRUE(server.readConfiguration(true));
  EXPECT_EQ(server.reportUrl(), "http://report.test/soap");
  EXPECT_THAT(steps, ElementsAre(kGet, kGet));
}

TEST_F(ReportingServerTest, AWellFormedLocalCopyIsFinalAlsoWithoutAUrl) {
  ASSERT_TRUE(platform.files_.write(kLocalCopy, "<c/>"));
  EXPECT_FALSE(server.readConfiguration(true));
  observeFiles([](const std::string&) { throwZtException(); });
  EXPECT_FALSE(server.readConfiguration(true));
  EXPECT_THAT(steps, IsEmpty());
}

// The version and the online state.

TEST_F(ReportingServerTest, TheVersionIsTheTrimmedTextOfTheRootVersioninfo) {
  server.connect(false);
  const std::pair<const char*, const char*> rows[] = {
      {"<versioninfo>8.2</versioninfo>", "8.2"},
      {"<versioninfo>\r\n\t 8.2 b\xC2\xA0\n</versioninfo>", "8.2 b"},
      {"<versioninfo>8<b>.2</b></versioninfo>", "8.2"},
      {"<versioninfo><![CDATA[8.2]]></versioninfo>", "8.2"},
      {"<?xml version=\"1.0\"?>\n<!-- new --><versioninfo>8.2</versioninfo><!-- end -->", "8.2"},
      {"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><versioninfo>\xC3\xA4</versioninfo>",
       "\xC3\xA4"},
      {"<versioninfo> \r\n\t</versioninfo>", ""},
      {"<versioninfo/>", ""}};
  for (const auto& [text, expected] : rows) {
    version.body = text;
    EXPECT_EQ(server.readVersion(), expected) << text;
    EXPECT_EQ(server.version(), expected) << text;
    server.connect(false);
    EXPECT_EQ(server.online(), *expected != '\0') << text;
  }
}

TEST_F(ReportingServerTest, ASoapEnvelopeOrAnyOtherResponseIsNoVersion) {
  server.connect(false);
  const HttpResponse rows[] = {
      {200,
       "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\">"
       "<SOAP-ENV:Body><versioninfo>8.2</versioninfo></SOAP-ENV:Body></SOAP-ENV:Envelope>"},
      {200, "<VersionInfo>8.2</VersionInfo>"},
      {200, "<n:versioninfo xmlns:n=\"urn:n\">8.2</n:versioninfo>"},
      {200, "<versioninfo>8.2"},
      {200, "8.2"},
      {200, ""},
      {200, "<versioninfo>\xE4</versioninfo>"},
      {404, "<versioninfo>8.2</versioninfo>"},
      {0, ""}};
  for (const HttpResponse& row : rows) {
    version = row;
    EXPECT_TRUE(server.readVersion().isNull()) << row.body;
    EXPECT_EQ(server.version(), "7.1") << row.body;
    server.connect(false);
    EXPECT_TRUE(server.gotConfiguration()) << row.body;
    EXPECT_FALSE(server.online()) << row.body;
  }
}

TEST_F(ReportingServerTest, IsReadyWithAConfigurationAndOnline) {
  EXPECT_FALSE(server.isReady());
  server.connect(false);
  EXPECT_THAT(steps, ElementsAre(kGet, kVersion));
  EXPECT_TRUE(server.isReady());
  version = HttpResponse{};
  server.connect(false);
  EXPECT_FALSE(server.isReady());
  version = {200, "<versioninfo>7.2</versioninfo>"};
  server.connect(false);
  EXPECT_TRUE(server.isReady());
  readConfiguration("<c><defSOAP/></c>");
  EXPECT_TRUE(server.online());
  EXPECT_FALSE(server.isReady());
}

// Sending.

TEST_F(ReportingServerTest, AcceptanceIsTheNameOfTheResponseAndTheWordTrueAnywhere) {
  const std::pair<HttpResponse, bool> rows[] = {
      {{200, kAccepted}, true},
      {{299, kAccepted}, true},
      {{200, "<ns1:postPoolDatasResponse><return>TRUE</return></ns1:postPoolDatasResponse>"}, true},
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
  for (const auto& [response, isAccepted] : rows) {
    report = response;
    EXPECT_EQ(server.send("<a/>").outcome == ZtDeliveryOutcome::Accepted, isAccepted)
        << response.status << " " << response.body;
  }
}

}  // namespace
}  // namespace zt::test
