// SPDX-License-Identifier: Apache-2.0
#include <string>
#include <utility>

#include "tests/support/HostileXml.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/portal/PortalTest.h"

// Configurations, versions and responses of a hostile server, and files in the store that the
// library did not write.

namespace zt::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using std::string_literals::operator""s;

class HostileInputTest : public PortalTest {
 protected:
  /// Creates a document, and keeps the recorded steps.
  std::shared_ptr<ZtPortalData> made() {
    forget();
    return ZtPortalData::initWithValues(kConfigurationUrl, false, "Kelvane", kApplicationId, "2.1");
  }

  void expectNotConfiguredBy(const std::string& text) {
    SCOPED_TRACE(testing::PrintToString(text.substr(0, 200)));
    configuration = {200, text};
    const auto document = made();
    EXPECT_FALSE(document->gotConfiguration());
    EXPECT_FALSE(document->online());
    EXPECT_EQ(document->reportUrl(), "");
    EXPECT_EQ(document->reportTestUrl(), "");
    EXPECT_THAT(steps, ElementsAre(kGet));
  }

  void expectOfflineWith(const std::string& text) {
    SCOPED_TRACE(testing::PrintToString(text.substr(0, 200)));
    version = {200, text};
    const auto document = made();
    EXPECT_TRUE(document->gotConfiguration());
    EXPECT_FALSE(document->online());
    EXPECT_TRUE(document->serverVersion().empty());
    EXPECT_THAT(steps, ElementsAre(kGet, kVersion));
  }

  /// Puts a file into the store, resends, and returns the path of the file.
  std::string resend(const std::string& content) {
    const auto document = made();
    forget();
    const std::string path = std::string(ZtPortalData::reportFolder().view()) + "/one.ztr";
    platform.files_.write(path, content);
    document->sendSavedReports();
    return path;
  }

  void expectNotSent(const std::string& content) {
    SCOPED_TRACE(testing::PrintToString(content.substr(0, 200)));
    const std::string path = resend(content);
    EXPECT_THAT(steps, IsEmpty());
    EXPECT_TRUE(platform.files_.read(path, kReportFileLimit) == content);
  }

  void expectSentUnchanged(const std::string& content) {
    SCOPED_TRACE(testing::PrintToString(content.substr(0, 200)));
    const std::string path = resend(content);
    ASSERT_THAT(steps, ElementsAre(kBroadcast, kReport));
    EXPECT_TRUE(platform.http_.asked.front().body == content);
    EXPECT_TRUE(platform.broadcast_.posted.front().userInfo.at("request") == content);
    EXPECT_FALSE(platform.files_.exists(path));
  }

  /// Files that no document may include.
  TemporaryFolder _folder;
  std::string _secret = _folder.write("secret.txt", "http://secret.test/");
  std::string _types = _folder.write("types.dtd", "<!ENTITY e 'http://secret.test/'>");
  const std::string _hugeName = std::string(1'000'000, 'n');
};

// The parser's own tests have more cases. One case of each kind shows here what a document does.

