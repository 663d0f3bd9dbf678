#include <string>
#include <utility>

#include "tests/support/HostileXml.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/portal/PortalTest.h"

// Configurations and versions of a server that means harm, or of somebody in its place.

namespace zt::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using std::string_literals::operator""s;

constexpr const char* kGet = "GET http://config.test/reporting/kelvane.xml";
constexpr const char* kVersion = "version http://report.test/soap";

class HostileAnswersTest : public PortalTest {
 protected:
  /// A document that is made now, and `steps` of its making.
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

  /// A file that no document may show, and declarations of entities that stand for it.
  TemporaryFolder _folder;
  std::string _secret = _folder.write("secret.txt", "http://secret.test/");
  std::string _types = _folder.write("types.dtd", "<!ENTITY e 'http://secret.test/'>");
};

// Configurations.

TEST_F(HostileAnswersTest, AConfigurationOfGrowingEntitiesIsNotRead) {
  expectNotConfiguredBy(growingEntities("c") + "<c><defSOAP>&e9;</defSOAP></c>");
  expectNotConfiguredBy(growingEntities("c") + "<c><defSOAP b='&e9;'>http://r/</defSOAP></c>");
  expectNotConfiguredBy(growingEntities("c") + "<c><defSOAP>http://r/</defSOAP>&e9;</c>");
}

TEST_F(HostileAnswersTest, AConfigurationBringsInNoFile) {
  const std::string address = "<c><defSOAP>&e;</defSOAP><defTestSOAP>&e;</defTestSOAP></c>";
  for (const std::string& declaration :
       {"<!DOCTYPE c [<!ENTITY e SYSTEM 'file://" + _secret + "'>]>",
        "<!DOCTYPE c [<!ENTITY e PUBLIC 'p' '" + _secret + "'>]>",
        "<!DOCTYPE c SYSTEM '" + _types + "'>",
        "<!DOCTYPE c [<!ENTITY % p SYSTEM '" + _types + "'>%p;]>",
        "<!DOCTYPE c SYSTEM 'http://config.test/types.dtd'>"s}) {
    expectNotConfiguredBy(declaration + address);
  }
  expectNotConfiguredBy(
      "<c xmlns:xi='http://www.w3.org/2001/XInclude'><defSOAP><xi:include "
      "parse='text' href='" +
      _secret + "'/></defSOAP></c>");
}

