#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/unit/portal/ObservedFiles.h"
#include "tests/unit/portal/PortalTest.h"
#include "ztportal/platform/files/FailingFiles.h"

namespace zt::test {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

constexpr const char* kUrl = "http://any.test/where?a=b";

constexpr const char* kVersionRequest =
    "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\""
    " xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/encoding/\""
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
    " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">"
    "  <SOAP-ENV:Body>"
    "    <getVersionInfo xmlns:m=\"http://reporting.kelvane.example/portal\""
    " SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding\"/>"
    "  </SOAP-ENV:Body>"
    "</SOAP-ENV:Envelope>";

class ZtPortalDataTransportTest : public PortalTest {
 protected:
  ZtString httpRequest(const ZtString& url, const ZtString& command) {
    return ZtTestAccess::httpRequest(*document, url, command);
  }
  void answerAll(HttpResponse answer) {
    platform.http_.answer = [answer = std::move(answer)](const auto&) { return answer; };
  }

  std::shared_ptr<ZtPortalData> document = makeDocument();
};

void expectBothHeaders(const FakeHttpTransport::Asked& asked) {
  EXPECT_THAT(asked.headers, ElementsAre(Pair("Content-Type", "application/xml"),
                                         Pair("User-Agent", "Kelvane portal service (osx)")))
      << asked.url;
}

// The one exchange.

TEST_F(ZtPortalDataTransportTest, GetsAUrlWhenThereIsNoCommand) {
  answerAll({200, "answer"});
  EXPECT_EQ(httpRequest(kUrl, nullptr), "answer");
  ASSERT_EQ(platform.http_.asked.size(), 1U);
  const auto& asked = platform.http_.asked.front();
  EXPECT_EQ(asked.url, "http://any.test/where?a=b");
  EXPECT_EQ(asked.method, "GET");
  EXPECT_EQ(asked.body, std::nullopt);
  EXPECT_EQ(asked.timeout, std::chrono::milliseconds(2000));
  expectBothHeaders(asked);
}

TEST_F(ZtPortalDataTransportTest, PostsACommandByteForByte) {
  answerAll({200, "answer"});
  const std::string command("<a>\xC3\xA4\r\n\0</a>", 13);
  EXPECT_EQ(httpRequest(kUrl, command), "answer");
  ASSERT_EQ(platform.http_.asked.size(), 1U);
  const auto& asked = platform.http_.asked.front();
  EXPECT_EQ(asked.url, "http://any.test/where?a=b");
  EXPECT_EQ(asked.method, "POST");
  EXPECT_EQ(asked.body, command);
  EXPECT_EQ(asked.timeout, std::chrono::milliseconds(2000));
  expectBothHeaders(asked);
}

TEST_F(ZtPortalDataTransportTest, PostsAnEmptyCommand) {
  httpRequest(kUrl, "");
  ASSERT_EQ(platform.http_.asked.size(), 1U);
  EXPECT_EQ(platform.http_.asked.front().method, "POST");
  EXPECT_EQ(platform.http_.asked.front().body, "");
}

TEST_F(ZtPortalDataTransportTest, EveryRequestOfADocumentHasTheSameHeadersAndTimeout) {
  const auto other =
      ZtPortalData::initWithValues(kConfigurationUrl, false, "Kelvane", kApplicationId, "2.1.77");
  other->addPool("CUSTOM", ZtDate());
  other->reportToServer();
  ASSERT_EQ(platform.http_.asked.size(), 3U);
  EXPECT_EQ(platform.http_.asked[0].method, "GET");
  EXPECT_EQ(platform.http_.asked[0].body, std::nullopt);
  EXPECT_EQ(platform.http_.asked[1].method, "POST");
  EXPECT_EQ(platform.http_.asked[2].method, "POST");
  for (const auto& asked : platform.http_.asked) {
    expectBothHeaders(asked);
    EXPECT_EQ(asked.timeout, std::chrono::milliseconds(2000)) << asked.url;
  }
}

TEST_F(ZtPortalDataTransportTest, OnlyASuccessfulStatusGivesTheAnswer) {
  struct Row {
    int status;
    const char* answer;
  };
  const Row rows[] = {{-1, ""},        {0, ""},         {100, ""},       {199, ""},
                      {200, "answer"}, {204, "answer"}, {299, "answer"}, {300, ""},
                      {301, ""},       {404, ""},       {500, ""},       {599, ""}};
  for (const Row& row : rows) {
    answerAll({row.status, "answer"});
    EXPECT_EQ(httpRequest(kUrl, nullptr), row.answer) << row.status;
    EXPECT_EQ(httpRequest(kUrl, "<a/>"), row.answer) << row.status;
  }
}

TEST_F(ZtPortalDataTransportTest, AnEmptySuccessfulAnswerIsEmpty) {
  answerAll({200, ""});
  EXPECT_EQ(httpRequest(kUrl, nullptr), "");
}

TEST_F(ZtPortalDataTransportTest, AnAnswerIsMissingWhenItIsNotUtf8) {
  for (const char* body : {"\xE4", "ok\xFF", "\xC0\x80", "\xED\xA0\x80", "\xC3"}) {
    answerAll({200, body});
    EXPECT_TRUE(httpRequest(kUrl, nullptr).isNull()) << body;
  }
  answerAll({200, "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"});
  EXPECT_EQ(httpRequest(kUrl, nullptr), "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
  answerAll({404, "\xE4"});
  EXPECT_EQ(httpRequest(kUrl, nullptr), "");
}

TEST_F(ZtPortalDataTransportTest, AnAnswerIsEmptyWhenTheTransportRaises) {
  platform.http_.answer = [](const auto&) -> HttpResponse { raise(); };
  EXPECT_EQ(httpRequest(kUrl, nullptr), "");
  EXPECT_EQ(httpRequest(kUrl, "<a/>"), "");
}

TEST_F(ZtPortalDataTransportTest, LetsForeignExceptionsOutOfAnExchange) {
  platform.http_.answer = [](const auto&) -> HttpResponse { raiseForeign(); };
  EXPECT_THROW(httpRequest(kUrl, nullptr), ForeignError);
}

// The server's version.

TEST_F(ZtPortalDataTransportTest, AsksForTheVersionByteForByte) {
  EXPECT_EQ(ZtTestAccess::getServerVersion(*document), "7.1");
  ASSERT_EQ(platform.http_.asked.size(), 1U);
  const auto& asked = platform.http_.asked.front();
  EXPECT_EQ(asked.url, "http://report.test/soap");
  EXPECT_EQ(asked.method, "POST");
  EXPECT_EQ(asked.body, kVersionRequest);
  EXPECT_EQ(asked.timeout, std::chrono::milliseconds(2000));
  expectBothHeaders(asked);
}

TEST_F(ZtPortalDataTransportTest, ReadsTheTrimmedTextOfARootVersioninfo) {
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
  for (const auto& [answer, expected] : rows) {
    version.body = answer;
    EXPECT_EQ(ZtTestAccess::getServerVersion(*document), expected) << answer;
    EXPECT_EQ(document->serverVersion(), expected) << answer;
  }
}

TEST_F(ZtPortalDataTransportTest, HasNoVersionFromAnyOtherAnswerAndKeepsTheLast) {
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
    EXPECT_TRUE(ZtTestAccess::getServerVersion(*document).isNull()) << row.body;
    EXPECT_EQ(document->serverVersion(), "7.1") << row.body;
  }
}

TEST_F(ZtPortalDataTransportTest, HasNoVersionWhenTheTransportRaises) {
  platform.http_.answer = [](const auto&) -> HttpResponse { raise(); };
  EXPECT_TRUE(ZtTestAccess::getServerVersion(*document).empty());
  EXPECT_EQ(document->serverVersion(), "7.1");
}

TEST_F(ZtPortalDataTransportTest, LetsForeignExceptionsOutOfTheVersionRequest) {
  platform.http_.answer = [](const auto&) -> HttpResponse { raiseForeign(); };
  EXPECT_THROW(ZtTestAccess::getServerVersion(*document), ForeignError);
}

// The support folder.

constexpr const char* kSupport = "/home/user/.local/share";
constexpr std::uint32_t kUserDomainCode = 0x8005;

TEST_F(ZtPortalDataTransportTest, MakesTheFolderBelowTheSystemsFolder) {
  EXPECT_EQ(ZtTestAccess::supportFolder(kUserDomainCode, "One/Two"),
            "/home/user/.local/share/One/Two");
  EXPECT_TRUE(platform.files_.isFolder("/home/user/.local/share/One/Two"));
}

TEST_F(ZtPortalDataTransportTest, GivesTheFolderThatIsThereAlready) {
  ASSERT_TRUE(platform.files_.createFolders("/home/user/.local/share/One"));
  EXPECT_EQ(ZtTestAccess::supportFolder(kUserDomainCode, "One"), "/home/user/.local/share/One");
}

TEST_F(ZtPortalDataTransportTest, GivesThePathOfWhateverStandsInTheFoldersPlace) {
  ASSERT_TRUE(platform.files_.createFolders(kSupport));
  ASSERT_TRUE(platform.files_.write("/home/user/.local/share/One", "a file"));
  EXPECT_EQ(ZtTestAccess::supportFolder(kUserDomainCode, "One"), "/home/user/.local/share/One");
  EXPECT_FALSE(platform.files_.isFolder("/home/user/.local/share/One"));
}

TEST_F(ZtPortalDataTransportTest, AsksForTheDomainOfTheLowSixteenBits) {
  EXPECT_EQ(ZtTestAccess::supportFolder(0x12348005, "One"), "/home/user/.local/share/One");
  EXPECT_TRUE(ZtTestAccess::supportFolder(5, "One").isNull());
  EXPECT_TRUE(ZtTestAccess::supportFolder(0xFFFFFFFF, "One").isNull());
  EXPECT_TRUE(ZtTestAccess::supportFolder(0xFFFF7FFF, "One").isNull());
  EXPECT_THAT(platform.supportFolder_.askedDomains, ElementsAre(-32763, 5, -1, 32767));
}

TEST_F(ZtPortalDataTransportTest, HasNoFolderWithoutTheSystemsFolder) {
  platform.supportFolder_.folder = std::nullopt;
  EXPECT_TRUE(ZtTestAccess::supportFolder(kUserDomainCode, "One").isNull());
  EXPECT_TRUE(ZtTestAccess::localSupportFolder().isNull());
}

TEST_F(ZtPortalDataTransportTest, HasNoFolderWhenTheSystemsFolderCannotBeMade) {
  ASSERT_TRUE(platform.files_.createFolders("/home/user/.local/share/One"));
  FailingFiles files(platform.files_);
  files.failOnce(FailingFiles::Operation::CreateFolders, 1);
  platform.replacedFiles = &files;
  EXPECT_TRUE(ZtTestAccess::supportFolder(kUserDomainCode, "One").isNull());
}

TEST_F(ZtPortalDataTransportTest, HasNoFolderWhenItCannotBeMade) {
  FailingFiles files(platform.files_);
  files.failOnce(FailingFiles::Operation::CreateFolders, 2);
  platform.replacedFiles = &files;
  EXPECT_TRUE(ZtTestAccess::supportFolder(kUserDomainCode, "One").isNull());
  EXPECT_TRUE(platform.files_.isFolder(kSupport));
  EXPECT_FALSE(platform.files_.exists("/home/user/.local/share/One"));
}

TEST_F(ZtPortalDataTransportTest, TheHostsFolderIsThatOfTheVendorAndTheBundleName) {
  EXPECT_EQ(ZtTestAccess::localSupportFolder(), "/home/user/.local/share/Kelvane/Setup");
  EXPECT_TRUE(platform.files_.isFolder("/home/user/.local/share/Kelvane/Setup"));
  EXPECT_THAT(platform.supportFolder_.askedDomains, ElementsAre(-32763));
}

TEST_F(ZtPortalDataTransportTest, AHostWithoutNameHasNoFolder) {
  ZtHost::setBundleInfo({{"CFBundleName", nullptr}});
  EXPECT_TRUE(ZtTestAccess::localSupportFolder().isNull());
}

}  // namespace
}  // namespace zt::test
