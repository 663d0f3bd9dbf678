// SPDX-License-Identifier: Apache-2.0
#include <string>
#include <string_view>
#include <utility>

#include "tests/unit/portal/PortalTest.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"
#include "ztportal/pools/Markup.h"
#include "ztportal/portal/ReportStore.h"

namespace zt::test {
namespace {

using ::testing::HasSubstr;
using namespace std::string_view_literals;

constexpr std::string_view kHostile = "<a & b>\r\n\t\"\xC3\x84\x01\xFF"sv;
/// The same as an XML parser reads it back.
constexpr std::string_view kRead = "<a & b>\r\n\t\"\xC3\x84\xEF\xBF\xBD\xEF\xBF\xBD"sv;

class ValueEscapingTest : public PortalTest {
 protected:
  ValueEscapingTest() { ZtHost::setValueEscaping(true); }
  ~ValueEscapingTest() override { ZtHost::setValueEscaping(false); }

  static std::string escaped(std::string_view text) {
    std::string xml;
    appendValue(xml, text);
    return xml;
  }
  static std::string escapedAttribute(std::string_view text) {
    std::string xml;
    appendAttributeValue(xml, text);
    return xml;
  }
};

TEST_F(ValueEscapingTest, WritesWhatAParserReadsBack) {
  constexpr const char* kReplaced = "\xEF\xBF\xBD";
  const std::pair<std::string_view, std::string> rows[] = {
      {"", ""},
      {"plain, '\"", "plain, '\""},
      {"<&>", "&lt;&amp;&gt;"},
      {"&lt;", "&amp;lt;"},
      {"]]>", "]]&gt;"},
      {"a\rb\r\nc\n\t", "a&#13;b&#13;\nc\n\t"},
      {"\0"sv, kReplaced},
      {"\x08\x0B\x1F", std::string(kReplaced) + kReplaced + kReplaced},
      {"\x7F\xC2\x85", "\x7F\xC2\x85"},
      {"\xEF\xBF\xBE", kReplaced},                                                 // U+FFFE
      {"\xEF\xBF\xBF", kReplaced},                                                 // U+FFFF
      {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},                                    // U+1F600
      {"a\xFFz", std::string("a") + kReplaced + "z"},                              // no UTF-8
      {"\xC3", kReplaced},                                                         // cut off
      {"\xED\xA0\x80<", std::string(kReplaced) + kReplaced + kReplaced + "&lt;"},  // a surrogate
  };
  for (const auto& [text, expected] : rows) {
    EXPECT_EQ(escaped(text), expected) << testing::PrintToString(text);
  }
  EXPECT_EQ(escapedAttribute("\"<\t\r\n'"), "&quot;&lt;&#9;&#13;&#10;'");
}

TEST_F(ValueEscapingTest, IsOffAtFirst) {
  ZtHost::setValueEscaping(false);
  EXPECT_EQ(escaped(kHostile), kHostile);
  EXPECT_EQ(escapedAttribute(kHostile), kHostile);
}

/// A document with `kHostile` wherever a text can be.
std::shared_ptr<ZtPortalData> hostileDocument() {
  const ZtString hostile = kHostile;
  auto document = ZtPortalData::initWithValues(kConfigurationUrl, false, hostile, hostile, hostile);
  const auto pool = document->addPool(hostile, ZtDate());
  pool->addString(hostile, hostile);
  pool->addInteger(hostile, 7);
  pool->fields()->mutableFields()->push_back(ZtPortalPoolField::initWithName(hostile));
  const auto execution = document->addPoolExecution(ZtDate());
  execution->setStartPoint(hostile);
  for (int i = 0; i < 2; ++i) {
    execution->addStep(ZtDate::now(), hostile, ZtPortalStepInfo)->setStepMessageString(hostile);
  }
  return document;
}

TEST_F(ValueEscapingTest, CoversEveryNameAndValueOfAReport) {
  const auto hostile = hostileDocument();
  const auto document = ZtXMLDocument::parse(hostile->getSoapString(), ZtXMLKeep::Form);
  ASSERT_NE(document, nullptr);
  const std::string text(document->rootElement()->text().view());
  std::size_t count = 0;
  for (std::size_t at = text.find(kRead); at != std::string::npos; at = text.find(kRead, at + 1)) {
    ++count;
  }
  EXPECT_EQ(count, 3U + 4U + 1U + 2U * 2U);  // header, generic fields, start point, steps
  EXPECT_THAT(hostile->generateXml(nullptr, false),
              HasSubstr("<Data Pool=\"&lt;a &amp; b&gt;&#13;&#10;&#9;&quot;"));

  ZtHost::setValueEscaping(false);
  EXPECT_EQ(ZtXMLDocument::parse(hostile->getSoapString()), nullptr);
}

// A saved report with a "<" in a value was never sent, and neither were those after it.
TEST_F(ValueEscapingTest, ASavedReportIsSentAgainWithTheSameValues) {
  cutOff();
  hostileDocument()->reportToServer();
  ASSERT_EQ(namesInStore().size(), 1U);
  configuration = {200, "<c><defSOAP>http://report.test/soap</defSOAP></c>"};
  version = {200, "<versioninfo>7.1</versioninfo>"};
  report = {200, kAccepted};
  const auto document = makeDocument();
  document->sendSavedReports();
  EXPECT_TRUE(namesInStore().empty());
  ASSERT_EQ(platform.http_.asked.size(), 1U);
  const auto sent = ZtXMLDocument::parse(*platform.http_.asked.front().body, ZtXMLKeep::Form);
  ASSERT_NE(sent, nullptr);
  EXPECT_THAT(std::string(sent->rootElement()->text().view()), HasSubstr(std::string(kRead)));
}

}  // namespace
}  // namespace zt::test