TEST_F(HostileAnswersTest, ADeepConfigurationIsNotRead) {
  expectNotConfiguredBy("<c>" + nested(100'000, "") + "<defSOAP>http://r/</defSOAP></c>");
  expectNotConfiguredBy("<c><defSOAP>" + nested(100'000, "http://r/") + "</defSOAP></c>");
  expectNotConfiguredBy(repeated("<c>", 1'000'000));
}

TEST_F(HostileAnswersTest, AConfigurationOfHugeNamesIsNotRead) {
  const std::string name(1'000'000, 'n');
  const std::string address = "<defSOAP>http://r/</defSOAP>";
  expectNotConfiguredBy("<" + name + ">" + address + "</" + name + ">");
  expectNotConfiguredBy("<c><" + name + "/>" + address + "</c>");
  expectNotConfiguredBy("<c " + name + "='1'>" + address + "</c>");
  expectNotConfiguredBy("<c xmlns:" + name + "='urn:n'>" + address + "</c>");
  expectNotConfiguredBy("<c>&" + name + ";" + address + "</c>");
  expectNotConfiguredBy("<c><?" + name + "?>" + address + "</c>");
}

TEST_F(HostileAnswersTest, ALongAddressIsTakenAsItIs) {
  const std::string address = "http://report.test/" + std::string(1'000'000, 'a');
  configuration = {200, "<c><defSOAP>" + address + "</defSOAP></c>"};
  const auto document = made();
  EXPECT_TRUE(document->gotConfiguration());
  EXPECT_TRUE(document->reportUrl() == address);
}

TEST_F(HostileAnswersTest, AConfigurationInAnotherEncodingThanUtf8IsNotRead) {
  const std::string address = "<c><defSOAP>http://r\xE4/</defSOAP></c>";
  expectNotConfiguredBy(address);
  expectNotConfiguredBy("<?xml version='1.0' encoding='ISO-8859-1'?>" + address);
  expectNotConfiguredBy("<c><defSOAP>http://\xC0\xAE/</defSOAP></c>");
  expectNotConfiguredBy("<c><defSOAP>http://\xED\xA0\x80/</defSOAP></c>");
  expectNotConfiguredBy("\xFF\xFE<\0c\0>\0<\0/\0c\0>\0"s);
  expectNotConfiguredBy("+ADw-c+AD4APA-defSOAP+AD4-http://r/+ADw-/defSOAP+AD4APA-/c+AD4-");
}

TEST_F(HostileAnswersTest, TheEncodingThatAConfigurationNamesDoesNotCount) {
  configuration = {200,
                   "<?xml version='1.0' encoding='UTF-7'?><c><defSOAP>http://report.test/soap"
                   "</defSOAP></c>"};
  EXPECT_EQ(made()->reportUrl(), "http://report.test/soap");
}

TEST_F(HostileAnswersTest, AConfigurationWithANulByteIsNotRead) {
  expectNotConfiguredBy("<c><defSOAP>http://r/\0.test/</defSOAP></c>"s);
  expectNotConfiguredBy("<c><defSOAP>http://r/&#0;</defSOAP></c>"s);
  expectNotConfiguredBy("<c><def\0SOAP>http://r/</def\0SOAP></c>"s);
  expectNotConfiguredBy("<c><defSOAP>http://r/</defSOAP></c>\0"s);
  expectNotConfiguredBy("\0<c><defSOAP>http://r/</defSOAP></c>"s);
}

// Versions.

TEST_F(HostileAnswersTest, AVersionOfGrowingEntitiesIsNone) {
  expectOfflineWith(growingEntities("versioninfo") + "<versioninfo>&e9;</versioninfo>");
  expectOfflineWith(growingEntities("versioninfo") + "<versioninfo a='&e9;'>7</versioninfo>");
}

TEST_F(HostileAnswersTest, AVersionBringsInNoFile) {
  for (const std::string& declaration :
       {"<!DOCTYPE versioninfo [<!ENTITY e SYSTEM 'file://" + _secret + "'>]>",
        "<!DOCTYPE versioninfo SYSTEM '" + _types + "'>",
        "<!DOCTYPE versioninfo [<!ENTITY % p SYSTEM '" + _types + "'>%p;]>"}) {
    expectOfflineWith(declaration + "<versioninfo>&e;</versioninfo>");
  }
}

TEST_F(HostileAnswersTest, ADeepVersionIsNone) {
  expectOfflineWith("<versioninfo>" + nested(100'000, "7") + "</versioninfo>");
}

TEST_F(HostileAnswersTest, AVersionOfHugeNamesIsNone) {
  const std::string name(1'000'000, 'n');
  expectOfflineWith("<versioninfo " + name + "='1'>7</versioninfo>");
  expectOfflineWith("<versioninfo><" + name + "/>7</versioninfo>");
}

TEST_F(HostileAnswersTest, AVersionInAnotherEncodingThanUtf8IsNone) {
  expectOfflineWith("<versioninfo>\xE4</versioninfo>");
  expectOfflineWith("<?xml version='1.0' encoding='ISO-8859-1'?><versioninfo>\xE4</versioninfo>");
}

TEST_F(HostileAnswersTest, AVersionWithANulByteIsNone) {
  expectOfflineWith("<versioninfo>7\0</versioninfo>"s);
  expectOfflineWith("<versioninfo>7</versioninfo>\0"s);
  expectOfflineWith("<versioninfo>&#0;</versioninfo>");
}

// Answers to a report.

TEST_F(HostileAnswersTest, AnAnswerToAReportIsNotParsed) {
  const std::pair<std::string, bool> rows[] = {
      {growingEntities("a") + "<a>&e9;</a>", false},
      {growingEntities("a") + "<a>&e9; postPoolDatasResponse true</a>", true},
      {nested(100'000, "<postPoolDatasResponse>true</postPoolDatasResponse>"), true},
      {"<postPoolDatasResponse>\0true"s, true},
      {"<postPoolDatasResponse>true\xE4", false},
      {"<?xml version='1.0' encoding='UTF-16'?><postPoolDatasResponse>true", true},
  };
  const auto document = makeDocumentWithPool();
  for (const auto& [answer, accepted] : rows) {
    report = {200, answer};
    EXPECT_EQ(document->reportToServer(), accepted) << answer.substr(0, 100);
    const std::string file(document->reportFile().view());
    EXPECT_EQ(platform.files_.exists(file), !accepted);
    platform.files_.remove(file);
  }
}

}  // namespace
}  // namespace zt::test