TEST_F(HostileInputTest, AHostileConfigurationIsNotRead) {
  const std::string url = "<defSOAP>http://r/</defSOAP>";
  for (const std::string& text :
       {growingEntities("c") + "<c><defSOAP>&e9;</defSOAP></c>",
        growingEntities("c") + "<c><defSOAP b='&e9;'>http://r/</defSOAP></c>",
        "<!DOCTYPE c [<!ENTITY e SYSTEM 'file://" + _secret + "'>]><c><defSOAP>&e;</defSOAP></c>",
        "<!DOCTYPE c SYSTEM '" + _types + "'><c><defSOAP>&e;</defSOAP></c>",
        "<!DOCTYPE c SYSTEM 'http://config.test/types.dtd'><c><defSOAP>&e;</defSOAP></c>"s,
        "<c xmlns:xi='http://www.w3.org/2001/XInclude'><defSOAP><xi:include parse='text' href='" +
            _secret + "'/></defSOAP></c>",
        "<c>" + nested(100'000, "") + url + "</c>",
        "<c><defSOAP>" + nested(100'000, "http://r/") + "</defSOAP></c>",
        repeated("<c>", 1'000'000), "<" + _hugeName + ">" + url + "</" + _hugeName + ">",
        "<c " + _hugeName + "='1'>" + url + "</c>", "<c>&" + _hugeName + ";" + url + "</c>",
        // An encoding other than UTF-8.
        "<?xml version='1.0' encoding='ISO-8859-1'?><c><defSOAP>http://r\xE4/</defSOAP></c>"s,
        "<c><defSOAP>http://\xC0\xAE/</defSOAP></c>"s, "\xFF\xFE<\0c\0>\0<\0/\0c\0>\0"s,
        // A NUL byte.
        "<c><defSOAP>http://r/\0.test/</defSOAP></c>"s, "<c><defSOAP>http://r/&#0;</defSOAP></c>"s,
        "<c><def\0SOAP>http://r/</def\0SOAP></c>"s, "<c><defSOAP>http://r/</defSOAP></c>\0"s}) {
    expectNotConfiguredBy(text);
  }
}

TEST_F(HostileInputTest, ALongUrlAndADeclaredEncodingAreNotErrors) {
  const std::string url = "http://report.test/" + std::string(1'000'000, 'a');
  configuration = {200, "<c><defSOAP>" + url + "</defSOAP></c>"};
  EXPECT_TRUE(made()->reportUrl() == url);
  configuration = {200, "<?xml version='1.0' encoding='UTF-7'?><c><defSOAP>u</defSOAP></c>"};
  EXPECT_EQ(made()->reportUrl(), "u");
}

TEST_F(HostileInputTest, AHostileVersionIsIgnored) {
  for (const std::string& text :
       {growingEntities("versioninfo") + "<versioninfo>&e9;</versioninfo>",
        "<!DOCTYPE versioninfo [<!ENTITY e SYSTEM 'file://" + _secret +
            "'>]><versioninfo>&e;</versioninfo>",
        "<!DOCTYPE versioninfo SYSTEM '" + _types + "'><versioninfo>&e;</versioninfo>",
        "<versioninfo>" + nested(100'000, "7") + "</versioninfo>",
        "<versioninfo " + _hugeName + "='1'>7</versioninfo>",
        "<versioninfo><" + _hugeName + "/>7</versioninfo>", "<versioninfo>\xE4</versioninfo>"s,
        "<?xml version='1.0' encoding='ISO-8859-1'?><versioninfo>\xE4</versioninfo>"s,
        "<versioninfo>7\0</versioninfo>"s, "<versioninfo>7</versioninfo>\0"s,
        "<versioninfo>&#0;</versioninfo>"s}) {
    expectOfflineWith(text);
  }
}

TEST_F(HostileInputTest, AResponseToAReportIsNotParsed) {
  const std::pair<std::string, bool> rows[] = {
      {growingEntities("a") + "<a>&e9;</a>", false},
      {growingEntities("a") + "<a>&e9; postPoolDatasResponse true</a>", true},
      {nested(100'000, "<postPoolDatasResponse>true</postPoolDatasResponse>"), true},
      {"<postPoolDatasResponse>\0true"s, true},
      {"<postPoolDatasResponse>true\xE4", false},
      {"<?xml version='1.0' encoding='UTF-16'?><postPoolDatasResponse>true", true},
  };
  for (const auto& [response, isAccepted] : rows) {
    const auto document = makeDocumentWithPool();
    report = {200, response};
    EXPECT_EQ(document->reportToServer(), isAccepted) << response.substr(0, 100);
  }
}

TEST_F(HostileInputTest, ASavedReportIsSentWithTheNameOfAnotherFileAndNotItsContent) {
  expectSentUnchanged("<!DOCTYPE a [<!ENTITY e SYSTEM 'file://" + _secret + "'>]><a>&e;</a>");
  expectSentUnchanged("<!DOCTYPE a SYSTEM '" + _types + "'><a>&e;</a>");
  expectSentUnchanged(
      "<a xmlns:xi='http://www.w3.org/2001/XInclude'><xi:include parse='text' href='" + _secret +
      "'/></a>");
}

TEST_F(HostileInputTest, ADeepSavedReportOrOneWithHugeNamesIsSentUnlessItHasDeclarations) {
  for (const std::string& content :
       {nested(100'000, "x"), "<" + _hugeName + " " + _hugeName + "='1'/>"}) {
    expectSentUnchanged(content);
    expectNotSent("<!DOCTYPE a>" + content);
  }
}

TEST_F(HostileInputTest, AHostileSavedReportIsNotSent) {
  for (const std::string& content :
       {growingEntities("a") + "<a>&e9;</a>", growingEntities("a") + "<a b='&e9;'/>",
        // Bytes outside the encoding.
        "<a>\xE4</a>"s, "<?xml version='1.0' encoding='US-ASCII'?><a>\xC3\xA4</a>"s,
        "<?xml version='1.0' encoding='UTF-16'?><a/>"s,
        "<?xml version='1.0' encoding='x-unknown'?><a/>"s,
        "<?xml version='1.0' encoding='../../etc/passwd'?><a/>"s,
        "\xFF\xFE<\0a\0>\0\0\xD8<\0/\0a\0>\0"s,
        // A NUL byte.
        "<a>\0</a>"s, "<a/>\0"s, "<a/>\0<b/>"s, "\0<a/>"s, "<a>&#0;</a>"s}) {
    expectNotSent(content);
  }
}

TEST_F(HostileInputTest, LinesThatLookLikeARequestStayInTheBody) {
  expectSentUnchanged("<a>\n\nPOST /other HTTP/1.1\nHost: other.test\n\n<b/></a>");
}

}  // namespace
}  // namespace zt::test
